#include "Editor/Surfaces/TopBarScene.h"

#include "Editor/Surfaces/DecibelText.h"

namespace kiv {

double shownPosition(const AudioEditorState &state) {
    return state.playheads.empty() ? double(state.cursorFrame) : state.playheads.front().frame;
}

TopBarScene topBarScene(const AudioEditorState &state) {
    return {
        .position = format(state.timeUnit, shownPosition(state), state.buffer.sampleRate()),
        .maxLevel = state.maxLevel ? decibelText(amplitudeDb(*state.maxLevel)) : "–",
        .verticalZoom = wholeDecibelText(state.verticalZoomDb),
        .isOver = state.maxLevel && *state.maxLevel > 1,
        .isPlaying = state.playing || state.previewPlaying,
        .loops = state.loopEnabled,
        .followsPlayhead = state.followPlayhead,
    };
}

}  // namespace kiv
