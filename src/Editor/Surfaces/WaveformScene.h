#pragma once

#include <optional>
#include <vector>

#include "Editor/Surfaces/Pointer.h"
#include "Editor/Surfaces/ViewMarks.h"
#include "Editor/Surfaces/WaveformGeometry.h"

namespace kiv {

// What an open dialog would make of the sound, shown over it.
struct WaveformPreview {
    double factor = 1;
    PixelSpan columns;  // of the active range, inside the view

    friend bool operator==(const WaveformPreview &, const WaveformPreview &) = default;
};

// All that is to be seen of the waveform beside the sound itself, in device pixels.
struct WaveformScene {
    WaveformGeometry geometry;
    std::int64_t generation = 0, powersRevision = 0;
    bool isEmpty = false;  // no audio
    std::vector<int> timeLines;
    ViewMarks marks;
    bool editsLoop = false;  // its range is tinted, its lines are solid
    std::optional<WaveformPreview> preview;
    std::optional<WaveformHover> pointed;  // what the pointer stands on
    std::optional<int> hover;              // the column of the line under the pointer
    bool isFramed = false;                 // files are dragged over the window, or a key moved the focus here

    friend bool operator==(const WaveformScene &, const WaveformScene &) = default;
};

// What belongs to the view and not to the document.
struct WaveformViewState {
    std::int64_t powersRevision = 0;
    std::optional<PointerEvent> pointer;  // while it is over the view
    bool isButtonDown = false;
    bool dropFrame = false;  // files are dragged over the window
    bool keyFocus = false;   // a key has moved the focus here
};

WaveformScene waveformScene(const AudioEditorState &state, ViewSize size, const WaveformViewState &view);
Damage waveformDamage(const WaveformScene &before, const WaveformScene &now);

// The lines of a scene, each over the ones before: what the painter goes through. Kinds that are drawn as lines through the
// whole height.
struct OverlayLine {
    enum class Kind { loop, marker, selectionEdge, cursor, playhead, hover };

    Kind kind = Kind::cursor;
    PixelSpan columns;

    friend bool operator==(const OverlayLine &, const OverlayLine &) = default;
};
std::vector<OverlayLine> overlayLines(const WaveformScene &scene);

}  // namespace kiv
