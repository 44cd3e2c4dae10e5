#include "Editor/Surfaces/WaveformInput.h"

#include <algorithm>
#include <cmath>

namespace kiv {
namespace {

constexpr double grace = 5;  // logical pixels
constexpr double dragFrom = 3;
constexpr double speedPerPixel = 20;  // columns a second for each one that the pointer is outside
constexpr double page = 0.8;          // of the view

}  // namespace

std::vector<std::int64_t> markedFrames(const AudioEditorState &state) {
    std::vector<std::int64_t> frames = state.markerFrames;
    frames.insert(frames.end(), {0, state.buffer.frames()});
    if (state.loopPoints) frames.insert(frames.end(), {state.loopPoints->lo, state.loopPoints->hi});
    std::sort(frames.begin(), frames.end());
    frames.erase(std::unique(frames.begin(), frames.end()), frames.end());
    return frames;
}

void WaveformInput::begin(const PointerEvent &event, bool movesView) {
    const AudioEditorState &state = model_.state();
    press_ = Press{state.cursorFrame, state.selection, state.view, movesView, event, event, 0, {}};
}

void WaveformInput::press(const PointerEvent &event, int clicks, const WaveformGeometry &geometry) {
    const AudioEditorModel::Batch batch(model_);
    const AudioEditorState &state = model_.state();
    const std::int64_t frame = geometry.frameAt(event.x, state.buffer.frames());
    if (clicks == 3) return model_.selectAll();
    if (clicks == 2) return selectBetweenMarks(frame);
    begin(event, false);
    const auto edge = edgeNear(event.x, geometry);
    if (edge) {
        press_->grab = double(*edge) - geometry.axis.frameAt(event.x);
        dragEdge(*edge, *edge == state.selection->lo ? state.selection->hi : state.selection->lo);
    } else if (event.modifiers.shift) {
        const FrameRange from = state.selection.value_or(FrameRange{state.cursorFrame, state.cursorFrame});
        dragEdge(frame, frame - from.lo > from.hi - frame ? from.lo : from.hi);
        extendTo(*fixed_, frame);
    } else {
        fixed_ = frame;
        model_.setPointerMode(CursorDrag{frame, event.x, false});
        model_.placeCursor(frame);
    }
}

void WaveformInput::dragEdge(std::int64_t edge, std::int64_t fixed) {
    press_->start = edge;
    fixed_ = fixed;
    model_.setPointerMode(EdgeDrag{fixed});
}

void WaveformInput::pressMiddle(const PointerEvent &event, const WaveformGeometry &) {
    if (!press_) begin(event, true);
}

void WaveformInput::pressRight(const PointerEvent &event, const WaveformGeometry &geometry) {
    const AudioEditorState &state = model_.state();
    const std::int64_t frame = geometry.frameAt(event.x, state.buffer.frames());
    const bool inside = state.selection && frame >= state.selection->lo && frame <= state.selection->hi;
    if (!inside && !press_) model_.placeCursor(frame);
}

void WaveformInput::move(const PointerEvent &event, const WaveformGeometry &geometry) {
    if (!press_) return;
    press_->last = event;
    if (press_->movesView) {
        const double frames = (press_->at.x - event.x) * geometry.axis.framesPerColumn;
        model_.setView(scrolledBy(press_->view, frames, model_.state().buffer.frames()));
    } else {
        drag(event, geometry);
    }
}

void WaveformInput::drag(const PointerEvent &event, const WaveformGeometry &geometry) {
    const auto mode = model_.state().pointerMode;
    if (!mode) return;
    const AudioEditorModel::Batch batch(model_);
    if (const auto *edge = std::get_if<EdgeDrag>(&*mode))
        return extendTo(edge->fixed, draggedFrame(event, edge->fixed, geometry));
    const auto cursor = std::get<CursorDrag>(*mode);
    if (!cursor.selecting && std::abs(event.x - cursor.pressX) < dragFrom * geometry.size.scale) return;
    model_.setPointerMode(CursorDrag{cursor.anchor, cursor.pressX, true});
    extendTo(cursor.anchor, draggedFrame(event, cursor.anchor, geometry));
}

// Where a dragged edge is put: at the pointer, or at a mark near it unless Ctrl is held.
std::int64_t WaveformInput::draggedFrame(const PointerEvent &event, std::int64_t fixed,
                                         const WaveformGeometry &geometry) const {
    const AudioEditorState &state = model_.state();
    if (press_->grab != 0 && event.x == press_->at.x) return *press_->start;
    const double x = std::clamp(event.x, 0.0, geometry.size.width * geometry.size.scale);
    const double place = x + press_->grab / geometry.axis.framesPerColumn;
    std::int64_t nearest = geometry.frameAt(place, state.buffer.frames());
    if (event.modifiers.control) return nearest;
    double within = grace * geometry.size.scale;
    const auto consider = [&](std::int64_t frame) {
        const double distance = std::abs(geometry.axis.xOf(double(frame)) - place);
        if (frame == fixed || frame == press_->start || distance > within) return;
        within = distance;
        nearest = frame;
    };
    if (press_->start) consider(press_->cursor);
    for (const std::int64_t frame : markedFrames(state)) consider(frame);
    return nearest;
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
    press_.reset();
    model_.setPointerMode(std::nullopt);
}

bool WaveformInput::cancel() {
    if (!press_) return false;
    const AudioEditorModel::Batch batch(model_);
    model_.setCursorAndSelection(press_->cursor, press_->selection);
    model_.setView(press_->view);
    release();
    return true;
}

double WaveformInput::scrollSpeed(const WaveformGeometry &geometry) const {
    const auto &mode = model_.state().pointerMode;
    if (!press_ || !mode) return 0;
    if (const auto *cursor = std::get_if<CursorDrag>(&*mode); cursor && !cursor->selecting) return 0;
    const double x = press_->last.x, width = geometry.size.width * geometry.size.scale;
    return x < 0 ? x * speedPerPixel : x > width ? (x - width) * speedPerPixel : 0;
}

void WaveformInput::scroll(double seconds, const WaveformGeometry &geometry) {
    const AudioEditorModel::Batch batch(model_);
    const AudioEditorState &state = model_.state();
    const double frames = scrollSpeed(geometry) * seconds * geometry.axis.framesPerColumn;
    model_.setView(scrolledBy(state.view, frames, state.buffer.frames()));
    drag(press_->last, waveformGeometry(state, geometry.size));
}

std::optional<std::int64_t> WaveformInput::edgeNear(double x, const WaveformGeometry &geometry) const {
    const auto &selection = model_.state().selection;
    if (!selection) return std::nullopt;
    const auto distance = [&](std::int64_t frame) { return std::abs(geometry.axis.xOf(double(frame)) - std::floor(x)); };
    const std::int64_t edge = distance(selection->lo) < distance(selection->hi) ? selection->lo : selection->hi;
    return distance(edge) <= grace * geometry.size.scale ? std::optional(edge) : std::nullopt;
}

PointerShape WaveformInput::shape(const PointerEvent &event, const WaveformGeometry &geometry) const {
    if (press_ && press_->movesView) return PointerShape::closedHand;
    if (press_) return model_.state().resizingEdge ? PointerShape::horizontalSize : PointerShape::textBeam;
    return edgeNear(event.x, geometry) ? PointerShape::horizontalSize : PointerShape::textBeam;
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
