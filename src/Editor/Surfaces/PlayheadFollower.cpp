#include "Editor/Surfaces/PlayheadFollower.h"

namespace kiv {

PlayheadFollower::PlayheadFollower(AudioEditorModel &model) : model_(model) {
    modelChanges_ = model.observers.add([this](const Changes &changes) { changed(changes); });
}

bool PlayheadFollower::isHeadInView() const {
    const AudioEditorState &state = model_.state();
    return isInView(state.view, state.playheads.front().frame, state.buffer.frames());
}

void PlayheadFollower::changed(const Changes &changes) {
    if (isTurning_ || !changes.containsAny({Change::view, Change::playheads, Change::followPlayhead})) return;
    if (changes.contains(Change::followPlayhead) || model_.state().playheads.empty()) isSuspended_ = false;
    if (model_.state().playheads.empty()) return;
    const bool isInView = isHeadInView();
    if (isInView)
        isSuspended_ = false;
    else if (model_.state().pointerMode || model_.state().viewDragged ||
             (changes.contains(Change::view) && !changes.contains(Change::audio)))
        isSuspended_ = true;
    if (isInView || isSuspended_ || !model_.state().followPlayhead) return;
    isTurning_ = true;
    model_.revealFrame(model_.state().playheads.front().frame);
    isTurning_ = false;
}

}  // namespace kiv
