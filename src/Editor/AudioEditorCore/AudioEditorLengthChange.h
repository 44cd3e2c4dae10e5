#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "Editor/AudioEditorCore/FrameRange.h"

namespace kiv {

// What an edit did to the length of a sound, and so where its stored positions go.
struct AudioEditorLengthChange {
    enum class Kind { removed, inserted, replaced, kept, none };

    Kind kind = Kind::none;
    FrameRange range;        // removed, replaced, kept; for inserted lo is the frame that material was put in before
    std::int64_t count = 0;  // frames put in: inserted, replaced

    static AudioEditorLengthChange removed(FrameRange range) { return {Kind::removed, range, 0}; }
    static AudioEditorLengthChange inserted(std::int64_t at, std::int64_t count) { return {Kind::inserted, {at, at}, count}; }
    static AudioEditorLengthChange replaced(FrameRange range, std::int64_t count) { return {Kind::replaced, range, count}; }
    static AudioEditorLengthChange kept(FrameRange range) { return {Kind::kept, range, 0}; }
    static AudioEditorLengthChange none() { return {}; }

    // The new place of an old position, in 0 … newFrameCount. A position at the start of what was taken out stays, one inside
    // goes to the start, one at the end moves with the audio behind; one at an insertion point moves behind what came in.
    std::int64_t map(std::int64_t frame, std::int64_t newFrameCount) const;
    // A loop keeps at least one frame and starts on an existing one.
    FrameRange mapLoop(FrameRange loop, std::int64_t newFrameCount) const;
    // Ranges whose ends move as positions do; one that becomes empty goes.
    std::vector<FrameRange> mapRanges(std::vector<FrameRange> ranges, std::int64_t newFrameCount) const;

    friend bool operator==(const AudioEditorLengthChange &, const AudioEditorLengthChange &) = default;
};

}  // namespace kiv
