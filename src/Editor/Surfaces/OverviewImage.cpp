#include "Editor/Surfaces/OverviewImage.h"

#include <algorithm>
#include <tuple>

#include "Editor/Surfaces/WaveformCurve.h"

namespace kiv {
namespace {

// A sound of fewer frames than columns: the lines of all channels, one over the other.
void rasterLines(std::vector<Pixel> &pixels, int width, const SoundSource &source, const OverviewGeometry &geometry,
                 const WaveformInk &ink) {
    const ColumnDrawing drawing{geometry.lane, 1, 1, hairline(geometry.size.scale), 0};
    std::vector<Pixel> line(pixels.size());
    for (std::int64_t channel = 0; channel < source.buffer.channels(); ++channel) {
        rasterCurve({line.data(), width}, 0, width, source.buffer, channel, geometry.axis, geometry.size.scale, drawing, ink);
        // All in one colour, so that the larger of two pixels is the one covered more.
        for (std::size_t i = 0; i < pixels.size(); ++i) pixels[i] = std::max(pixels[i], line[i]);
    }
}

}  // namespace

bool OverviewImage::update(const SoundSource &source, const OverviewGeometry &geometry, const Look &look) {
    const int width = geometry.wholeColumns(), rows = geometry.rows.hi;
    const auto now =
        std::tie(source.generation, source.powersRevision, geometry.axis.framesPerColumn, geometry.lane, look, width, rows);
    auto held = std::tie(generation_, powersRevision_, framesPerColumn_, lane_, look_, width_, rows_);
    if (now == held) return false;
    held = now;
    // More lines than there are rows would fill them like the extremes.
    const bool isLine = framesPerColumn_ < 1 && source.buffer.channels() <= geometry.rows.count();
    if (!isLine) columns_.update(source, framesPerColumn_, true, -1, width + 1);
    const ColumnDrawing drawing{lane_, 1, 1, hairline(geometry.size.scale), 0};
    for (auto [pixels, ink] : {std::pair(&outside_, &look_.outside), std::pair(&inside_, &look_.inside)}) {
        pixels->assign(std::size_t(width) * std::size_t(rows), 0);
        if (isLine)
            rasterLines(*pixels, width, source, geometry, *ink);
        else
            rasterColumns({pixels->data(), width}, 0, columns_.lane(0), drawing, *ink);
    }
    return true;
}

}  // namespace kiv
