#include "Support/ByteSource.h"

#include <algorithm>

namespace kiv {

std::size_t MemorySource::read(std::int64_t offset, std::span<std::byte> out) const {
    if (offset < 0 || offset >= size()) return 0;
    const std::size_t count = std::min(out.size(), bytes_.size() - std::size_t(offset));
    std::copy_n(bytes_.begin() + offset, count, out.begin());
    return count;
}

}  // namespace kiv
