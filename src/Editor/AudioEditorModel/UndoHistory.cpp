#include "Editor/AudioEditorModel/UndoHistory.h"

#include <algorithm>
#include <numeric>

namespace kiv {

std::int64_t Snapshot::bytes() const {
    const std::int64_t samples = buffer ? buffer->frames() * buffer->channels() : 0;
    const std::int64_t gains = spectral ? spectral->mask.columns() * AudioEditorSpectral::bandCount : 0;
    return (samples + gains) * std::int64_t(sizeof(float));
}

void UndoHistory::push(Snapshot snapshot) {
    undo_.emplace_back(std::move(snapshot));
    redo_.clear();
    auto oldest = undo_.begin();
    if (undo_.size() > maxSteps) oldest += std::ptrdiff_t(undo_.size() - maxSteps);
    std::int64_t total = std::accumulate(oldest, undo_.end(), std::int64_t(0),
                                         [](std::int64_t sum, const Step &each) { return sum + each.bytes; });
    for (; undo_.end() - oldest >= 2 && total > maxBytes; ++oldest) total -= oldest->bytes;
    undo_.erase(undo_.begin(), oldest);
    letGo();
}

void UndoHistory::keepOnly(std::size_t undos, std::size_t redos) {
    undosKept_ = undos;
    redosKept_ = redos;
    letGo();
}

// One undo leads to the state before its step, so the newest `undosKept_` are what undos can need; what those push can be
// redone, and the other way round.
void UndoHistory::letGo() {
    const auto shorten = [](std::vector<Step> &steps, std::size_t kept) {
        for (auto step = steps.begin(); steps.end() - step > std::ptrdiff_t(kept); ++step) {
            if (step->snapshot.buffer) step->snapshot.buffer.emplace();
            step->snapshot.peaks.reset();
        }
    };
    shorten(undo_, undosKept_);
    shorten(redo_, redosKept_);
}

// A step without a sound has that of the next newer one.
const AudioEditorBuffer *UndoHistory::soundOf(std::int64_t version, const AudioEditorBuffer &present) const {
    for (const std::vector<Step> *stack : {&undo_, &redo_}) {
        const AudioEditorBuffer *sound = &present;
        for (auto step = stack->rbegin(); step != stack->rend(); ++step) {
            if (step->snapshot.buffer) sound = &*step->snapshot.buffer;
            if (step->snapshot.version == version) return sound;
        }
    }
    return nullptr;
}

void UndoHistory::clear() {
    undo_.clear();
    redo_.clear();
}

}  // namespace kiv
