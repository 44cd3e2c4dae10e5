#pragma once

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "Editor/AudioEditorCore/AudioEditorBuffer.h"
#include "Editor/AudioEditorCore/AudioEditorPeaks.h"
#include "Editor/AudioEditorSpectral/State.h"

namespace kiv {

// The state before a change. The buffer is there only for steps that changed the sound.
struct Snapshot {
    std::optional<AudioEditorBuffer> buffer;
    std::int64_t cursor = 0;
    std::optional<FrameRange> selection;
    std::int64_t version = 0;
    std::vector<std::int64_t> markers;
    std::vector<FrameRange> slices;
    std::optional<FrameRange> loop;
    std::shared_ptr<const AudioEditorSpectral::State> spectral;  // with a buffer only
    // Of the buffer, where measuring them again would take long. A hundredth of it, and not counted.
    std::optional<AudioEditorPeaks> peaks = {};

    // 4 bytes a sample of the buffer and a gain of the spectral state; positions do not count.
    std::int64_t bytes() const;
};

// The two stacks, newest last. Pushing empties the redo stack and then keeps the undo stack within 200 steps and 1 GiB, but
// never drops the newest.
class UndoHistory {
public:
    static constexpr std::size_t maxSteps = 200;
    static constexpr std::int64_t maxBytes = 0x40000000;

    void push(Snapshot snapshot);
    // Takes the newest off one stack and puts on the other what makeCurrent gives for it: with a buffer exactly when it has
    // one. Nothing when the stack is empty.
    template <class MakeCurrent>
    std::optional<Snapshot> undo(MakeCurrent makeCurrent) {
        return step(undo_, redo_, makeCurrent);
    }
    template <class MakeCurrent>
    std::optional<Snapshot> redo(MakeCurrent makeCurrent) {
        return step(redo_, undo_, makeCurrent);
    }
    // Says that from here on at most so many undos and redos will be asked for, as a script knows: the sounds that only more
    // of them would bring back are let go. The stacks keep their depths and count the sounds as if they were still there.
    void keepOnly(std::size_t undos, std::size_t redos);
    // The sound of a version that a step keeps, `present` being the one that no step keeps because it is there; null where no
    // step does.
    const AudioEditorBuffer *soundOf(std::int64_t version, const AudioEditorBuffer &present) const;
    std::size_t undoDepth() const { return undo_.size(); }
    std::size_t redoDepth() const { return redo_.size(); }
    void clear();

private:
    struct Step {
        explicit Step(Snapshot made) : snapshot(std::move(made)), bytes(snapshot.bytes()) {}
        Snapshot snapshot;
        std::int64_t bytes;
    };

    template <class MakeCurrent>
    std::optional<Snapshot> step(std::vector<Step> &from, std::vector<Step> &to, MakeCurrent makeCurrent) {
        if (from.empty()) return std::nullopt;
        Snapshot snapshot = std::move(from.back().snapshot);
        from.pop_back();
        to.emplace_back(makeCurrent(std::as_const(snapshot)));
        letGo();
        return snapshot;
    }
    void letGo();

    std::vector<Step> undo_, redo_;
    std::size_t undosKept_ = maxSteps, redosKept_ = maxSteps;
};

}  // namespace kiv
