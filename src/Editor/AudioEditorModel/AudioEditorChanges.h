#pragma once

#include <cstdint>
#include <initializer_list>

namespace kiv {

// What changed, as one set: an edit tells its observers once.
enum class Change : std::uint32_t {
    audio = 1 << 0,  // buffer, peaks, generation
    markers = 1 << 1,
    cursor = 1 << 2,
    selection = 1 << 3,
    playheads = 1 << 4,
    maxLevel = 1 << 5,
    view = 1 << 6,  // zoom, centre
    verticalZoom = 1 << 7,
    dialog = 1 << 8,  // which one, its values and its text
    timeUnit = 1 << 9,
    loopPoints = 1 << 10,
    playback = 1 << 11,  // loopEnabled, previewPlaying, playing
    followPlayhead = 1 << 12,
    pointer = 1 << 13,   // pointerMode, viewDragged
    history = 1 << 14,   // what can be undone and redone, contentVersion
    editLoop = 1 << 15,  // all of AudioEditorLoopState
    slices = 1 << 16,    // the slices themselves
    slicer = 1 << 17,    // the rest of AudioEditorSlicerState
    peaks = 1 << 23,     // those that were loose have been measured
    spectral = 1 << 24,  // all of AudioEditorSpectralState
    eq = 1 << 25,        // eqEnabled
};

struct Changes {
    std::uint32_t bits = 0;
    bool contains(Change change) const { return bits & std::uint32_t(change); }
    bool containsAny(std::initializer_list<Change> changes) const {
        for (Change change : changes)
            if (contains(change)) return true;
        return false;
    }
};

}  // namespace kiv
