#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "Editor/AudioEditorCore/AudioEditorBuffer.h"
#include "Editor/Surfaces/WaveformRaster.h"

// The line through single samples, drawn where a column covers less than one.
namespace kiv {

// The band-limited curve through samples at a place between them: 16 taps of a sinc under a Hann window over ±8.5 samples.
// `around` are the 16 samples from floor(place) − 7 on, `fraction` is place − floor(place), in 0 ..< 1.
double bandLimited(std::span<const float, 16> around, double fraction);

struct CurvePoint {
    float x = 0, y = 0;
};

// Draws one channel's line over columns ..< x + count of a view, all rows of the lane: the straight line through its samples
// for more than 1/8 of a frame a column, the band-limited curve with dots below that. `axis` is of the first column.
void rasterCurve(PixelRows to, int x, int count, const AudioEditorBuffer &buffer, std::int64_t channel, const TimeAxis &axis,
                 double scale, const ColumnDrawing &drawing, const WaveformInk &ink);

}  // namespace kiv
