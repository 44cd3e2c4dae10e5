#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "Editor/AudioEditorCore/FrameRange.h"
#include "Support/RealFft.h"

// How unlike a sound is to itself around two points: the squared difference of 2w frames about each, under a triangular weight,
// over the sum of both powers. 0: the same, 1: unrelated, 2: opposite.
namespace kiv {

// Interleaved frames; what lies outside is silence.
struct SeamSound {
    std::span<const float> samples;
    std::int64_t channels = 1;

    std::int64_t frames() const { return std::int64_t(samples.size()) / channels; }
};

// What every end is compared to: the sound around the start.
struct SeamReference {
    std::int64_t w = 0;
    std::vector<float> weights;  // one a sample, interleaved; 0 outside the sound
    std::vector<float> samples;  // 2w frames
    double power = 0;            // weighted sum of squares
    bool isInside = false;       // all of it lies inside the sound
};

// Nothing where the weighted mean power is not above −60 dB.
std::optional<SeamReference> seamReference(SeamSound sound, std::int64_t start, std::int64_t w);

// End by end, as the definition says. `around` are the 2w frames about an end.
double seamMismatch(const SeamReference &reference, const float *around);
// The 2w frames about each point of a range, one after the other, so that those of the range's frame i begin at frame i.
std::vector<float> seamSurroundings(SeamSound sound, FrameRange points, std::int64_t w);

// The same for a great many ends and many starts: the squared difference is taken apart into both powers and a correlation,
// which is made by transforms of the sound's blocks, each needed once for all starts. May be used by several threads at once.
class SeamCorrelator {
public:
    SeamCorrelator(SeamSound sound, std::int64_t w);

    // What a thread works in.
    struct Scratch {
        explicit Scratch(const SeamCorrelator &correlator);
        FftArray<float> time;
        FftArray<std::complex<float>> reference, product;
        std::vector<double> mismatches;
    };

    // Calls visit(ends, mismatches) for consecutive ranges that together cover the ends. The reference must lie inside the
    // sound.
    template <class Visit>
    void forEachEnds(const SeamReference &reference, FrameRange ends, Scratch &scratch, Visit visit) const {
        begin(reference, scratch);
        for (std::int64_t block = ends.lo / hop_; block * hop_ < ends.hi; ++block) {
            const FrameRange all{block * hop_, (block + 1) * hop_};
            const FrameRange part{std::max(all.lo, ends.lo), std::min(all.hi, ends.hi)};
            correlate(reference, block, scratch);
            visit(part, scratch.mismatches.data() + (part.lo - all.lo));
        }
    }

private:
    void begin(const SeamReference &reference, Scratch &scratch) const;
    void correlate(const SeamReference &reference, std::int64_t block, Scratch &scratch) const;
    void measurePowers(SeamSound sound);

    std::int64_t channels_, w_;
    RealFft fft_;
    std::int64_t hop_;  // ends a block
    std::int64_t blocks_;
    FftArray<std::complex<float>> spectra_;  // [block][channel][bin]
    std::vector<double> powers_;             // weighted sum of squares about each end
};

}  // namespace kiv
