#include "Editor/AudioEditorCore/AudioEditorOps.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <span>
#include <vector>

#include "Editor/AudioEditorCore/SampleKernels.h"
#include "Support/Parallel.h"

namespace kiv::AudioEditorOps {
namespace {

// Samples that one task works on: long enough that handing it out costs nothing beside it.
constexpr std::int64_t taskSamples = std::int64_t(1) << 18;
// A slice up to this size is copied, so that a moment kept on the clipboard does not keep an hour in memory; but not where
// that would lose what its samples were made from.
constexpr std::int64_t copiedSlice = std::int64_t(1) << 20;

std::int64_t taskFrames(std::int64_t channels) { return std::max<std::int64_t>(taskSamples / channels, 1); }

// Where what floats leave out of samples that only move goes with them: moveDifferences(made, out) gives, for frames of the new
// sound, those of the old one. None where there are none.
using Differences = std::vector<std::int64_t>;
using MoveDifferences = std::function<void(SampleOriginals::Word word, FrameRange made, std::span<std::int64_t> out)>;

std::unique_ptr<const SampleOriginals> movedOriginals(const AudioEditorBuffer &buffer, FrameRange range, std::int64_t channels,
                                                      const MoveDifferences &move) {
    auto originals = std::make_unique<SampleOriginals>(range.count() * channels);
    for (const auto word : SampleOriginals::words) {
        if (!buffer.hasOriginals(range, word)) continue;
        originals->expect(word);
        parallelFor(range.count(), SampleOriginals::partSamples, [&](std::int64_t lo, std::int64_t hi) {
            Differences differences(std::size_t((hi - lo) * channels));
            move(word, {lo, hi}, differences);
            originals->keep(word, lo * channels, differences);
        });
    }
    return originals->isEmpty() ? nullptr : std::move(originals);
}

Differences differencesOf(const AudioEditorBuffer &buffer, FrameRange range, SampleOriginals::Word word) {
    Differences differences(std::size_t(range.count() * buffer.channels()));
    buffer.copyOriginals(range, word, differences.data());
    return differences;
}

// A new sound made of a range: write(in, frames, out) is called for parts that together cover the range, with the samples
// there and with where the frame `at`, counted from the start of the range, belongs in the result.
template <class Write>
AudioEditorBuffer made(const AudioEditorBuffer &buffer, FrameRange range, std::int64_t channels, Progress *progress,
                       Write write, const MoveDifferences &move = {}) {
    if (progress) progress->start(range.count());
    SampleMemory out(std::size_t(range.count() * channels));
    parallelFor(range.count(), taskFrames(buffer.channels()), [&](std::int64_t lo, std::int64_t hi) {
        if (progress) progress->add(hi - lo);
        buffer.forEachSpan({range.lo + lo, range.lo + hi},
                           [&](std::span<const float> in, FrameRange part) { write(in, part.lo - range.lo, out.data()); });
    });
    auto originals = move ? movedOriginals(buffer, range, channels, move) : nullptr;
    return AudioEditorBuffer(std::move(out), channels, buffer.sampleRate(), std::move(originals));
}

// The same, put back in place of the range.
template <class Write>
AudioEditorBuffer rewritten(const AudioEditorBuffer &buffer, FrameRange range, Progress *progress, Write write,
                            const MoveDifferences &move = {}) {
    if (range.isEmpty()) return buffer;
    return buffer.replacing(range, made(buffer, range, buffer.channels(), progress, write, move));
}

AudioEditorBuffer copied(const AudioEditorBuffer &buffer, FrameRange range) {
    const std::int64_t channels = buffer.channels();
    return made(buffer, range, channels, nullptr, [=](std::span<const float> in, std::int64_t at, float *out) {
        std::copy(in.begin(), in.end(), out + at * channels);
    });
}

// One block of zeros laid end to end: an hour of silence takes no more memory than a few seconds.
AudioEditorBuffer silence(std::int64_t frames, std::int64_t channels, std::int64_t sampleRate) {
    SampleMemory zeros(std::size_t(std::min(frames, taskFrames(channels)) * channels));
    std::fill_n(zeros.data(), zeros.size(), 0.0f);
    AudioEditorBuffer result(std::move(zeros), channels, sampleRate);
    while (result.frames() < frames) {
        const std::int64_t missing = std::min(frames - result.frames(), result.frames());
        result = result.replacing({result.frames(), result.frames()}, result.part({0, missing}));
    }
    return result;
}

enum class Fade { in, out };

AudioEditorBuffer faded(const AudioEditorBuffer &buffer, FrameRange range, Fade fade, Progress *progress) {
    const std::int64_t channels = buffer.channels(), last = std::max<std::int64_t>(range.count() - 1, 1);
    const QuarterSine curve(last);
    return rewritten(buffer, range, progress, [&](std::span<const float> in, std::int64_t at, float *out) {
        const std::int64_t frames = std::int64_t(in.size()) / channels;
        for (std::int64_t done = 0; done < frames; done += QuarterSine::block) {
            const std::int64_t count = std::min(frames - done, QuarterSine::block);
            const auto gains = fade == Fade::in ? curve.rising(at + done) : curve.falling(last - at - done, count);
            multiplyFrames(in.data() + done * channels, gains, count, channels, out + (at + done) * channels);
        }
    });
}

}  // namespace

AudioEditorBuffer slice(const AudioEditorBuffer &buffer, FrameRange range) {
    const std::int64_t samples = range.count() * buffer.channels();
    const bool isCopied = !range.isEmpty() && samples <= copiedSlice && !buffer.hasOriginals(range);
    return isCopied ? copied(buffer, range) : buffer.part(range);
}

AudioEditorBuffer inserting(const AudioEditorBuffer &buffer, const AudioEditorBuffer &insert, std::int64_t at) {
    at = std::clamp<std::int64_t>(at, 0, buffer.frames());
    return buffer.replacing({at, at}, withChannels(insert, buffer.channels()));
}

AudioEditorBuffer removing(const AudioEditorBuffer &buffer, FrameRange range) {
    return buffer.replacing(range, AudioEditorBuffer(buffer.channels(), buffer.sampleRate()));
}

AudioEditorBuffer silenced(const AudioEditorBuffer &buffer, FrameRange range) {
    if (range.isEmpty()) return buffer;
    return buffer.replacing(range, silence(range.count(), buffer.channels(), buffer.sampleRate()));
}

AudioEditorBuffer reversed(const AudioEditorBuffer &buffer, FrameRange range, Progress *progress) {
    if (range.count() < 2) return buffer;
    const std::int64_t channels = buffer.channels();
    const auto write = [&](std::span<const float> in, std::int64_t at, float *out) {
        const std::int64_t frames = std::int64_t(in.size()) / channels;
        reverseFrames(in.data(), frames, channels, out + (range.count() - at - frames) * channels);
    };
    return rewritten(buffer, range, progress, write, [&](SampleOriginals::Word word, FrameRange made, auto out) {
        const Differences in = differencesOf(buffer, {range.hi - made.hi, range.hi - made.lo}, word);
        for (std::int64_t i = 0; i < made.count(); ++i)
            std::copy_n(&in[std::size_t((made.count() - 1 - i) * channels)], channels, &out[std::size_t(i * channels)]);
    });
}

AudioEditorBuffer fadeIn(const AudioEditorBuffer &buffer, FrameRange range, Progress *progress) {
    return faded(buffer, range, Fade::in, progress);
}
AudioEditorBuffer fadeOut(const AudioEditorBuffer &buffer, FrameRange range, Progress *progress) {
    return faded(buffer, range, Fade::out, progress);
}

AudioEditorBuffer scaled(const AudioEditorBuffer &buffer, FrameRange range, double factor, Progress *progress) {
    const std::int64_t channels = buffer.channels();
    return rewritten(buffer, range, progress, [=](std::span<const float> in, std::int64_t at, float *out) {
        multiply(in.data(), factor, std::int64_t(in.size()), out + at * channels);
    });
}

float peak(const AudioEditorBuffer &buffer, FrameRange range, Progress *progress) {
    if (range.isEmpty()) return 0;
    if (progress) progress->start(range.count());
    const std::int64_t grain = taskFrames(buffer.channels());
    std::vector<float> peaks(std::size_t(range.count() / grain + 1), 0.0f);
    parallelFor(range.count(), grain, [&](std::int64_t lo, std::int64_t hi) {
        if (progress) progress->add(hi - lo);
        float &largest = peaks[std::size_t(lo / grain)];
        buffer.forEachSpan({range.lo + lo, range.lo + hi}, [&](std::span<const float> in, FrameRange) {
            largest = std::max(largest, largestMagnitude(in.data(), std::int64_t(in.size())));
        });
    });
    return *std::max_element(peaks.begin(), peaks.end());
}

double gainFactor(double db) { return std::pow(10.0, db / 20); }

AudioEditorBuffer mono(const AudioEditorBuffer &buffer, AudioEditorMonoSource source, Progress *progress) {
    const std::int64_t channels = buffer.channels();
    if (channels < 2) return buffer;
    if (source == AudioEditorMonoSource::mix) return withChannels(buffer, 1, progress);
    const std::int64_t channel = source == AudioEditorMonoSource::left ? 0 : 1;
    const auto write = [=](std::span<const float> in, std::int64_t at, float *out) {
        takeChannel(in.data(), channels, channel, std::int64_t(in.size()) / channels, out + at);
    };
    return made(buffer, {0, buffer.frames()}, 1, progress, write, [&](SampleOriginals::Word word, FrameRange made, auto out) {
        const Differences in = differencesOf(buffer, made, word);
        for (std::size_t i = 0; i < out.size(); ++i) out[i] = in[i * std::size_t(channels) + std::size_t(channel)];
    });
}

AudioEditorBuffer withChannels(const AudioEditorBuffer &buffer, std::int64_t channels, Progress *progress) {
    const std::int64_t from = buffer.channels(), to = std::max<std::int64_t>(channels, 1);
    if (from == to) return buffer;
    const MoveDifferences spread = [&](SampleOriginals::Word word, FrameRange made, auto out) {
        const Differences in = differencesOf(buffer, made, word);
        for (std::size_t i = 0; i < out.size(); ++i) out[i] = in[i / std::size_t(to)];
    };
    const auto write = [=](std::span<const float> in, std::int64_t at, float *out) {
        spreadMean(in.data(), std::int64_t(in.size()) / from, from, to, out + at * to);
    };
    return made(buffer, {0, buffer.frames()}, to, progress, write, from == 1 ? spread : nullptr);
}

AudioEditorBuffer sliceFaded(const AudioEditorBuffer &buffer, std::int64_t fadeIn, std::int64_t fadeOut) {
    const std::int64_t frames = buffer.frames(), channels = buffer.channels();
    const std::int64_t rising = std::clamp<std::int64_t>(fadeIn, 0, frames),
                       falling = std::clamp<std::int64_t>(fadeOut, 0, frames);
    const auto gain = [=](std::int64_t i) {
        float value = 1;
        if (i < rising) value = float(i) / float(rising);
        if (frames - 1 - i < falling) value *= float(frames - 1 - i) / float(falling);
        return value;
    };
    const auto ramp = [&](const AudioEditorBuffer &sound, FrameRange range) {
        return rewritten(sound, range, nullptr, [&, range](std::span<const float> in, std::int64_t at, float *out) {
            out += at * channels;
            for (std::int64_t i = 0; i * channels < std::int64_t(in.size()); ++i) {
                const float factor = gain(range.lo + at + i);
                for (std::int64_t c = i * channels; c < (i + 1) * channels; ++c) out[c] = in[std::size_t(c)] * factor;
            }
        });
    };
    return ramp(ramp(buffer, {0, rising}), {std::max(frames - falling, rising), frames});
}

}  // namespace kiv::AudioEditorOps
