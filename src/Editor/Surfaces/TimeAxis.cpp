#include "Editor/Surfaces/TimeAxis.h"

#include <algorithm>
#include <cmath>

namespace kiv {

TimeAxis viewAxis(const AudioEditorState &state, double width) {
    const std::int64_t frames = state.buffer.frames();
    const double framesPerColumn = visibleFrames(state.view, frames) / std::max(width, 1.0);
    return {std::llround(firstVisibleFrame(state.view, frames) / framesPerColumn), framesPerColumn};
}

TimeAxis wholeAxis(const AudioEditorState &state, double width) {
    return {0, double(std::max<std::int64_t>(state.buffer.frames(), 1)) / std::max(width, 1.0)};
}

}  // namespace kiv
