#include "Editor/AudioEditorSpectral/Analysis.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "Editor/AudioEditorSpectral/FFT.h"
#include "Support/Parallel.h"
#include "Support/Vectorised.h"

namespace kiv::AudioEditorSpectral {
namespace {

constexpr std::int64_t columnsATask = 32;

// Pairs of real and imaginary part.
KIV_VECTORISED void keepLarger(const float *__restrict spectrum, std::int64_t bins, float *__restrict power) {
    for (std::int64_t k = 0; k < bins; ++k) {
        const float here = spectrum[2 * k] * spectrum[2 * k] + spectrum[2 * k + 1] * spectrum[2 * k + 1];
        power[k] = here > power[k] ? here : power[k];
    }
}

// Where a band reads the bins: between two of them where bands are narrower than bins, and the largest of those that it
// spans where it is wider.
struct BandBins {
    int below = 0;
    float weight = 0;
    int lo = 0, hi = 0;  // half-open

    float power(const float *bins) const {
        float most = bins[below] + weight * (bins[below + 1] - bins[below]);
        for (int k = lo; k < hi; ++k) most = std::max(most, bins[k]);
        return most;
    }
};

std::array<BandBins, bandCount> bandBins(const Geometry &geometry) {
    std::array<BandBins, bandCount> result;
    const int last = geometry.fftSize / 2;
    const auto binAt = [&](double band) {
        return std::clamp(geometry.bandHz(band) * geometry.fftSize / double(geometry.sampleRate), 0.0, double(last));
    };
    for (int b = 0; b < bandCount; ++b) {
        const int below = std::min(int(binAt(b)), last - 1);
        result[std::size_t(b)] = {below, float(binAt(b) - below), int(std::ceil(binAt(b - 0.5))),
                                  int(std::ceil(binAt(b + 0.5)))};
    }
    return result;
}

// What all columns read. The transforms of a column lie evenly in it, none further than half a transform from the next.
struct Setup {
    const State &state;
    FFT fft;
    std::array<BandBins, bandCount> bands;
    std::int64_t perColumn;

    std::int64_t start(std::int64_t column, std::int64_t number) const {
        const std::int64_t width = state.geometry.columnFrames;
        return column * width + (2 * number + 1) * width / (2 * perColumn) - fft.size / 2;
    }
};

class ColumnReader {
public:
    explicit ColumnReader(const Setup &setup)
        : setup_(setup),
          input_(std::size_t(setup.fft.size)),
          power_(std::size_t(setup.fft.transform.bins())),
          frame_(makeFftReals(input_.size())),
          spectrum_(makeFftBins(power_.size())) {}

    void read(std::int64_t column, std::uint8_t *levels) {
        std::fill(power_.begin(), power_.end(), 0.0f);
        for (std::int64_t number = 0; number < setup_.perColumn; ++number)
            for (std::int64_t c = 0; c < setup_.state.original.channels(); ++c) add(setup_.start(column, number), c);
        // A full-scale sine's bin holds a quarter of the transform's size.
        const double scale = 16 / (double(setup_.fft.size) * setup_.fft.size);
        for (const BandBins &band : setup_.bands) {
            const double db = 10 * std::log10(std::max(double(band.power(power_.data())) * scale, 1e-12));
            *levels++ = std::uint8_t(std::clamp(std::round((db - Analysis::lowestDb) / Analysis::stepDb), 0.0, 255.0));
        }
    }

private:
    // Frames outside the sound are silence.
    void add(std::int64_t start, std::int64_t channel) {
        const AudioEditorBuffer &sound = setup_.state.original;
        const FrameRange inside = sound.clampedRange({start, start + setup_.fft.size}).value_or(FrameRange{start, start});
        std::fill(input_.begin(), input_.begin() + (inside.lo - start), 0.0f);
        sound.copyChannel(inside, channel, input_.data() + (inside.lo - start));
        std::fill(input_.begin() + (inside.hi - start), input_.end(), 0.0f);
        setup_.fft.forward(input_.data(), frame_.get(), spectrum_.get());
        keepLarger(reinterpret_cast<const float *>(spectrum_.get()), std::int64_t(power_.size()), power_.data());
    }

    const Setup &setup_;
    std::vector<float> input_, power_;
    FftArray<float> frame_;
    FftArray<std::complex<float>> spectrum_;
};

}  // namespace

Analysis analyze(const State &state, Progress *progress) {
    const Geometry &geometry = state.geometry;
    const std::int64_t half = geometry.fftSize / 2;
    const Setup setup{state, FFT(geometry.fftSize), bandBins(geometry), (geometry.columnFrames + half - 1) / half};
    Analysis analysis{state.id, geometry.columns, {}};
    analysis.levels.resize(std::size_t(geometry.columns * bandCount));
    if (progress) progress->start(geometry.columns);
    parallelFor(geometry.columns, columnsATask, [&](std::int64_t lo, std::int64_t hi) {
        ColumnReader reader(setup);
        for (std::int64_t c = lo; c < hi; ++c) reader.read(c, analysis.levels.data() + c * bandCount);
        if (progress) progress->add(hi - lo);
    });
    return analysis;
}

}  // namespace kiv::AudioEditorSpectral
