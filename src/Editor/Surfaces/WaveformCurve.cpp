#include "Editor/Surfaces/WaveformCurve.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "Editor/Surfaces/Coverage.h"

namespace kiv {
namespace {

constexpr std::int64_t taps = 16, tapsBefore = 7;
constexpr double halfWindow = 8.5;  // samples
constexpr double lineWidth = 1.5, dotRadius = 3.5, ringWidth = 1;
constexpr double curveFrom = 1.0 / 8;  // frames a column and less
constexpr double dotsFrom = 8;         // logical pixels a sample and more, so that dots stand apart at any scale
constexpr double stemsFrom = 12;
constexpr double reachOfMarks = 6;  // logical pixels that a dot or a line reaches sideways

// The samples that one piece of a line needs; what lies outside the sound is silence.
class Samples {
public:
    Samples(const AudioEditorBuffer &buffer, std::int64_t channel, FrameRange range)
        : lo_(range.lo), values_(std::size_t(range.count())), inside_(buffer.clampedRange(range).value_or(FrameRange{})) {
        if (!inside_.isEmpty()) buffer.copyChannel(inside_, channel, &values_[std::size_t(inside_.lo - lo_)]);
        for (float &value : values_)
            if (!std::isfinite(value)) value = 0;
    }
    FrameRange inside() const { return inside_; }
    float at(std::int64_t frame) const { return values_[std::size_t(frame - lo_)]; }
    double curveAt(double place) const {
        const auto floor = std::int64_t(std::floor(place));
        return bandLimited(std::span<const float, taps>(&values_[std::size_t(floor - tapsBefore - lo_)], taps),
                           place - double(floor));
    }

private:
    std::int64_t lo_;
    std::vector<float> values_;
    FrameRange inside_;
};

// One piece of one channel's line on its way to the pixels.
class Piece {
public:
    Piece(PixelRows to, int x, int count, const TimeAxis &axis, double scale, const ColumnDrawing &drawing,
          const WaveformInk &ink, const Samples &samples)
        : to_(to),
          x_(x),
          count_(count),
          axis_(axis),
          scale_(scale),
          drawing_(drawing),
          ink_(ink),
          samples_(samples),
          coverage_(count, drawing.lane.rows.count()) {}

    void clear() {
        for (int row = drawing_.lane.rows.lo; row < drawing_.lane.rows.hi; ++row) std::fill_n(to_.at(x_, row), count_, 0);
    }

    void drawStraight() {
        for (std::int64_t frame = samples_.inside().lo; frame + 1 < samples_.inside().hi; ++frame)
            line(axis_.xOf(double(frame)), samples_.at(frame), axis_.xOf(double(frame + 1)), samples_.at(frame + 1));
        paintLine();
    }

    void drawCurve(double firstFrame, double lastFrame) {
        double xBefore = axis_.xOf(firstFrame), before = samples_.curveAt(firstFrame);
        while (xBefore < axis_.xOf(lastFrame)) {
            const double x = std::min(std::floor(xBefore) + 1.0, axis_.xOf(lastFrame));
            const double value = samples_.curveAt(std::min(axis_.frameAt(x), lastFrame));
            line(xBefore, before, x, value);
            xBefore = x;
            before = value;
        }
        paintLine();
    }

    void drawStems() {
        const int width = hairline(scale_), centre = drawing_.lane.centreRow();
        for (std::int64_t frame = samples_.inside().lo; frame < samples_.inside().hi; ++frame) {
            const PixelSpan columns = intersected({dotColumn(frame), dotColumn(frame) + width}, {0, count_});
            const int row = rowOf(samples_.at(frame));
            for (int y = std::min(row, centre); y < std::max(row, centre); ++y)
                for (int x = columns.lo; x < columns.hi; ++x) *to_.at(x_ + x, y) = ink_.stem;
        }
    }

    // On whole pixels, so that all dots look the same and stand on their stems.
    void drawDots() {
        const float radius = float(dotRadius * scale_), middle = float(hairline(scale_)) / 2;
        const auto add = [&](float r) {
            for (std::int64_t frame = samples_.inside().lo; frame < samples_.inside().hi; ++frame)
                coverage_.addDisc(float(dotColumn(frame)) + middle, float(dotRow(samples_.at(frame))) + 0.5f, r);
        };
        add(radius + float(ringWidth * scale_));
        paint(ink_.ring);
        add(radius);
        paint(ink_.curve);
    }

    void drawCaps() {
        for (int x = 0; x < count_; ++x) {
            const auto nearest = std::int64_t(std::llround(axis_.frameAt(x + 0.5)));
            if (!samples_.inside().contains(nearest)) continue;
            const double value = double(samples_.at(nearest));
            for (int i = 0; i < drawing_.capRows && std::abs(value) > 1; ++i)
                *to_.at(x_ + x, value > 0 ? top() + i : drawing_.lane.rows.hi - 1 - i) = ink_.over;
        }
    }

private:
    int top() const { return drawing_.lane.rows.lo; }
    // A dot and its stem stand where a mark of the frame would; that of the first frame as far in that all of it is seen.
    int dotColumn(std::int64_t frame) const {
        return int(std::max<std::int64_t>(axis_.columnOf(double(frame)), dotReach() - axis_.firstColumn));
    }
    // Counted from the lane's top, and inside the lane with all of the dot.
    int dotRow(float value) const {
        const int last = drawing_.lane.rows.count() - 1, reach = std::min(dotReach(), last / 2);
        return std::clamp(pixelAt(yOf(double(value))), reach, last - reach);
    }
    int dotReach() const { return int(std::ceil((dotRadius + ringWidth) * scale_)); }
    double yOf(double value) const {
        const double y = drawing_.lane.centre - value * drawing_.gain * drawing_.factor * drawing_.lane.half - top();
        return std::clamp(y, -1e5, 1e5);
    }
    int rowOf(float value) const { return top() + std::clamp(pixelAt(yOf(double(value))), 0, drawing_.lane.rows.count() - 1); }
    // Through the middles of the pixels in which marks of the same frames stand. In whole parts of a pixel, so that a piece
    // comes out the same wherever it begins.
    static float finely(double x) { return float(std::round(x * 256) / 256); }
    void line(double ax, double a, double bx, double b) {
        const float middle = float(hairline(scale_)) / 2, radius = float(lineWidth * scale_ / 2);
        coverage_.addLine(finely(ax) + middle, float(yOf(a)), finely(bx) + middle, float(yOf(b)), radius);
    }
    void paint(const RowColors &colors) { coverage_.paint(to_, x_, top(), colors); }
    void paint(Pixel color) { paint({{}, color, color}); }
    // Without caps, what lies beyond full scale is drawn in the colour of that.
    void paintLine() {
        if (drawing_.capRows > 0) return paint(ink_.curve);
        const double reach = drawing_.gain * drawing_.lane.half, centre = drawing_.lane.centre - top();
        paint({{pixelAt(centre - reach), pixelAt(centre + reach) + 1}, ink_.curve, ink_.over});
    }

    PixelRows to_;
    int x_, count_;
    TimeAxis axis_;
    double scale_;
    const ColumnDrawing &drawing_;
    const WaveformInk &ink_;
    const Samples &samples_;
    Coverage coverage_;
};

}  // namespace

// The angles of neighbouring taps differ by fixed amounts, so that two sines and two cosines a place are enough.
double bandLimited(std::span<const float, 16> around, double fraction) {
    if (fraction == 0) return double(around[tapsBefore]);
    constexpr double step = std::numbers::pi / halfWindow;
    const double sine = std::sin(std::numbers::pi * fraction) / std::numbers::pi;
    const double cosF = std::cos(step * fraction), sinF = std::sin(step * fraction);
    static const auto table = [] {
        std::array<std::array<double, 2>, taps> angles{};
        for (std::int64_t i = 0; i < taps; ++i)
            angles[std::size_t(i)] = {std::cos(step * double(i - tapsBefore)), std::sin(step * double(i - tapsBefore))};
        return angles;
    }();
    double sum = 0;
    for (std::int64_t i = 0; i < taps; ++i) {
        const auto &[cosI, sinI] = table[std::size_t(i)];
        const double distance = fraction - double(i - tapsBefore);
        const double sinc = ((i - tapsBefore) % 2 == 0 ? sine : -sine) / distance;
        sum += double(around[std::size_t(i)]) * sinc * 0.5 * (1 + cosF * cosI + sinF * sinI);
    }
    return sum;
}

void rasterCurve(PixelRows to, int x, int count, const AudioEditorBuffer &buffer, std::int64_t channel, const TimeAxis &axis,
                 double scale, const ColumnDrawing &drawing, const WaveformInk &ink) {
    const double reach = reachOfMarks * scale;
    const FrameRange near{std::int64_t(std::floor(axis.frameAt(-reach))) - taps,
                          std::int64_t(std::ceil(axis.frameAt(count + reach))) + taps};
    const Samples samples(buffer, channel, near);
    Piece piece(to, x, count, axis, scale, drawing, ink, samples);
    piece.clear();
    if (samples.inside().isEmpty()) return;
    const double pixelsPerSample = 1 / (axis.framesPerColumn * scale);
    const bool dotted = pixelsPerSample >= dotsFrom && ink.ring != 0;
    if (dotted && pixelsPerSample >= stemsFrom) piece.drawStems();
    if (axis.framesPerColumn > curveFrom)
        piece.drawStraight();
    else
        // To the end of the last sample's time, so that a sound of one sample is a line too.
        piece.drawCurve(std::max(axis.frameAt(-reach), double(samples.inside().lo)),
                        std::min(axis.frameAt(count + reach), double(samples.inside().hi)));
    if (dotted) piece.drawDots();
    piece.drawCaps();
}

}  // namespace kiv
