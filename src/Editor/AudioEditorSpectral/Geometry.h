#pragma once

#include <cstdint>
#include <vector>

#include "Editor/AudioEditorCore/FrameRange.h"

// Painting on the spectrum: a grid of time and frequency over a sound, gains on it, and the sound that they make.
namespace kiv::AudioEditorSpectral {

inline constexpr int bandCount = 256;
inline constexpr double lowestHz = 40;             // of band 0; the last band is half the sample rate
inline constexpr float maxGain = 3.981072f;        // +12 dB
inline constexpr float floorGain = 1.5848931e-5f;  // −96 dB, which stands for silence

// A half-open range of mask columns.
struct ColumnRange {
    std::int64_t lo = 0, hi = 0;

    bool isEmpty() const { return lo >= hi; }
    std::int64_t count() const { return hi - lo; }
    ColumnRange with(ColumnRange other) const;  // both and what lies between them; an empty one counts for nothing
    friend bool operator==(const ColumnRange &, const ColumnRange &) = default;
};

// The grid of one sound. The gains stand in columns of `columnFrames` frames, each with 256 bands, spaced evenly in octaves.
// The transforms are of `fftSize` frames and begin every `hop` frames, from −(fftSize − hop) on, so that the first and the last
// frame of the sound lie under as many of them as any other. A transform is called by its number, from 0.
struct Geometry {
    std::int64_t sampleRate = 44100;
    std::int64_t frameCount = 0;
    int fftSize = 2048;
    int hop = 512;
    std::int64_t columnFrames = 512;
    std::int64_t columns = 1;

    Geometry(std::int64_t frames, std::int64_t rate);

    std::int64_t transforms() const;
    std::int64_t start(std::int64_t transform) const { return transform * hop - (fftSize - hop); }

    // Between which columns a transform lies: m[c0] + t · (m[c1] − m[c0]) is its gain.
    struct ColumnPosition {
        std::int64_t c0, c1;
        float t;
    };
    ColumnPosition columnPosition(std::int64_t transform) const;
    // All transforms that read any of the columns, as a range, and the frames of the sound that they cover.
    ColumnRange transformsReading(ColumnRange columns) const;
    FrameRange framesUnder(ColumnRange transforms) const;
    ColumnRange clamped(ColumnRange range) const;  // to 0 … columns

    double bandHz(double band) const;
    double bandAt(double hz) const;  // 0 … 255

    friend bool operator==(const Geometry &, const Geometry &) = default;
};

// Which band a bin of the transform reads: band + weight of the way to the next.
struct BinBand {
    int band = 0;
    float weight = 0;
};
std::vector<BinBand> binBands(const Geometry &geometry);  // fftSize / 2 + 1 of them

}  // namespace kiv::AudioEditorSpectral
