#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "Editor/AudioEditorCore/AudioEditorBuffer.h"

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

    // 4 bytes a sample of the buffer; positions do not count.
    std::int64_t bytes() const;
};

// The two stacks, newest last. Pushing empties the redo stack and then keeps the undo stack within 200 steps and 1 GiB, but
// never drops the newest.
class UndoHistory {
public:
    static constexpr std::size_t maxSteps = 200;
    static constexpr std::int64_t maxBytes = 0x40000000;

    void push(Snapshot snapshot);
    // Takes the newest off one stack and puts what makeCurrent(withBuffer) gives on the other. Nothing when it is empty.
    template <class MakeCurrent>
    std::optional<Snapshot> undo(MakeCurrent makeCurrent) {
        return step(undo_, redo_, makeCurrent);
    }
    template <class MakeCurrent>
    std::optional<Snapshot> redo(MakeCurrent makeCurrent) {
        return step(redo_, undo_, makeCurrent);
    }
    std::size_t undoDepth() const { return undo_.size(); }
    std::size_t redoDepth() const { return redo_.size(); }
    void clear();

private:
    template <class MakeCurrent>
    static std::optional<Snapshot> step(std::vector<Snapshot> &from, std::vector<Snapshot> &to, MakeCurrent makeCurrent) {
        if (from.empty()) return std::nullopt;
        Snapshot snapshot = std::move(from.back());
        from.pop_back();
        to.push_back(makeCurrent(snapshot.buffer.has_value()));
        return snapshot;
    }

    std::vector<Snapshot> undo_, redo_;
};

}  // namespace kiv
