#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "Editor/AudioEditorSpectral/Geometry.h"

namespace kiv::AudioEditorSpectral {

// Gains over columns and bands. A value: copying one never shows in the other. The gains stand in pages of a few columns that
// copies share until they are written to, and a page that is the same all over is kept once, so that an hour without a stroke
// takes no more than its list of pages, and a stroke what it touches.
class Mask {
public:
    explicit Mask(std::int64_t columns, float gain = 1);

    std::int64_t columns() const { return columns_; }
    const float *column(std::int64_t column) const {  // 256 gains
        return pages_[std::size_t(column / pageColumns)]->data() + column % pageColumns * bandCount;
    }
    // The same to write to. Valid until the mask is copied; a reading pointer into the same page is not after this.
    float *writableColumn(std::int64_t column);

    // The gain that all of them have. As of the last update, and none from a write on.
    std::optional<float> uniform() const { return uniform_; }
    void updateUniform();
    // Whether two columns certainly hold the same, because they share memory.
    bool shares(std::int64_t column, const Mask &other) const { return this->column(column) == other.column(column); }
    // What this mask holds in memory, pages shared within it counted once.
    std::size_t bytes() const;

    friend bool operator==(const Mask &a, const Mask &b);

private:
    static constexpr std::int64_t pageColumns = 16;
    using Page = std::array<float, pageColumns * bandCount>;

    std::int64_t columns_;
    std::vector<std::shared_ptr<Page>> pages_;
    std::optional<float> uniform_;
};

// Every gain of a column is 1: nothing changes there.
bool isUnity(const float *column);

}  // namespace kiv::AudioEditorSpectral
