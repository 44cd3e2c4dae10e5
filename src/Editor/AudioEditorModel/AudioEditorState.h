#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "Editor/AudioEditorCore/AudioEditorBuffer.h"
#include "Editor/AudioEditorCore/AudioEditorMonoSource.h"
#include "Editor/AudioEditorCore/AudioEditorPeaks.h"
#include "Editor/AudioEditorCore/AudioEditorPlayhead.h"
#include "Editor/AudioEditorCore/AudioEditorStretch.h"
#include "Editor/AudioEditorCore/AudioEditorTimeUnit.h"
#include "Editor/AudioEditorModel/AudioEditorLoopState.h"
#include "Editor/AudioEditorModel/AudioEditorSlicerState.h"
#include "Editor/AudioEditorModel/AudioEditorSpectralState.h"
#include "Editor/AudioEditorModel/AudioEditorZoom.h"

namespace kiv {

// The open edit dialog.
enum class Dialog { gain, normalize, mono, timeStretch };

// A drag in progress on the waveform.
struct CursorDrag {  // a click, or a selection drawn from the anchor
    std::int64_t anchor = 0;
    double pressX = 0;
    bool selecting = false;
    friend bool operator==(const CursorDrag &, const CursorDrag &) = default;
};
struct EdgeDrag {  // one edge of the selection; the other stays at `fixed`
    std::int64_t fixed = 0;
    friend bool operator==(const EdgeDrag &, const EdgeDrag &) = default;
};
struct LoopEdgeDrag {  // one of the loop points, its start or its end
    bool start = false;
    friend bool operator==(const LoopEdgeDrag &, const LoopEdgeDrag &) = default;
};
using SliceEdgeDrag = SliceEdge;
using PointerMode = std::variant<CursorDrag, EdgeDrag, SliceEdgeDrag, LoopEdgeDrag>;

// The loop points at the press of a drag that moves them.
struct LoopPress {
    std::optional<FrameRange> old;
    friend bool operator==(const LoopPress &, const LoopPress &) = default;
};

// Everything a view of a document can see; plain values.
struct AudioEditorState : AudioEditorLoopState, AudioEditorSlicerState, AudioEditorSpectralState {
    AudioEditorBuffer buffer;
    AudioEditorPeaks peaks;
    std::int64_t generation = 0;      // grows whenever the audio changes
    std::int64_t contentVersion = 0;  // of the content; undo brings the old one back
    std::vector<std::int64_t> markerFrames;
    std::int64_t cursorFrame = 0;
    std::optional<FrameRange> selection;
    std::optional<FrameRange> lastSelection;  // before its last change
    std::optional<FrameRange> loopPoints;
    std::vector<AudioEditorPlayhead> playheads;
    std::optional<float> maxLevel;  // highest level heard while playing
    AudioEditorZoom view;
    int verticalZoomDb = 0;
    std::optional<Dialog> dialog;
    AudioEditorMonoSource monoSource = AudioEditorMonoSource::mix;
    double gainDb = 0;
    double normalizeDb = 0;
    StretchSettings stretch;
    std::string dialogText;         // the number being typed into the open dialog
    bool dialogTypedAhead = false;  // typing began before its field had the focus
    AudioEditorTimeUnit timeUnit = AudioEditorTimeUnit::seconds;
    std::optional<LoopPress> pressLoop;  // while a drag moves the loop
    bool loopEnabled = false;
    bool eqEnabled = false;  // the equalizer is open and heard
    bool followPlayhead = false;
    bool playing = false;
    bool previewPlaying = false;
    std::optional<PointerMode> pointerMode;
    bool resizingEdge = false;
    bool viewDragged = false;  // the pointer holds the view itself
};

}  // namespace kiv
