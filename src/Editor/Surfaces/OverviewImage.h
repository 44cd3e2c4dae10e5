#pragma once

#include <cstdint>
#include <vector>

#include "Editor/Surfaces/OverviewGeometry.h"
#include "Editor/Surfaces/WaveformRaster.h"

namespace kiv {

// The whole sound as the overview draws it, in two colourings: outside and inside the part in view.
class OverviewImage {
public:
    struct Look {
        WaveformInk outside, inside;
        friend bool operator==(const Look &, const Look &) = default;
    };

    // Draws both anew if anything differs, and says whether it did.
    bool update(const SoundSource &source, const OverviewGeometry &geometry, const Look &look);

    int width() const { return width_; }
    int rows() const { return rows_; }
    const Pixel *outside() const { return outside_.data(); }
    const Pixel *inside() const { return inside_.data(); }

private:
    std::int64_t generation_ = -1, powersRevision_ = -1;
    double framesPerColumn_ = 0;
    WaveLane lane_;
    Look look_;
    int width_ = 0, rows_ = 0;
    WaveformColumns columns_;
    std::vector<Pixel> outside_, inside_;
};

}  // namespace kiv
