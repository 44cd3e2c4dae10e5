#include <algorithm>

#include "Editor/AudioEditorModel/AudioEditorModel.h"

namespace kiv {

void AudioEditorModel::setView(AudioEditorZoom view) {
    set(&AudioEditorState::view, clampedView(view, state_.buffer.frames()), Change::view);
}

double AudioEditorModel::zoomAnchor() const {
    const double cursor = double(state_.cursorFrame);
    return isInView(state_.view, cursor, state_.buffer.frames()) ? cursor : state_.view.centerFrame;
}

void AudioEditorModel::zoomBy(double factor) {
    setView(zoomedAround(state_.view, state_.view.zoom * factor, zoomAnchor(), state_.buffer.frames()));
}

void AudioEditorModel::zoomToFit() { setView(zoomedToFit(state_.buffer.frames())); }

void AudioEditorModel::zoomToSelection() {
    if (state_.selection) setView(zoomedToRange(*state_.selection, state_.buffer.frames()));
}

void AudioEditorModel::revealFrame(double frame) { setView(revealing(state_.view, frame, state_.buffer.frames())); }

void AudioEditorModel::verticalZoomIn() { setVerticalZoomDb(state_.verticalZoomDb + verticalZoomStepDb); }

void AudioEditorModel::verticalZoomOut() { setVerticalZoomDb(state_.verticalZoomDb - verticalZoomStepDb); }

void AudioEditorModel::setVerticalZoomDb(int db) {
    set(&AudioEditorState::verticalZoomDb, std::clamp(db, verticalZoomMinDb, verticalZoomMaxDb), Change::verticalZoom);
}

void AudioEditorModel::toggleTimeUnit() {
    const bool seconds = state_.timeUnit == AudioEditorTimeUnit::seconds;
    set(&AudioEditorState::timeUnit, seconds ? AudioEditorTimeUnit::samples : AudioEditorTimeUnit::seconds, Change::timeUnit);
}

void AudioEditorModel::setFollowPlayhead(bool follow) {
    set(&AudioEditorState::followPlayhead, follow, Change::followPlayhead);
}

}  // namespace kiv
