#include "Editor/AudioEditorCore/AudioEditorLengthChange.h"

#include <algorithm>

namespace kiv {
namespace {

std::int64_t moved(const AudioEditorLengthChange &change, std::int64_t frame) {
    const FrameRange range = change.range;
    switch (change.kind) {
        case AudioEditorLengthChange::Kind::removed:
        case AudioEditorLengthChange::Kind::replaced:
            if (frame <= range.lo) return frame;
            return frame < range.hi ? range.lo : frame - range.count() + change.count;
        case AudioEditorLengthChange::Kind::inserted:
            return frame < range.lo ? frame : frame + change.count;
        case AudioEditorLengthChange::Kind::kept:
            return frame - range.lo;
        case AudioEditorLengthChange::Kind::none:
            break;
    }
    return frame;
}

}  // namespace

std::int64_t AudioEditorLengthChange::map(std::int64_t frame, std::int64_t newFrameCount) const {
    return std::min(std::max<std::int64_t>(moved(*this, frame), 0), newFrameCount);
}

FrameRange AudioEditorLengthChange::mapLoop(FrameRange loop, std::int64_t newFrameCount) const {
    const std::int64_t start = std::min(map(loop.lo, newFrameCount), std::max<std::int64_t>(newFrameCount, 1) - 1);
    return {start, std::max(start + 1, map(loop.hi, newFrameCount))};
}

std::vector<FrameRange> AudioEditorLengthChange::mapRanges(std::vector<FrameRange> ranges, std::int64_t newFrameCount) const {
    for (FrameRange &each : ranges) each = {map(each.lo, newFrameCount), map(each.hi, newFrameCount)};
    std::erase_if(ranges, [](FrameRange each) { return each.isEmpty(); });
    return ranges;
}

}  // namespace kiv
