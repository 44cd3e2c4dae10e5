#include "Audio/Playback/RenderState.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <mutex>

#include "Support/Vectorised.h"

namespace kiv {
namespace {

constexpr double pi = 3.1415925;
constexpr std::size_t scratchSamples = 512;
constexpr std::int64_t never = std::numeric_limits<std::int64_t>::max();

void spread(std::span<const float> in, std::int64_t inChannels, float *out, int outChannels) {
    if (inChannels == outChannels) {
        std::copy(in.begin(), in.end(), out);
        return;
    }
    for (const float *frame = in.data(); frame != in.data() + in.size(); frame += inChannels)
        for (std::int64_t k = 0; k < outChannels; ++k) *out++ = frame[std::min(k, inChannels - 1)];
}

void readFrames(const AudioEditorBuffer &samples, FrameRange range, float *out, int channels) {
    samples.forEachSpan(range, [&](std::span<const float> part, FrameRange frames) {
        spread(part, samples.channels(), out, channels);
        out += frames.count() * channels;
    });
}

// As readFrames, with frame 0 in the place of the frames before it.
void readFromFirst(const AudioEditorBuffer &samples, FrameRange range, float *out, int channels) {
    for (; range.lo < std::min<std::int64_t>(range.hi, 0); ++range.lo, out += channels)
        readFrames(samples, {0, 1}, out, channels);
    if (!range.isEmpty()) readFrames(samples, range, out, channels);
}

std::int64_t crossfadeStart(const State &state) {
    return state.loop && state.crossfade >= 1 ? state.upper - state.crossfade : never;
}

std::int64_t fadeOutStart(const State &state) { return state.fadeOut > 0 ? state.upper - state.fadeOut : never; }

struct Gains {
    double own = 1, cross = 0;
};

// At the joint's last frame the output is wholly the audio that leads into `lower`.
Gains crossfadeGains(const State &state, std::int64_t intoCrossfade) {
    const double t = double(intoCrossfade + 1) / double(state.crossfade);
    if (!state.equalPower) return {1 - t, t};
    return {std::cos(t * pi / 2), std::sin(t * pi / 2)};
}

Gains gainsAt(const State &state, std::int64_t frame) {
    const std::int64_t start = crossfadeStart(state);
    Gains gains = frame >= start ? crossfadeGains(state, frame - start) : Gains{};
    // Before the range, where a playback may begin, it is as silent as at the range's first frame.
    const std::int64_t fromStart = std::max<std::int64_t>(frame - state.lower, 0);
    if (fromStart < state.fadeIn) gains.own *= double(fromStart) / double(state.fadeIn);
    const std::int64_t toLast = state.upper - 1 - frame;
    if (toLast < state.fadeOut) gains.own *= double(toLast) / double(state.fadeOut);
    return gains;
}

// The range is followed by itself when it loops, so that the cross frame lies one length of the range back.
void renderShaped(const State &state, FrameRange range, float *out, int channels) {
    std::array<float, scratchSamples> scratch;
    const bool crosses = range.hi > crossfadeStart(state);
    const std::int64_t length = state.upper - state.lower;
    readFrames(state.samples, range, out, channels);
    if (crosses) readFromFirst(state.samples, {range.lo - length, range.hi - length}, scratch.data(), channels);
    for (std::int64_t frame = range.lo; frame < range.hi; ++frame) {
        const Gains gains = gainsAt(state, frame);
        for (int k = 0; k < channels; ++k) {
            const std::size_t i = std::size_t((frame - range.lo) * channels + k);
            const double cross = gains.cross != 0 ? gains.cross * double(scratch[i]) : 0;
            out[i] = float(gains.own * double(out[i]) + cross);
        }
    }
}

// Renders some frames from the position on, at least one and no more than asked for, without passing the range's end.
std::int64_t renderRun(const State &state, std::int64_t frames, float *out, int channels) {
    const std::int64_t at = state.position;
    const std::int64_t shapedFrom = std::min({crossfadeStart(state), fadeOutStart(state), state.upper});
    const bool plain = at < shapedFrom && (state.fadeIn <= 0 || at >= state.lower + state.fadeIn);
    if (plain) {
        frames = std::min(frames, shapedFrom - at);
        readFrames(state.samples, {at, at + frames}, out, channels);
    } else {
        frames = std::min({frames, state.upper - at, std::int64_t(scratchSamples) / channels});
        renderShaped(state, {at, at + frames}, out, channels);
    }
    return frames;
}

void silence(std::span<float> out) { std::fill(out.begin(), out.end(), 0.0f); }

void fill(State &state, std::span<float> out, int channels) {
    while (!out.empty()) {
        if (state.position >= state.upper) {
            state.playing = state.loop;
            if (!state.playing) return silence(out);
            state.position = state.lower;
        }
        const std::int64_t frames = renderRun(state, std::int64_t(out.size()) / channels, out.data(), channels);
        state.position += frames;
        out = out.subspan(std::size_t(frames * channels));
    }
}

// Silences what is no number; the largest absolute sample of the rest.
KIV_VECTORISED float finite(float *samples, std::size_t count) {
    constexpr std::size_t lanes = 16;
    constexpr float largest = std::numeric_limits<float>::max();
    std::array<float, lanes> peaks{};
    const auto take = [&](float &sample, float &peak) {
        const float level = std::fabs(sample);
        sample = level <= largest ? sample : 0.0f;
        const float kept = level <= largest ? level : 0.0f;
        peak = kept > peak ? kept : peak;
    };
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes)
        for (std::size_t lane = 0; lane < lanes; ++lane) take(samples[i + lane], peaks[lane]);
    for (; i < count; ++i) take(samples[i], peaks[0]);
    return *std::max_element(peaks.begin(), peaks.end());
}

// A lock that is taken leaves the former targets for this call.
void takeEqTargets(RenderShared &shared) {
    const std::unique_lock lock(shared.eqLock, std::try_to_lock);
    if (!lock || !shared.eqPending) return;
    shared.state.eq->setTargets(*shared.eqPending);
    shared.eqPending.reset();
}

// The equalizer over what was rendered, before and after which the analyzer listens. Returns the largest absolute sample.
float equalize(RenderShared &shared, std::span<float> out, int channels, float peak) {
    State &state = shared.state;
    if (!state.eq || state.eq->channels() != channels) return peak;
    takeEqTargets(shared);
    if (state.eqTap) shared.analyzer.writeBefore(out, channels);
    if (state.eq->isActive()) {
        state.eq->process(out);
        peak = finite(out.data(), out.size());
    }
    if (state.eqTap) {
        shared.analyzer.writeAfter(out, channels);
        shared.analyzer.advance(out.size() / std::size_t(channels));
    }
    return peak;
}

void deliverPeak(RenderShared &shared, float peak) {
    float &carry = shared.state.peakCarry;
    carry = std::max(carry, peak);
    const std::unique_lock lock(shared.peakLock, std::try_to_lock);
    if (!lock) return;
    shared.peak = std::max(shared.peak, carry);
    carry = 0;
}

}  // namespace

void render(RenderShared &shared, std::span<float> out, int channels) {
    const std::unique_lock lock(shared.stateLock, std::try_to_lock);
    State &state = shared.state;
    if (!lock || !state.playing || state.lower >= state.upper) return silence(out);
    fill(state, out, channels);
    deliverPeak(shared, equalize(shared, out, channels, finite(out.data(), out.size())));
    shared.position.store(state.position, std::memory_order_relaxed);
    if (!state.playing) shared.finished.store(1, std::memory_order_relaxed);
}

}  // namespace kiv
