#include "Editor/AudioEditorSpectral/Stroke.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace kiv::AudioEditorSpectral {
namespace {

constexpr double spacing = 0.25;             // of the radius
constexpr float silentGain = 3.9810717e-3f;  // −48 dB: half of the way to the floor
constexpr float revivingCoverage = 0.1f;     // from here on a silent value comes back, whole: a rim of partly revived values
                                             // would part this stroke from the next beside it

float limited(float gain) { return std::clamp(gain, floorGain, maxGain); }

// The whole numbers from the first to the last that lie inside, clamped to 0 … count.
ColumnRange cellsBetween(double lo, double hi, std::int64_t count) {
    const auto cell = [&](double at) { return std::int64_t(std::clamp(at, 0.0, double(count))); };
    return {cell(std::ceil(lo)), cell(std::floor(hi) + 1)};
}

}  // namespace

Stroke::Stroke(Mask before, Brush usedBrush, float passFactor)
    : base_(before),
      mask_(std::move(before)),
      brush_(usedBrush),
      factor_(passFactor),
      profile_(passFactor),
      pages_(std::size_t((base_.columns() + pageColumns - 1) / pageColumns)) {}

void Stroke::to(Point point, Radius radius) {
    radius = {std::max(radius.columns, 1.0), std::max(radius.bands, 1.0)};
    if (!lastPoint_) return dab(point, radius);
    const Point from = *lastPoint_;
    const double x = point.column - from.column, y = point.band - from.band;
    const double distance = std::hypot(x / radius.columns, y / radius.bands);
    const int dabs = int(std::min(distance / spacing, 1e6));
    for (int i = 1; i <= dabs; ++i) {
        const double t = i * spacing / distance;
        dab({from.column + t * x, from.band + t * y}, radius);
    }
}

ColumnRange Stroke::takePending() { return std::exchange(pending_, {}); }

Stroke::Page &Stroke::pageOf(std::int64_t column) {
    auto &page = pages_[std::size_t(column / pageColumns)];
    if (!page) page = std::make_unique<Page>();
    return *page;
}

void Stroke::dab(Point point, Radius radius) {
    lastPoint_ = point;
    const ColumnRange columns =
        cellsBetween(point.column - 0.5 - radius.columns, point.column - 0.5 + radius.columns, mask_.columns());
    for (std::int64_t c = columns.lo; c < columns.hi; ++c) {
        const double x = (double(c) + 0.5 - point.column) / radius.columns;
        if (x * x >= 1 || !dabColumn(c, x * x, point, radius)) continue;
        dirty_ = dirty_.with({c, c + 1});
        pending_ = pending_.with({c, c + 1});
    }
    ++dabCount_;
}

// Whether any value has changed.
bool Stroke::dabColumn(std::int64_t column, double squaredX, Point point, Radius radius) {
    const double reach = std::sqrt(1 - squaredX) * radius.bands;
    const ColumnRange bands = cellsBetween(point.band - reach, point.band + reach, bandCount);
    if (bands.isEmpty()) return false;
    std::array<float, bandCount> values;
    std::copy_n(mask_.column(column), bandCount, values.begin());
    Page &page = pageOf(column);
    const std::size_t first = std::size_t(column % pageColumns * bandCount);
    bool changed = false;
    for (std::int64_t b = bands.lo; b < bands.hi; ++b) {
        const double y = (double(b) - point.band) / radius.bands, squared = squaredX + y * y;
        if (squared < 1) changed |= touch(page, first + std::size_t(b), profile_.at(squared), values[std::size_t(b)]);
    }
    if (changed) std::copy(values.begin(), values.end(), mask_.writableColumn(column));
    return changed;
}

bool Stroke::touch(Page &page, std::size_t index, const BrushProfile::Value &share, float &value) const {
    if (page.lastDab[index] < dabCount_ - 1) {  // the brush was elsewhere: a new pass
        page.coverage[index] = 0;
        page.passBase[index] = value;
        page.reviving[index] = factor_ > 1 && value <= silentGain;
    }
    page.lastDab[index] = dabCount_;
    if (share.coverage <= page.coverage[index]) return false;
    page.coverage[index] = share.coverage;
    const float before = value;
    if (page.reviving[index])
        value = share.coverage >= revivingCoverage ? 1 : value;
    else
        value = limited(page.passBase[index] * share.gain);
    return value != before;
}

Mask multiplied(Mask mask, ColumnRange columns, ColumnRange bands, double gainDb) {
    const float gain = float(std::pow(10.0, gainDb / 20));
    columns = {std::clamp<std::int64_t>(columns.lo, 0, mask.columns()),
               std::clamp<std::int64_t>(columns.hi, 0, mask.columns())};
    bands = {std::clamp<std::int64_t>(bands.lo, 0, bandCount), std::clamp<std::int64_t>(bands.hi, 0, bandCount)};
    for (std::int64_t c = columns.lo; c < columns.hi; ++c) {
        float *values = mask.writableColumn(c);
        for (std::int64_t b = bands.lo; b < bands.hi; ++b) values[b] = limited(values[b] * gain);
    }
    mask.updateUniform();
    return mask;
}

}  // namespace kiv::AudioEditorSpectral
