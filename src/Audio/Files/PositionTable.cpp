#include "Audio/Files/PositionTable.h"

#include <algorithm>

namespace kiv {

std::uint32_t PositionTable::add(std::int64_t position) {
    contents_.positions.push_back(std::min(position, frames_));
    return std::uint32_t(contents_.positions.size() - 1);
}

void PositionIds::add(std::uint32_t id, std::uint32_t index) {
    entries_.push_back({id, index});
    sorted_ = false;
}

std::optional<std::uint32_t> PositionIds::find(std::uint32_t id) {
    if (!sorted_) std::sort(entries_.begin(), entries_.end());
    sorted_ = true;
    const auto behind = std::upper_bound(entries_.begin(), entries_.end(), Entry{id, UINT32_MAX});
    if (behind == entries_.begin() || std::prev(behind)->id != id) return std::nullopt;
    return std::prev(behind)->index;
}

}  // namespace kiv
