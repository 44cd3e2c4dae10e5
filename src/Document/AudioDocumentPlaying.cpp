#include "Document/AudioDocument.h"
#include "Editor/AudioEditorModel/AudioEditorSpectralPainting.h"

// Where the document meets playback.
namespace kiv {

bool AudioDocument::canPlay() const { return services_.playback && !model_.state().buffer.isEmpty(); }

bool AudioDocument::isPlaying() const { return services_.playback && services_.playback->isPlaying(this); }

void AudioDocument::stop() {
    if (services_.playback) services_.playback->stop(this);
}

void AudioDocument::togglePlay() {
    if (isPlaying()) return stop();
    const AudioEditorState &state = model_.state();
    if (state.selection) return play(*state.selection, state.selection->lo, state.loopEnabled);
    const FrameRange all{0, state.buffer.frames()};
    play(all, state.cursorFrame < all.hi ? state.cursorFrame : 0, state.loopEnabled);
}

void AudioDocument::play(FrameRange range, std::int64_t start, bool loop) {
    if (!canPlay()) return;
    stop();
    model_.setPlaying(true);  // before play(), which may end in playbackStopped()
    PlaybackEngine::Request request;
    request.range = range;
    request.start = start;
    request.loop = loop;
    request.eq = eqTargets();
    request.eqTap = model_.state().eqEnabled;
    services_.playback->play(model_.state().buffer, request, *this);
}

void AudioDocument::goToStart() {
    const bool wasPlaying = isPlaying();
    model_.placeCursor(0);
    model_.revealFrame(0);
    if (wasPlaying) play({0, model_.state().buffer.frames()}, 0, model_.state().loopEnabled);
}

void AudioDocument::goToEnd() {
    const std::int64_t end = model_.state().buffer.frames();
    stop();
    model_.placeCursor(end);
    model_.revealFrame(double(end));
}

void AudioDocument::playbackPeak(float level) {
    const std::optional<float> highest = model_.state().maxLevel;
    if (level > highest.value_or(0)) model_.setMaxLevel(level);
}

void AudioDocument::playbackMoved(double frame) {
    model_.setPlayheads({{0, frame}});
    if (model_.state().eqEnabled) feedAnalyzer();
    AudioEditorSpectralPainting::previewIfDue(model_);
}

void AudioDocument::playbackStopped() {
    const AudioEditorModel::Batch batch(model_);
    model_.setPlayheads({});
    model_.setPlaying(false);
    model_.setPreviewPlaying(false);
    eq_.resetAnalyzer();
}

}  // namespace kiv
