#include "App/StateReport.h"

#include <cstdio>
#include <string>

namespace kiv {
namespace {

std::string text(const std::optional<FrameRange> &range) {
    return range ? "[" + std::to_string(range->lo) + "," + std::to_string(range->hi) + "]" : "null";
}

void say(const AudioEditorState &state) {
    const std::int64_t frames = state.buffer.frames();
    const std::string playhead = state.playheads.empty() ? "null" : std::to_string(state.playheads.front().frame);
    std::printf(
        "{\"frames\":%lld,\"cursor\":%lld,\"selection\":%s,\"loop\":%s,\"view\":[%.3f,%.3f],\"verticalDb\":%d,"
        "\"playhead\":%s,\"dragging\":%s}\n",
        static_cast<long long>(frames), static_cast<long long>(state.cursorFrame), text(state.selection).c_str(),
        text(state.loopPoints).c_str(), firstVisibleFrame(state.view, frames), visibleFrames(state.view, frames),
        state.verticalZoomDb, playhead.c_str(), state.pointerMode || state.viewDragged ? "true" : "false");
    std::fflush(stdout);
}

}  // namespace

void StateReport::watch(AudioEditorModel &model) {
    changes_.push_back(model.observers.add([&model](const Changes &) { say(model.state()); }));
}

}  // namespace kiv
