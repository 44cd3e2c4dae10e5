#include <algorithm>

#include "Document/AudioDocument.h"
#include "Editor/AudioEditorModel/AudioEditorLoops.h"
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
    PlaybackEngine::Request request;
    request.range = range;
    request.start = start;
    request.loop = loop;
    this->start(request);
}

void AudioDocument::start(PlaybackEngine::Request request) {
    if (!canPlay()) return;
    stop();
    model_.setPlaying(true);  // before play(), which may end in playbackStopped()
    request.eq = eqTargets();
    request.eqTap = model_.state().eqEnabled;
    services_.playback->play(model_.state().buffer, request, *this);
}

void AudioDocument::playSlice(std::size_t index) {
    const AudioEditorState &state = model_.state();
    if (index >= state.slices.size() || !canPlay()) return;
    PlaybackEngine::Request request;
    request.range = state.slices[index];
    request.start = request.range.lo;
    request.fadeIn = state.sliceFadeInSamples;
    request.fadeOut = state.sliceFadeOutSamples;
    start(request);
    model_.setPreviewPlaying(isPlaying());
}

void AudioDocument::playLoopJoint() {
    const AudioEditorState &state = model_.state();
    if (!state.loopPoints || !canPlay()) return;
    PlaybackEngine::Request request;
    request.range = *state.loopPoints;
    request.start = std::max(request.range.lo, request.range.hi - state.buffer.sampleRate());
    request.loop = true;
    request.crossfade = AudioEditorLoops::loopCrossfadeFrames(state);
    request.equalPower = state.loopCrossfadeEqualPower;
    start(request);
    jointPlaying_ = isPlaying();
    model_.setPreviewPlaying(jointPlaying_);
}

// What is set while the joint is heard is heard at once.
void AudioDocument::followLoop(const Changes &changes) {
    if (!jointPlaying_) return;
    const AudioEditorState &state = model_.state();
    if (changes.contains(Change::loopPoints)) return state.loopPoints ? playLoopJoint() : stop();
    if (changes.contains(Change::editLoop))
        services_.playback->updateLoop(AudioEditorLoops::loopCrossfadeFrames(state), state.loopCrossfadeEqualPower);
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
    jointPlaying_ = false;
    const AudioEditorModel::Batch batch(model_);
    model_.setPlayheads({});
    model_.setPlaying(false);
    model_.setPreviewPlaying(false);
    eq_.resetAnalyzer();
}

}  // namespace kiv
