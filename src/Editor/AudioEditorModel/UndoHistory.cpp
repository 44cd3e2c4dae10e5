#include "Editor/AudioEditorModel/UndoHistory.h"

#include <numeric>

namespace kiv {

std::int64_t Snapshot::bytes() const {
    return buffer ? buffer->frames() * buffer->channels() * std::int64_t(sizeof(float)) : 0;
}

void UndoHistory::push(Snapshot snapshot) {
    undo_.push_back(std::move(snapshot));
    redo_.clear();
    auto oldest = undo_.begin();
    if (undo_.size() > maxSteps) oldest += std::ptrdiff_t(undo_.size() - maxSteps);
    std::int64_t total = std::accumulate(oldest, undo_.end(), std::int64_t(0),
                                         [](std::int64_t sum, const Snapshot &each) { return sum + each.bytes(); });
    for (; undo_.end() - oldest >= 2 && total > maxBytes; ++oldest) total -= oldest->bytes();
    undo_.erase(undo_.begin(), oldest);
}

void UndoHistory::clear() {
    undo_.clear();
    redo_.clear();
}

}  // namespace kiv
