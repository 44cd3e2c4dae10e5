#include "Editor/Surfaces/WaveformInput.h"

#include <algorithm>
#include <cmath>

namespace kiv {
namespace {

constexpr double dragFrom = 3;        // logical pixels
constexpr double speedPerPixel = 20;  // columns a second for each one that the pointer is outside
constexpr double leastDistance = 8;   // added to it
constexpr double page = 0.8;          // of the view

}  // namespace

void WaveformInput::begin(const PointerEvent &event) {
    const AudioEditorState &state = model_.state();
    press_ = Press{state.cursorFrame, state.selection, state.view, event, event, state.cursorFrame, {}, 0, {}};
}

void WaveformInput::setViewOnly(bool isViewOnly) {
    isViewOnly_ = isViewOnly;
    if (isViewOnly && press_) release();
}

void WaveformInput::press(PointerButton button, const PointerEvent &event, const std::function<int()> &countClicks,
                          const WaveformGeometry &geometry) {
    if (button == PointerButton::left && !isDragging()) press(event, countClicks(), geometry);
    if (button == PointerButton::middle) pressMiddle(event, geometry);
    if (button == PointerButton::right) pressRight(event, geometry);
}

void WaveformInput::press(const PointerEvent &event, int clicks, const WaveformGeometry &geometry) {
    if (isViewOnly_) return;
    const AudioEditorModel::Batch batch(model_);
    const std::int64_t frame = geometry.frameAt(event.x, model_.state().buffer.frames());
    if (clicks == 3) return model_.selectAll();
    if (clicks == 2) return selectBetweenMarks(frame);
    begin(event);
    if (const auto edge = edgeNear(model_.state(), geometry.axis, event.x, geometry.size.scale))
        return pressEdge(*edge, geometry);
    if (event.modifiers.shift) return pressExtending(frame, geometry);
    press_->anchor = markNear(event, geometry).value_or(frame);
    fixed_ = frame;
    model_.setPointerMode(CursorDrag{frame, event.x, false});
    model_.placeCursor(frame);
}

void WaveformInput::pressEdge(TimeEdge edge, const WaveformGeometry &geometry) {
    const FrameRange range = rangeOf(model_.state(), edge.kind);
    press_->start = frameOf(range, edge.isStart);
    press_->grab = double(*press_->start) - geometry.axis.frameAt(press_->at.x);
    if (edge.kind == TimeEdge::Kind::loop) return model_.setPointerMode(LoopEdgeDrag{edge.isStart});
    fixed_ = frameOf(range, !edge.isStart);
    model_.setPointerMode(EdgeDrag{*fixed_});
}

void WaveformInput::pressExtending(std::int64_t frame, const WaveformGeometry &geometry) {
    const AudioEditorState &state = model_.state();
    const FrameRange from = state.selection.value_or(FrameRange{state.cursorFrame, state.cursorFrame});
    const std::int64_t fixed = frame - from.lo > from.hi - frame ? from.lo : from.hi;
    const auto mark = markNear(press_->at, geometry);
    press_->start = mark && mark != fixed && !press_->at.modifiers.control ? *mark : frame;
    press_->grab = double(frame) - geometry.axis.frameAt(press_->at.x);
    model_.setPointerMode(EdgeDrag{fixed});
    extendTo(fixed, *press_->start);
}

void WaveformInput::pressMiddle(const PointerEvent &event, const WaveformGeometry &geometry) {
    if (press_) return;
    begin(event);
    const AudioEditorState &state = model_.state();
    const std::int64_t frames = state.buffer.frames();
    const double fraction = event.x / (geometry.size.width * geometry.size.scale);
    press_->held = firstVisibleFrame(state.view, frames) + fraction * visibleFrames(state.view, frames);
    model_.setViewDragged(true);
}

void WaveformInput::pressRight(const PointerEvent &event, const WaveformGeometry &geometry) {
    const AudioEditorState &state = model_.state();
    const std::int64_t frame = geometry.frameAt(event.x, state.buffer.frames());
    const bool inside = state.selection && frame >= state.selection->lo && frame <= state.selection->hi;
    if (!inside && !press_ && !isViewOnly_) model_.placeCursor(frame);
}

void WaveformInput::move(const PointerEvent &event, const WaveformGeometry &geometry) {
    if (!press_) return;
    press_->last = event;
    viewMoved(geometry);
}

void WaveformInput::modifiersChanged(Modifiers modifiers, const WaveformGeometry &geometry) {
    if (press_) press_->last.modifiers = modifiers;
    viewMoved(geometry);
}

void WaveformInput::viewMoved(const WaveformGeometry &geometry) {
    if (!press_) return;
    if (press_->held)
        dragView(press_->last.x, geometry);
    else
        drag(press_->last, geometry);
}

// What is held stays under the pointer, also after the view was zoomed meanwhile.
void WaveformInput::dragView(double x, const WaveformGeometry &geometry) {
    const AudioEditorState &state = model_.state();
    const double fraction = x / (geometry.size.width * geometry.size.scale);
    const double visible = visibleFrames(state.view, state.buffer.frames());
    model_.setView({state.view.zoom, *press_->held + (0.5 - fraction) * visible});
}

void WaveformInput::drag(const PointerEvent &event, const WaveformGeometry &geometry) {
    using Kind = TimeEdge::Kind;
    const auto mode = model_.state().pointerMode;
    if (!mode) return;
    const AudioEditorModel::Batch batch(model_);
    if (const auto *loop = std::get_if<LoopEdgeDrag>(&*mode)) return dragLoop(loop->start, event, geometry);
    if (const auto *edge = std::get_if<EdgeDrag>(&*mode))
        return extendTo(edge->fixed, draggedFrame(event, Kind::selection, edge->fixed, geometry));
    auto cursor = std::get<CursorDrag>(*mode);
    if (!cursor.selecting && std::abs(event.x - cursor.pressX) < dragFrom * geometry.size.scale) return;
    if (!cursor.selecting && !event.modifiers.control) cursor.anchor = press_->anchor;
    cursor.selecting = true;
    model_.setPointerMode(cursor);
    extendTo(cursor.anchor, draggedFrame(event, Kind::selection, cursor.anchor, geometry));
}

// One end stops where the other stands.
void WaveformInput::dragLoop(bool isStart, const PointerEvent &event, const WaveformGeometry &geometry) {
    if (!model_.state().loopPoints) return;
    FrameRange loop = *model_.state().loopPoints;
    const std::int64_t frame = draggedFrame(event, TimeEdge::Kind::loop, frameOf(loop, !isStart), geometry);
    (isStart ? loop.lo : loop.hi) = isStart ? std::min(frame, loop.hi - 1) : std::max(frame, loop.lo + 1);
    model_.moveLoop(loop);
}

// Where a dragged edge is put: at the pointer, or at a mark near it unless Ctrl is held.
std::int64_t WaveformInput::draggedFrame(const PointerEvent &event, TimeEdge::Kind kind, std::int64_t fixed,
                                         const WaveformGeometry &geometry) const {
    const AudioEditorState &state = model_.state();
    if (press_->start && event.x == press_->at.x && state.view == press_->view) return *press_->start;
    const double x = std::clamp(event.x, 0.0, geometry.size.width * geometry.size.scale);
    const double place = x + press_->grab / geometry.axis.framesPerColumn;
    if (!event.modifiers.control) {
        auto marks = stickyFrames(state, kind);
        std::erase(marks, fixed);
        if (const auto mark = stuckTo(marks, geometry.axis, place, geometry.size.scale)) return *mark;
    }
    if (!press_->start) return geometry.frameAt(place, state.buffer.frames());
    return std::clamp<std::int64_t>(std::llround(geometry.axis.frameAt(place)), 0, state.buffer.frames());
}

// The mark that a selection begun here sticks to. The cursor is one until the press moves it.
std::optional<std::int64_t> WaveformInput::markNear(const PointerEvent &event, const WaveformGeometry &geometry) const {
    auto marks = stickyFrames(model_.state(), TimeEdge::Kind::selection);
    marks.push_back(model_.state().cursorFrame);
    return stuckTo(marks, geometry.axis, std::floor(event.x), geometry.size.scale);
}

void WaveformInput::extendTo(std::int64_t fixed, std::int64_t frame) {
    fixed_ = fixed;
    model_.select({std::min(fixed, frame), std::max(fixed, frame)});
}

void WaveformInput::selectBetweenMarks(std::int64_t frame) {
    const auto marks = markedFrames(model_.state());
    const auto after = std::upper_bound(marks.begin(), marks.end() - 1, frame);
    if (after == marks.begin()) return;
    fixed_ = *(after - 1);
    model_.select({*(after - 1), *after});
}

void WaveformInput::release() {
    const AudioEditorModel::Batch batch(model_);
    press_.reset();
    model_.endLoopMove();
    model_.setPointerMode(std::nullopt);
    model_.setViewDragged(false);
}

bool WaveformInput::cancel() {
    if (!press_) return false;
    const AudioEditorModel::Batch batch(model_);
    model_.cancelLoopMove();
    model_.setCursorAndSelection(press_->cursor, press_->selection);
    model_.setView(press_->view);
    release();
    return true;
}

double WaveformInput::scrollSpeed(const WaveformGeometry &geometry) const {
    const auto &mode = model_.state().pointerMode;
    if (!press_ || !mode) return 0;
    if (const auto *cursor = std::get_if<CursorDrag>(&*mode); cursor && !cursor->selecting) return 0;
    const double x = press_->last.x, last = geometry.size.width * geometry.size.scale - 1;
    const double least = leastDistance * geometry.size.scale;
    return x < 0 ? (x - least) * speedPerPixel : x >= last ? (x - last + least) * speedPerPixel : 0;
}

void WaveformInput::scroll(double seconds, const WaveformGeometry &geometry) {
    const AudioEditorModel::Batch batch(model_);
    const AudioEditorState &state = model_.state();
    const double frames = scrollSpeed(geometry) * seconds * geometry.axis.framesPerColumn;
    model_.setView(scrolledBy(state.view, frames, state.buffer.frames()));
    drag(press_->last, waveformGeometry(state, geometry.size));
}

PointerShape WaveformInput::shape(const PointerEvent &event, const WaveformGeometry &geometry) const {
    const AudioEditorState &state = model_.state();
    if (press_ && press_->held) return PointerShape::closedHand;
    if (isViewOnly_) return PointerShape::arrow;
    const bool isEdge = press_ ? state.pointerMode && !std::holds_alternative<CursorDrag>(*state.pointerMode)
                               : edgeNear(state, geometry.axis, event.x, geometry.size.scale).has_value();
    return isEdge ? PointerShape::horizontalSize : PointerShape::textBeam;
}

// The end that keys move when they extend the selection.
std::int64_t WaveformInput::movingEnd() const {
    const AudioEditorState &state = model_.state();
    if (!state.selection) return state.cursorFrame;
    return fixed_ == state.selection->hi ? state.selection->lo : state.selection->hi;
}

std::int64_t WaveformInput::keyTarget(ViewKey key, bool toMark, std::int64_t from, const WaveformGeometry &geometry) const {
    const AudioEditorState &state = model_.state();
    const auto step = std::max<std::int64_t>(std::llround(geometry.axis.framesPerColumn * geometry.size.scale), 1);
    const std::int64_t frames = state.buffer.frames();
    const auto screen = std::int64_t(std::llround(page * visibleFrames(state.view, frames)));
    const auto marks = markedFrames(state);
    const auto after = std::upper_bound(marks.begin(), marks.end(), from);
    const auto before = std::lower_bound(marks.begin(), marks.end(), from);
    switch (key) {
        case ViewKey::left:
            return !toMark ? from - step : before == marks.begin() ? 0 : *(before - 1);
        case ViewKey::right:
            return !toMark ? from + step : after == marks.end() ? frames : *after;
        case ViewKey::home:
            return 0;
        case ViewKey::end:
            return frames;
        case ViewKey::pageUp:
            return from - screen;
        case ViewKey::pageDown:
            return from + screen;
        default:
            return from;
    }
}

void WaveformInput::moveTo(std::int64_t frame, bool extends) {
    const AudioEditorState &state = model_.state();
    if (!extends) return model_.placeCursor(frame);
    const std::int64_t fixed = !state.selection                     ? state.cursorFrame
                               : movingEnd() == state.selection->hi ? state.selection->lo
                                                                    : state.selection->hi;
    extendTo(fixed, std::clamp<std::int64_t>(frame, 0, state.buffer.frames()));
}

void WaveformInput::key(ViewKey key, Modifiers modifiers, const WaveformGeometry &geometry) {
    const AudioEditorModel::Batch batch(model_);
    if (key == ViewKey::up) return model_.verticalZoomIn();
    if (key == ViewKey::down) return model_.verticalZoomOut();
    if (press_) return;
    const AudioEditorState &state = model_.state();
    const std::int64_t from = modifiers.shift ? movingEnd() : state.cursorFrame;
    const std::int64_t target = keyTarget(key, modifiers.control, from, geometry);
    moveTo(target, modifiers.shift);
    // A page takes the view along, so that what is looked at keeps its place on the screen.
    if (key == ViewKey::pageUp || key == ViewKey::pageDown)
        model_.setView(scrolledBy(state.view, double(target - from), state.buffer.frames()));
    model_.revealFrame(double(std::clamp<std::int64_t>(target, 0, state.buffer.frames())));
}

}  // namespace kiv
