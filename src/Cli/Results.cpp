#include "Cli/Results.h"

namespace kiv::Cli {

void writeRange(JsonWriter &json, std::optional<FrameRange> range) {
    if (range) {
        json.beginList().value(range->lo).value(range->hi).endList();
    } else {
        json.value(nullptr);
    }
}

void writeRanges(JsonWriter &json, const std::vector<FrameRange> &ranges) {
    json.beginList();
    for (const FrameRange range : ranges) writeRange(json, range);
    json.endList();
}

void writeProposals(JsonWriter &json, const std::vector<AudioEditorLoopFinder::Proposal> &proposals) {
    json.beginList();
    for (const auto &[loop, match] : proposals)
        json.beginObject().field("start", loop.lo).field("end", loop.hi).field("match", match).endObject();
    json.endList();
}

}  // namespace kiv::Cli
