#include "Editor/Surfaces/OverviewImage.h"

#include <tuple>

namespace kiv {

bool OverviewImage::update(const SoundSource &source, const OverviewGeometry &geometry, const Look &look) {
    const int width = geometry.wholeColumns(), rows = geometry.rows.hi;
    const auto now =
        std::tie(source.generation, source.powersRevision, geometry.axis.framesPerColumn, geometry.lane, look, width, rows);
    auto held = std::tie(generation_, powersRevision_, framesPerColumn_, lane_, look_, width_, rows_);
    if (now == held) return false;
    held = now;
    columns_.update(source, framesPerColumn_, true, -1, width + 1);
    const ColumnDrawing drawing{lane_, 1, 1, 0};
    for (auto [pixels, ink] : {std::pair(&outside_, &look_.outside), std::pair(&inside_, &look_.inside)}) {
        pixels->assign(std::size_t(width) * std::size_t(rows), 0);
        rasterColumns({pixels->data(), width}, 0, columns_.lane(0), drawing, *ink);
    }
    return true;
}

}  // namespace kiv
