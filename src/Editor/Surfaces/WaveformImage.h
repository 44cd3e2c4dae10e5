#pragma once

#include <cstdint>
#include <vector>

#include "Editor/Surfaces/WaveformRaster.h"
#include "Support/SampleMemory.h"

namespace kiv {

// The lanes of a waveform as pixels, kept while the view scrolls: column k of the sound stands at k modulo the width, so that
// scrolling draws only the columns that come into view and moves nothing.
class WaveformImage {
public:
    // What the pixels show beside the sound itself.
    struct Look {
        WaveformInk ink;
        double factor = 1;   // applied to the sound
        bool capped = true;  // caps at the lane's edge; else what is above full scale is drawn in `over`

        friend bool operator==(const Look &, const Look &) = default;
    };

    // Brings the columns in view up to date, and returns how many were drawn. `columns` must hold them and the one before.
    int update(const SoundSource &source, const WaveformColumns &columns, const WaveformGeometry &geometry, const Look &look);

    int width() const { return width_; }
    int rows() const { return rows_; }
    const Pixel *pixels() const { return reinterpret_cast<const Pixel *>(memory_.data()); }
    // Where in the image the view's first column stands; the columns before it follow those after it.
    int origin() const { return origin_; }
    // Whether a column of the view, counted from its first, has a cap at the upper edge.
    bool isCapped(int column) const { return pixels()[(origin_ + column) % width_] == key_.look.ink.over; }

private:
    struct Key {
        std::int64_t generation = -1, powersRevision = -1;
        double framesPerColumn = 0, scale = 0, gain = 0;
        std::vector<WaveLane> lanes;
        Look look;
        friend bool operator==(const Key &, const Key &) = default;
    };

    void resize(int width, int rows);
    void clearBetween(const std::vector<WaveLane> &lanes);
    PixelRows target() { return {reinterpret_cast<Pixel *>(memory_.data()), width_}; }
    void draw(const SoundSource &source, const WaveformColumns &columns, const WaveformGeometry &geometry, std::int64_t lo,
              std::int64_t hi);
    void drawPiece(const SoundSource &source, const WaveformColumns &columns, const WaveformGeometry &geometry,
                   std::int64_t column, int x, int count);

    Key key_;
    std::int64_t lo_ = 0, hi_ = 0;  // the columns that are drawn
    int width_ = 0, rows_ = 0, origin_ = 0;
    SampleMemory memory_;  // of pixels, which are as large as samples: many megabytes, whose first touch is dear
};

}  // namespace kiv
