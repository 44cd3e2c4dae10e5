#pragma once

#include <cstdint>
#include <vector>

#include "Editor/Surfaces/DevicePixels.h"
#include "Editor/Surfaces/TimeAxis.h"
#include "Editor/Surfaces/WaveformHover.h"

// Where everything of the waveform stands, in device pixels from its upper left corner.
namespace kiv {

// The size of a view: logical pixels, device pixels a logical one, and how much larger than usual the desktop wants its texts.
struct ViewSize {
    double width = 0, height = 0;
    double scale = 1;
    double textFactor = 1;

    double textScale() const { return scale * textFactor; }

    friend bool operator==(const ViewSize &, const ViewSize &) = default;
};

// Logical pixels left of overview, ruler and waveform: 44 at the usual type size.
inline int gutterWidth(double textFactor) { return grownWithText(44, textFactor); }

// One channel's room, or the room of all channels where each would be too low. A sample v stands at centre − v · gain · half,
// with the gain of the vertical zoom.
struct WaveLane {
    PixelSpan rows;
    double centre = 0;  // the middle of the centre row
    double half = 1;    // rows between the centre and full scale at a gain of 1

    int centreRow() const { return pixelAt(centre); }
    friend bool operator==(const WaveLane &, const WaveLane &) = default;
};

struct WaveformGeometry {
    ViewSize size;
    TimeAxis axis;
    std::vector<WaveLane> lanes;
    bool isMerged = false;  // one lane for all channels
    double gain = 1;

    int columns() const;  // device pixels, the last of them perhaps only partly on screen
    int rows() const;
    // The row that holds a sample, clamped to the lane.
    int rowOf(const WaveLane &lane, double sample) const;
    // The boundary between frames nearest to the middle of the pixel at x.
    std::int64_t frameAt(double x, std::int64_t frames) const;
    // The level that a height stands for, in the lane there or the one below the edge there; −infinity on a centre line.
    double levelDbAt(double y) const;
    friend bool operator==(const WaveformGeometry &, const WaveformGeometry &) = default;
};

// No audio: not only none read yet.
inline bool isKnownEmpty(const AudioEditorState &state) { return state.buffer.isEmpty() && state.generation > 0; }

WaveformGeometry waveformGeometry(const AudioEditorState &state, ViewSize size);
WaveformHover hoverAt(const WaveformGeometry &geometry, double x, double y, std::int64_t frames);

// A level line of one lane.
struct LevelMark {
    int row = 0;
    double db = 0;  // −infinity on the centre line

    friend bool operator==(const LevelMark &, const LevelMark &) = default;
};
std::vector<LevelMark> levelMarks(const WaveformGeometry &geometry, const WaveLane &lane);

}  // namespace kiv
