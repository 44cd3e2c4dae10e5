#include "Audio/Playback/PlaybackEngine.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <exception>
#include <mutex>
#include <span>
#include <utility>

namespace kiv {
namespace {

using namespace std::chrono_literals;

constexpr auto tickInterval = 16ms;  // a frame of a common display
constexpr auto idleTime = 30s;
constexpr auto drainMargin = 200ms;  // beyond the output's latency, which is an estimate

AudioOutput::Format formatFor(const AudioEditorBuffer &buffer) {
    return {buffer.sampleRate(), int(std::min<std::int64_t>(buffer.channels(), 2)), {}};
}

State stateFor(const AudioEditorBuffer &buffer, FrameRange range, const PlaybackEngine::Request &request) {
    return {.samples = buffer,
            .lower = range.lo,
            .upper = range.hi,
            .position = std::clamp<std::int64_t>(request.start, 0, range.hi),
            .loop = request.loop,
            .playing = true,
            .crossfade = request.crossfade,
            .equalPower = request.equalPower,
            .fadeIn = request.fadeIn,
            .fadeOut = request.fadeOut,
            .eq = {},
            .eqTap = request.eqTap};
}

}  // namespace

PlaybackEngine::PlaybackEngine(AudioOutput &output, MainLoop &mainLoop, SystemLog &log)
    : output_(output), mainLoop_(mainLoop), log_(log), shared_(std::make_shared<RenderShared>()) {
    output_.onLost = [this](const std::string &reason) { lost(reason); };
}

PlaybackEngine::~PlaybackEngine() {
    stop();
    tearDown();
    output_.onLost = nullptr;
}

bool PlaybackEngine::isPlaying(const Client *client) const { return isPlaying_ && (!client || client == client_); }

void PlaybackEngine::play(const AudioEditorBuffer &buffer, const Request &request, Client &client) {
    stop();
    const auto range = buffer.clampedRange(request.range);
    if (!range || !open(formatFor(buffer))) return client.playbackStopped();
    State state = stateFor(buffer, *range, request);
    eqTargets_ = request.eq;
    state.eq = makeEq(*format_);
    begin(std::move(state), client);
}

void PlaybackEngine::begin(State state, Client &client) {
    client_ = &client;
    soundFrames_ = state.samples.frames();
    rangeLower_ = state.lower;
    rangeUpper_ = state.upper;
    startFrame_ = lastRendered_ = state.position;
    wrapped_ = false;
    isPlaying_ = true;
    shared_->analyzer.restart();
    exchangeState(state);
    timer_ = mainLoop_.repeat(tickInterval, [this] { tick(); });
    output_.resume();
}

void PlaybackEngine::stop(const Client *client) {
    if (isPlaying(client)) end(Ending::cut);
}

void PlaybackEngine::end(Ending ending) {
    State silent;
    exchangeState(silent);
    timer_.reset();
    isPlaying_ = false;
    if (ending == Ending::cut) {
        output_.pause();
    } else {
        const std::chrono::duration<double> latency(output_.latencySeconds());
        idlePause_ =
            mainLoop_.after(std::chrono::ceil<std::chrono::milliseconds>(latency) + drainMargin, [this] { output_.pause(); });
    }
    idleTeardown_ = mainLoop_.after(idleTime, [this] { tearDown(); });
    Client &client = *std::exchange(client_, nullptr);
    client.playbackPeak(takePeak());
    client.playbackStopped();
}

void PlaybackEngine::setLoop(bool loop) {
    const std::lock_guard lock(shared_->stateLock);
    shared_->state.loop = loop;
}

void PlaybackEngine::updateLoop(std::int64_t crossfade, bool equalPower) {
    const std::lock_guard lock(shared_->stateLock);
    shared_->state.crossfade = crossfade;
    shared_->state.equalPower = equalPower;
}

void PlaybackEngine::setEq(const EqTargets &targets, const Client *client) {
    if (!isPlaying(client) || targets == eqTargets_) return;
    eqTargets_ = targets;
    const std::lock_guard lock(shared_->eqLock);
    shared_->eqPending = targets;
}

void PlaybackEngine::setEqTap(bool feeds, const Client *client) {
    if (!isPlaying(client)) return;
    const std::lock_guard lock(shared_->stateLock);
    shared_->state.eqTap = feeds;
}

bool PlaybackEngine::readAnalyzer(const Client *client, std::span<float> before, std::span<float> after) {
    return isPlaying(client) && shared_->analyzer.read(before, after);
}

// Without anything to glide from.
std::optional<EqProcessor> PlaybackEngine::makeEq(const AudioOutput::Format &format) const {
    EqProcessor processor(double(format.sampleRate), format.channels);
    processor.setTargets(eqTargets_);
    processor.reset();
    return processor;
}

FrameRange PlaybackEngine::moveRange(const AudioEditorLengthChange &change, std::int64_t frames) const {
    const bool reachesEnd = rangeUpper_ == soundFrames_;
    return {change.map(rangeLower_, frames), reachesEnd ? frames : change.map(rangeUpper_, frames)};
}

void PlaybackEngine::setBuffer(const AudioEditorBuffer &buffer, const AudioEditorLengthChange &change) {
    if (!isPlaying_) return;
    const std::int64_t frames = buffer.frames();
    const auto range = buffer.clampedRange(moveRange(change, frames));
    if (!range || buffer.sampleRate() != format_->sampleRate) return stop();
    // One behind the end of a shortened sound stays there: it has been rendered, and is about to be heard.
    const bool moves = change.kind != AudioEditorLengthChange::Kind::none && frames != soundFrames_;
    const auto moved = [&](std::int64_t frame) { return moves ? change.map(frame, frames) : frame; };
    soundFrames_ = frames;
    rangeLower_ = range->lo;
    rangeUpper_ = range->hi;
    startFrame_ = moved(startFrame_);
    lastRendered_ = moved(lastRendered_);
    const bool hasOtherChannels = formatFor(buffer) != *format_;
    // Then the former ones: let go of after the lock.
    AudioEditorBuffer samples = buffer;
    std::optional<EqProcessor> eq;
    if (hasOtherChannels) eq = makeEq(formatFor(buffer));
    {
        const std::lock_guard lock(shared_->stateLock);
        std::swap(shared_->state.samples, samples);
        if (hasOtherChannels) std::swap(shared_->state.eq, eq);
        shared_->state.lower = range->lo;
        shared_->state.upper = range->hi;
        shared_->state.position = moved(shared_->state.position);
        shared_->position.store(shared_->state.position, std::memory_order_relaxed);
    }
    if (!hasOtherChannels) return;
    if (!open(formatFor(buffer))) return end(Ending::cut);
    output_.resume();
}

bool PlaybackEngine::open(const AudioOutput::Format &format) {
    try {
        prepare(format);
        return true;
    } catch (const std::exception &error) {
        reportFailure(error.what());
        return false;
    }
}

void PlaybackEngine::prepare(const AudioOutput::Format &format) {
    idleTeardown_.reset();
    idlePause_.reset();
    if (format_ == format) {
        output_.pause();  // the end of an earlier playback may still be sounding
    } else {
        tearDown();
        output_.start(format,
                      [shared = shared_, channels = format.channels](std::span<float> out) { render(*shared, out, channels); });
        format_ = format;
    }
    measureLatency();
}

void PlaybackEngine::measureLatency() {
    latencyFrames_ = std::llround(std::max(output_.latencySeconds(), 0.0) * double(format_->sampleRate));
}

void PlaybackEngine::tick() {
    if (!isPlaying_) return;
    client_->playbackPeak(takePeak());
    if (!isPlaying_) return;  // the client may have stopped it
    if (shared_->finished.load(std::memory_order_relaxed)) return end(Ending::heard);
    const std::int64_t rendered = shared_->position.load(std::memory_order_relaxed);
    if (rendered < lastRendered_) wrapped_ = true;
    lastRendered_ = rendered;
    measureLatency();  // a device tells its own share only once it plays
    client_->playbackMoved(double(heardFrame(rendered)));
}

std::int64_t PlaybackEngine::heardFrame(std::int64_t rendered) const {
    std::int64_t heard = rendered - latencyFrames_;
    if (!wrapped_) {
        heard = std::max(startFrame_, heard);
    } else if (heard < rangeLower_) {
        // The loop's tail is still sounding; of a loop shorter than the latency, that of some pass before.
        const std::int64_t before = rangeLower_ - heard, length = rangeUpper_ - rangeLower_;
        heard = rangeUpper_ - ((before - 1) % length + 1);
    }
    return std::clamp(heard, std::min(startFrame_, rangeLower_), rangeUpper_);
}

void PlaybackEngine::lost(const std::string &reason) {
    tearDown();
    reportFailure(reason);
    stop();
}

void PlaybackEngine::tearDown() {
    idleTeardown_.reset();
    output_.stop();
    format_.reset();
}

void PlaybackEngine::reportFailure(const std::string &error) { log_.write("Kiv Audio Editor: audio output failed: " + error); }

// Puts a state in the place of the one being played, which it hands out so that its samples go on this thread.
void PlaybackEngine::exchangeState(State &state) {
    const std::lock_guard lock(shared_->stateLock);
    {
        const std::lock_guard eqLock(shared_->eqLock);
        shared_->eqPending.reset();  // it was for what played before
    }
    std::swap(shared_->state, state);
    shared_->position.store(shared_->state.position, std::memory_order_relaxed);
    shared_->finished.store(0, std::memory_order_relaxed);
}

float PlaybackEngine::takePeak() {
    const std::lock_guard lock(shared_->peakLock);
    return std::exchange(shared_->peak, 0.0f);
}

}  // namespace kiv
