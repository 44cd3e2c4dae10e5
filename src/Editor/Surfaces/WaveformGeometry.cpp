#include "Editor/Surfaces/WaveformGeometry.h"

#include <cmath>
#include <limits>

#include "Editor/AudioEditorCore/AudioEditorLevelGrid.h"

namespace kiv {
namespace {

constexpr double leastLaneHeight = 48;
constexpr double roomBeyondFullScale = 10;
constexpr double silenceDb = -std::numeric_limits<double>::infinity();

WaveLane laneIn(PixelSpan rows, double scale) {
    const double half = rows.count() / 2.0 - std::round(roomBeyondFullScale * scale);
    return {rows, rows.lo + rows.count() / 2 + 0.5, std::max(half, 1.0)};
}

}  // namespace

int WaveformGeometry::columns() const { return std::max(int(std::ceil(size.width * size.scale)), 0); }

int WaveformGeometry::rows() const { return std::max(int(std::lround(size.height * size.scale)), 0); }

int WaveformGeometry::rowOf(const WaveLane &lane, double sample) const {
    return std::clamp(pixelAt(lane.centre - sample * gain * lane.half), lane.rows.lo, lane.rows.hi - 1);
}

std::int64_t WaveformGeometry::frameAt(double x, std::int64_t frames) const {
    const double frame = std::round(axis.frameAt(std::floor(x) + 0.5));
    return std::int64_t(std::clamp(frame, 0.0, double(frames)));
}

double WaveformGeometry::levelDbAt(double y) const {
    const int row = pixelAt(y);
    auto lane = lanes.begin();
    while (row >= lane->rows.hi && lane + 1 != lanes.end()) ++lane;
    const double distance = std::abs(row + 0.5 - lane->centre);
    return distance == 0 ? silenceDb : 20 * std::log10(distance / (lane->half * gain));
}

WaveformGeometry waveformGeometry(const AudioEditorState &state, ViewSize size) {
    WaveformGeometry geometry{size, viewAxis(state, size.width * size.scale), {}, false, 1};
    geometry.gain = std::pow(10.0, state.verticalZoomDb / 20.0);
    const int rows = geometry.rows(), edge = hairline(size.scale);
    const auto channels = int(state.buffer.channels());
    // An empty sound has one line for its one message; one that is still being read has the lanes it will need.
    geometry.isMerged =
        channels > 1 && (isKnownEmpty(state) || (rows - edge * (channels - 1)) / size.scale < leastLaneHeight * channels);
    const int lanes = geometry.isMerged ? 1 : channels;
    for (int i = 0, top = 0; i < lanes; ++i) {
        const int left = lanes - i, height = (rows - top - edge * (left - 1) + left - 1) / left;
        geometry.lanes.push_back(laneIn({top, top + std::max(height, 1)}, size.scale));
        top += height + edge;
    }
    return geometry;
}

WaveformHover hoverAt(const WaveformGeometry &geometry, double x, double y, std::int64_t frames) {
    return {geometry.frameAt(x, frames), geometry.levelDbAt(y)};
}

std::vector<LevelMark> levelMarks(const WaveformGeometry &geometry, const WaveLane &lane) {
    const double scale = geometry.size.textScale();  // the marks are as far apart as their labels need
    std::vector<LevelMark> marks;
    for (const auto &[db, offset] : AudioEditorLevelGrid::marks(lane.half / scale, 20 * std::log10(geometry.gain))) {
        marks.push_back({pixelAt(lane.centre - offset * scale), db});
        if (offset > 0) marks.push_back({pixelAt(lane.centre + offset * scale), db});
    }
    return marks;
}

}  // namespace kiv
