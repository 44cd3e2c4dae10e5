#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "Editor/AudioEditorSpectral/Brush.h"
#include "Editor/AudioEditorSpectral/Mask.h"

namespace kiv::AudioEditorSpectral {

// A place on the grid: column c lies around c + 0.5, band b around b.
struct Point {
    double column = 0, band = 0;
    friend bool operator==(const Point &, const Point &) = default;
};
// Half the brush's width and height on the grid; less than one cell counts as one.
struct Radius {
    double columns = 1, bands = 1;
    friend bool operator==(const Radius &, const Radius &) = default;
};

// One drag of the brush. While the brush stays on a value it is one pass: the value gets the largest share of the pass's level
// that any of the dabs has there, however many overlap. When it comes back after a dab elsewhere, a new pass begins, and the
// levels add up in decibels. The accentuate brush first brings a silent value back to the original level, in a pass of its own.
//
// What the stroke remembers of each value is kept in pages of a few columns, made where a dab first falls.
class Stroke {
public:
    Stroke(Mask before, Brush usedBrush, float passFactor);

    // A dab there, and on the way there since the last one: dabs are at most a quarter of the radius apart.
    void to(Point point, Radius radius);

    const Mask &base() const { return base_; }
    const Mask &mask() const { return mask_; }
    Brush brush() const { return brush_; }
    float factor() const { return factor_; }
    int dabCount() const { return dabCount_; }
    std::optional<Point> lastPoint() const { return lastPoint_; }
    // All columns changed since the stroke began, and those since they were last taken.
    ColumnRange dirty() const { return dirty_; }
    ColumnRange pending() const { return pending_; }
    ColumnRange takePending();

private:
    static constexpr std::int64_t pageColumns = 16;
    // All but the last dab's number is set when a pass begins, and means nothing before: memory that no dab comes to stays
    // untouched.
    struct Page {
        static constexpr std::size_t size = pageColumns * bandCount;
        std::array<float, size> passBase;  // as the pass found it
        std::array<float, size> coverage;
        std::array<std::int32_t, size> lastDab;
        std::array<bool, size> reviving;

        Page() { lastDab.fill(-2); }
    };

    void dab(Point point, Radius radius);
    bool dabColumn(std::int64_t column, double squaredX, Point point, Radius radius);
    bool touch(Page &page, std::size_t index, const BrushProfile::Value &share, float &value) const;
    Page &pageOf(std::int64_t column);

    Mask base_, mask_;
    Brush brush_;
    float factor_;
    BrushProfile profile_;
    std::vector<std::unique_ptr<Page>> pages_;
    int dabCount_ = 0;
    ColumnRange dirty_, pending_;
    std::optional<Point> lastPoint_;
};

// The mask with a block of columns and bands multiplied by a gain, values kept within the limits. Ranges are clamped.
Mask multiplied(Mask mask, ColumnRange columns, ColumnRange bands, double gainDb);

}  // namespace kiv::AudioEditorSpectral
