#include "Document/DocumentPlayer.h"

#include <algorithm>
#include <utility>

#include "Editor/AudioEditorModel/AudioEditorLoops.h"
#include "Editor/AudioEditorModel/AudioEditorSpectralPainting.h"

namespace kiv {

DocumentPlayer::DocumentPlayer(PlaybackEngine *playback, AudioEditorModel &model, EqModel &eq)
    : playback_(playback), model_(model), eq_(eq) {
    model.onAudioChanged = [this](const AudioEditorBuffer &, const AudioEditorBuffer &now) {
        if (isPlaying()) playback_->setBuffer(now, model_.lengthChange());
    };
    model.onLoopChanged = [this](bool loop) {
        if (isPlaying() && !jointPlaying_) playback_->setLoop(loop);
    };
    model.onEqChanged = [this](bool) { updateEq(); };
    model.onSpectralPreview = [this](const AudioEditorBuffer &preview) {
        if (isPlaying()) playback_->setBuffer(preview);
    };
    model.onPlayJoint = [this] { playLoopJoint(); };
    model.onPlayRange = [this](FrameRange range, bool loop) { play({.range = range, .start = range.lo, .loop = loop}); };
    loopChanges_ = model.observers.add([this](const Changes &changes) { followLoop(changes); });
    eqChanges_ = eq.observers.add([this](EqModel::Change change) {
        if (change == EqModel::Change::settings) updateEq();
    });
}

DocumentPlayer::~DocumentPlayer() { stop(); }

bool DocumentPlayer::canPlay() const { return playback_ && !model_.state().buffer.isEmpty(); }

bool DocumentPlayer::isPlaying() const { return playback_ && playback_->isPlaying(this); }

void DocumentPlayer::stop() {
    if (playback_) playback_->stop(this);
}

void DocumentPlayer::togglePlay() {
    if (isPlaying()) return stop();
    const AudioEditorState &state = model_.state();
    const FrameRange range = state.selection.value_or(FrameRange{0, state.buffer.frames()});
    const std::int64_t cursor = state.cursorFrame < range.hi ? state.cursorFrame : 0;
    play({.range = range, .start = state.selection ? range.lo : cursor, .loop = state.loopEnabled});
}

void DocumentPlayer::play(PlaybackEngine::Request request) {
    if (!canPlay()) return;
    stop();
    model_.setPlaying(true);  // before play(), which may end in playbackStopped()
    request.eq = eqTargets();
    request.eqTap = model_.state().eqEnabled;
    playback_->play(model_.state().buffer, request, *this);
}

void DocumentPlayer::playSlice(std::size_t index) {
    const AudioEditorState &state = model_.state();
    if (index >= state.slices.size() || !canPlay()) return;
    const FrameRange slice = state.slices[index];
    play({.range = slice, .start = slice.lo, .fadeIn = state.sliceFadeInSamples, .fadeOut = state.sliceFadeOutSamples});
    model_.setPreviewPlaying(isPlaying());
}

void DocumentPlayer::playLoopJoint() {
    const AudioEditorState &state = model_.state();
    if (!state.loopPoints || !canPlay()) return;
    const FrameRange loop = *state.loopPoints;
    play({.range = loop,
          .start = std::max(loop.lo, loop.hi - state.buffer.sampleRate()),
          .loop = true,
          .crossfade = AudioEditorLoops::loopCrossfadeFrames(state),
          .equalPower = state.loopCrossfadeEqualPower});
    jointPlaying_ = isPlaying();
    model_.setPreviewPlaying(jointPlaying_);
}

// What is set while the joint is heard is heard at once.
void DocumentPlayer::followLoop(const Changes &changes) {
    if (!jointPlaying_) return;
    const AudioEditorState &state = model_.state();
    if (changes.contains(Change::loopPoints)) return state.loopPoints ? playLoopJoint() : stop();
    if (changes.contains(Change::editLoop))
        playback_->updateLoop(AudioEditorLoops::loopCrossfadeFrames(state), state.loopCrossfadeEqualPower);
}

void DocumentPlayer::updateEq() {
    if (!model_.state().eqEnabled) eq_.resetAnalyzer();
    if (!playback_) return;
    playback_->setEq(eqTargets(), this);
    playback_->setEqTap(model_.state().eqEnabled, this);
}

// Called with every tick of the playback, which is about twice as often as the picture is to change.
void DocumentPlayer::feedAnalyzer() {
    eqInput_.resize(AnalyzerTap::blockFrames);
    eqOutput_.resize(AnalyzerTap::blockFrames);
    if (std::exchange(analyzerRests_, !analyzerRests_)) return;
    if (playback_->readAnalyzer(this, eqInput_, eqOutput_)) eq_.analyze(eqInput_, eqOutput_);
}

void DocumentPlayer::goToStart() {
    const bool wasPlaying = isPlaying();
    model_.placeCursor(0);
    model_.revealFrame(0);
    if (wasPlaying) play({.range = {0, model_.state().buffer.frames()}, .loop = model_.state().loopEnabled});
}

void DocumentPlayer::goToEnd() {
    const std::int64_t end = model_.state().buffer.frames();
    stop();
    model_.placeCursor(end);
    model_.revealFrame(double(end));
}

void DocumentPlayer::playbackPeak(float level) {
    const std::optional<float> highest = model_.state().maxLevel;
    if (level > highest.value_or(0)) model_.setMaxLevel(level);
}

void DocumentPlayer::playbackMoved(double frame) {
    model_.setPlayheads({{0, frame}});
    if (model_.state().eqEnabled) feedAnalyzer();
    AudioEditorSpectralPainting::previewIfDue(model_);
}

void DocumentPlayer::playbackStopped() {
    jointPlaying_ = false;
    const AudioEditorModel::Batch batch(model_);
    model_.setPlayheads({});
    model_.setPlaying(false);
    model_.setPreviewPlaying(false);
    eq_.resetAnalyzer();
}

}  // namespace kiv
