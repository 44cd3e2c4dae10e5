#include <soxr.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <numeric>
#include <stdexcept>
#include <string>
#include <utility>

#include "Editor/AudioEditorCore/AudioEditorOps.h"
#include "Editor/AudioEditorCore/Resampling.h"
#include "Support/Parallel.h"

namespace kiv {
namespace {

constexpr std::int64_t chunkFrames = 16384;

using Resampler = std::unique_ptr<soxr, decltype(&soxr_delete)>;

void throwOn(soxr_error_t error) {
    if (error) throw std::runtime_error(std::string("resampling failed: ") + error);
}

Resampler makeResampler(double fromRate, double toRate) {
    const soxr_io_spec_t io = soxr_io_spec(SOXR_FLOAT32_I, SOXR_FLOAT32_I);
    const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_VHQ, 0);
    const soxr_runtime_spec_t oneThread = soxr_runtime_spec(1);
    soxr_error_t error = nullptr;
    Resampler resampler(soxr_create(fromRate, toRate, 1, &error, &io, &quality, &oneThread), soxr_delete);
    throwOn(error);
    return resampler;
}

// Converts one channel: read(range, to) gives the frames of a part of the input, write(at, samples, n) takes the result in
// order. Exactly `count` frames are written: what the resampler gives less is silence, what it gives more is dropped. Counts
// the frames read in `progress`, if there is one.
template <class Read, class Write>
void resampleChannel(std::int64_t frames, double fromRate, double toRate, std::int64_t count, Progress *progress, Read read,
                     Write write) {
    const Resampler resampler = makeResampler(fromRate, toRate);
    std::array<float, chunkFrames> in, out;
    std::int64_t written = 0;
    const auto take = [&](const float *from, std::size_t size) {
        std::size_t used = 0, given = 0;
        throwOn(soxr_process(resampler.get(), from, size, &used, out.data(), out.size(), &given));
        const std::int64_t kept = std::min(std::int64_t(given), count - written);
        write(written, out.data(), kept);
        written += kept;
        return std::pair(used, given);
    };
    for (std::int64_t at = 0; at < frames && written < count;) {
        const std::int64_t size = std::min(frames - at, chunkFrames);
        read(FrameRange{at, at + size}, in.data());
        for (std::size_t used = 0; used < std::size_t(size) && written < count;)
            used += take(in.data() + used, std::size_t(size) - used).first;
        at += size;
        if (progress) progress->add(size);
    }
    while (written < count && take(nullptr, 0).second > 0) {
    }
    out.fill(0);
    for (; written < count; written += std::min(count - written, chunkFrames))
        write(written, out.data(), std::min(count - written, chunkFrames));
}

}  // namespace

namespace AudioEditorOps {

std::vector<std::vector<float>> bandLimited(const std::vector<std::vector<float>> &channels, double fromRate, double toRate,
                                            std::int64_t count, Progress *progress) {
    if (progress) progress->start(std::int64_t(channels.empty() ? 0 : channels.size() * channels[0].size()));
    std::vector<std::vector<float>> result(channels.size(), std::vector<float>(std::size_t(std::max<std::int64_t>(count, 0))));
    parallelFor(std::int64_t(channels.size()), 1, [&](std::int64_t lo, std::int64_t hi) {
        for (std::int64_t c = lo; c < hi; ++c) {
            const float *in = channels[c].data();
            float *out = result[c].data();
            resampleChannel(
                std::int64_t(channels[c].size()), fromRate, toRate, count, progress,
                [in](FrameRange part, float *to) { std::copy(in + part.lo, in + part.hi, to); },
                [out](std::int64_t at, const float *samples, std::int64_t n) { std::copy_n(samples, n, out + at); });
        }
    });
    return result;
}

AudioEditorBuffer withSampleRate(const AudioEditorBuffer &buffer, std::int64_t rate, Progress *progress) {
    rate = std::max<std::int64_t>(rate, 1);
    if (rate == buffer.sampleRate() || buffer.frames() < 2) return buffer;
    if (progress) progress->start(buffer.frames() * buffer.channels());
    const double from = double(buffer.sampleRate()), to = double(rate);
    const std::int64_t count = std::max<std::int64_t>(std::llround(to * double(buffer.frames()) / from), 1);
    return resampledSound(buffer, from, to, count, rate, progress);
}

std::vector<float> resampled(const std::vector<float> &samples, double step) {
    if (samples.size() < 2 || !(step > 0) || !std::isfinite(step)) return samples;
    const auto last = std::int64_t(samples.size()) - 1;
    const auto count = std::size_t(std::max(std::round(double(samples.size()) / step), 1.0));
    std::vector<float> result(count);
    const auto at = [&](std::int64_t i) { return samples[std::size_t(std::clamp<std::int64_t>(i, 0, last))]; };
    for (std::size_t j = 0; j < result.size(); ++j) {
        const double position = step * double(j);
        const auto i = std::int64_t(position);
        const float p0 = at(i - 1), p1 = at(i), p2 = at(i + 1), p3 = at(i + 2), u = float(position - double(i));
        const float square = p0 - 2.5f * p1 + 2 * p2 - 0.5f * p3, cube = (p1 - p2) * 1.5f + (p3 - p0) * 0.5f;
        result[j] = p1 + u * ((p2 - p0) * 0.5f + u * (square + u * cube));
    }
    return result;
}

}  // namespace AudioEditorOps

namespace {

// Rates in whole hertz meet again and again: after so many frames of the one and of the other. There a conversion can be cut,
// and its parts made side by side. Where they meet rarely the resampler steps by a rounded ratio, and a cut would show.
struct Sections {
    std::int64_t in, out;  // frames of each but the last
    std::int64_t count = 1;
    std::int64_t leadIn = 0, leadOut = 0;  // frames that a section is begun earlier, for the filter to have run in

    Sections(const AudioEditorBuffer &sound, double fromRate, double toRate, std::int64_t made)
        : in(sound.frames()), out(made) {
        constexpr std::int64_t usual = 1 << 18, runIn = 4096, often = 1280;
        const auto from = std::int64_t(fromRate), to = std::int64_t(toRate);
        if (double(from) != fromRate || double(to) != toRate) return;
        const std::int64_t meetIn = from / std::gcd(from, to), meetOut = to / std::gcd(from, to);
        if (meetIn > often || meetOut > often) return;
        const std::int64_t meetings = usual / meetIn, lead = runIn * std::max<std::int64_t>(from / to, 1) / meetIn + 1;
        const std::int64_t whole = std::min(sound.frames() / (meetings * meetIn), made / (meetings * meetOut));
        if (whole < 2) return;
        in = meetings * meetIn;
        out = meetings * meetOut;
        count = whole;
        leadIn = lead * meetIn;
        leadOut = lead * meetOut;
    }
};

}  // namespace

AudioEditorBuffer resampledSound(const AudioEditorBuffer &sound, double fromRate, double toRate, std::int64_t count,
                                 std::int64_t sampleRate, Progress *progress) {
    const std::int64_t channels = sound.channels();
    const Sections sections(sound, fromRate, toRate, count);
    SampleMemory samples(std::size_t(count * channels));
    const auto resampleSection = [&](std::int64_t section, std::int64_t channel) {
        const std::int64_t skipped = section == 0 ? 0 : sections.leadOut, first = section * sections.out - skipped;
        const std::int64_t begin = section * sections.in - (section == 0 ? 0 : sections.leadIn);
        const std::int64_t end = section == sections.count - 1 ? count : (section + 1) * sections.out;
        resampleChannel(
            sound.frames() - begin, fromRate, toRate, end - first, progress,
            [&](FrameRange part, float *in) {
                sound.copyChannel({begin + part.lo, begin + part.hi}, channel, in);
            },
            [&](std::int64_t at, const float *out, std::int64_t n) {
                for (std::int64_t i = std::max<std::int64_t>(skipped - at, 0); i < n; ++i)
                    samples.data()[(first + at + i) * channels + channel] = out[i];
            });
    };
    // A section is one thread's with all of its channels, which lie side by side in memory.
    parallelFor(sections.count * channels, sections.count > 1 ? channels : 1, [&](std::int64_t lo, std::int64_t hi) {
        for (std::int64_t task = lo; task < hi; ++task) resampleSection(task / channels, task % channels);
    });
    return AudioEditorBuffer(std::move(samples), channels, sampleRate);
}

}  // namespace kiv
