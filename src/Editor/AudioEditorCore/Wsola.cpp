#include "Editor/AudioEditorCore/Wsola.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "Editor/AudioEditorCore/StretchKernels.h"
#include "Support/Parallel.h"

namespace kiv {
namespace {

// A task's frames of the result, about.
constexpr std::int64_t taskFrames = 1 << 16;

// One half of the window over the other, as often as there are channels: what a hop of the result is made with.
struct Weights {
    std::vector<float> rising, falling;  // of the grain that begins there, of the one before
    float last = 0;                      // of the one before that, at the hop's first frame: a window of an odd length

    Weights(const WsolaShape &shape, std::int64_t channels) {
        const auto window = [&](std::int64_t i) {
            return float(0.5 - 0.5 * std::cos(2 * std::numbers::pi * double(i) / double(shape.window)));
        };
        for (std::int64_t i = 0; i < shape.hop; ++i)
            for (std::int64_t c = 0; c < channels; ++c) {
                rising.push_back(window(i));
                falling.push_back(window(i + shape.hop));
            }
        if (shape.window % 2 != 0) last = window(shape.window - 1);
    }
};

// Lays grains over each other, a hop of the result at a time.
class Layer {
public:
    Layer(const AudioEditorBuffer &sound, const WsolaShape &shape, const std::vector<std::int64_t> &starts,
          const Weights &weights)
        : sound_(sound), shape_(shape), starts_(starts), weights_(weights), channels_(sound.channels()) {
        for (auto *row : {&begins_, &ends_}) row->resize(std::size_t(shape.hop * channels_));
    }

    // The hop's frames of the result: shape.hop, fewer at the end.
    void lay(std::int64_t hop, std::int64_t frames, float *out) {
        const std::int64_t samples = frames * channels_;
        read(starts_[std::size_t(hop)], frames, begins_.data());
        if (hop > 0) {
            read(starts_[std::size_t(hop) - 1] + shape_.hop, frames, ends_.data());
        } else {
            std::fill_n(ends_.data(), samples, 0.0f);
        }
        blend(begins_.data(), weights_.rising.data(), ends_.data(), weights_.falling.data(), samples, out);
        if (hop > 1 && weights_.last > 0) addThird(hop, out);
        normalise(hop, samples, out);
    }

private:
    // What lies behind the end of the sound is silence.
    void read(std::int64_t from, std::int64_t frames, float *to) const {
        const std::int64_t inside = std::clamp<std::int64_t>(sound_.frames() - from, 0, frames);
        if (inside > 0) sound_.copyFrames({from, from + inside}, to);
        std::fill_n(to + inside * channels_, (frames - inside) * channels_, 0.0f);
    }

    void addThird(std::int64_t hop, float *out) const {
        std::vector<float> frame(std::size_t(channels_), 0.0f);
        read(starts_[std::size_t(hop) - 2] + shape_.window - 1, 1, frame.data());
        for (std::int64_t c = 0; c < channels_; ++c)
            out[c] = weights_.last * frame[std::size_t(c)] + weights_.falling[0] * ends_[std::size_t(c)] +
                     weights_.rising[0] * begins_[std::size_t(c)];
    }

    // Halves of a window of an even length add up to 1 as they are.
    void normalise(std::int64_t hop, std::int64_t samples, float *out) const {
        if (hop > 0 && shape_.window % 2 == 0) return;
        for (std::int64_t s = 0; s < samples; ++s) {
            const auto i = std::size_t(s);
            float norm = hop > 0 ? weights_.falling[i] + weights_.rising[i] : weights_.rising[i];
            if (hop > 1 && s < channels_) norm = weights_.last + weights_.falling[i] + weights_.rising[i];
            if (norm > 0 && norm < 0.999f) out[s] /= norm;
        }
        // Nothing was laid on the first frame, whose weight is 0.
        if (hop == 0) std::copy_n(begins_.data(), channels_, out);
    }

    const AudioEditorBuffer &sound_;
    const WsolaShape &shape_;
    const std::vector<std::int64_t> &starts_;
    const Weights &weights_;
    const std::int64_t channels_;
    std::vector<float> begins_, ends_;
};

}  // namespace

WsolaShape::WsolaShape(std::int64_t in, std::int64_t out, std::int64_t sampleRate)
    : inFrames(in),
      outFrames(out),
      window(std::max<std::int64_t>(std::min(std::int64_t(double(sampleRate) * 0.04) / 2 * 2, in), 16)),
      hop(window / 2),
      tolerance(std::max<std::int64_t>(std::min(in / 2, std::int64_t(double(sampleRate) * 0.01)), 1)),
      lastStart(std::max<std::int64_t>(in - window, 0)),
      step(double(in) * double(hop) / double(out)) {}

std::int64_t WsolaShape::nominalStart(std::int64_t grain) const {
    return std::clamp<std::int64_t>(std::llround(double(grain) * step), 0, lastStart);
}

AudioEditorBuffer overlapped(const AudioEditorBuffer &sound, const WsolaShape &shape, const std::vector<std::int64_t> &starts,
                             Progress *progress) {
    const std::int64_t channels = sound.channels();
    SampleMemory out(std::size_t(shape.outFrames * channels));
    const Weights weights(shape, channels);
    parallelFor(shape.grains(), std::max<std::int64_t>(taskFrames / shape.hop, 1), [&](std::int64_t lo, std::int64_t hi) {
        Layer layer(sound, shape, starts, weights);
        for (std::int64_t hop = lo; hop < hi; ++hop) {
            const std::int64_t at = hop * shape.hop, frames = std::min(shape.outFrames - at, shape.hop);
            layer.lay(hop, frames, out.data() + at * channels);
            if (progress) progress->add(frames);
        }
    });
    return AudioEditorBuffer(std::move(out), channels, sound.sampleRate());
}

AudioEditorBuffer wsola(const AudioEditorBuffer &sound, std::int64_t outFrames, Progress *progress) {
    const WsolaShape shape(sound.frames(), outFrames, sound.sampleRate());
    return overlapped(sound, shape, similarStarts(sound, shape, progress), progress);
}

}  // namespace kiv
