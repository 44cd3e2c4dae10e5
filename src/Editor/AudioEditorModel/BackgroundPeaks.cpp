#include "Editor/AudioEditorModel/BackgroundPeaks.h"

namespace kiv {

BackgroundPeaks::BackgroundPeaks(AudioEditorModel &model, Jobs &jobs) : model_(model), jobs_(jobs) {
    model.onLoosePeaks = [this] { start(); };
}

BackgroundPeaks::~BackgroundPeaks() {
    model_.onLoosePeaks = nullptr;
    if (progress_) progress_->cancel();
}

void BackgroundPeaks::start() {
    if (progress_) progress_->cancel();
    progress_ = std::make_shared<Progress>();
    const AudioEditorState &state = model_.state();
    const auto tail = std::make_shared<AudioEditorPeaks>();
    const auto first = state.peaks.looseFrom * AudioEditorPeaks::blockSize;
    const auto work = [tail, sound = state.buffer.part({first, state.buffer.frames()})](Progress &wanted) {
        *tail = AudioEditorPeaks(sound, &wanted);
    };
    const auto done = [this, tail, generation = state.generation,
                       alive = std::weak_ptr<int>(alive_)](std::exception_ptr failure) {
        if (!alive.expired() && !failure) model_.completePeaks(generation, *tail);
    };
    jobs_.run(progress_, work, done);
}

}  // namespace kiv
