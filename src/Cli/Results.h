#pragma once

#include <optional>
#include <vector>

#include "Cli/JsonWriter.h"
#include "Editor/AudioEditorLoopPanel/AudioEditorLoopFinder.h"

// Values as more than one command prints them.
namespace kiv::Cli {

void writeRange(JsonWriter &json, std::optional<FrameRange> range);  // [lo, hi], or null
void writeRanges(JsonWriter &json, const std::vector<FrameRange> &ranges);
void writeProposals(JsonWriter &json, const std::vector<AudioEditorLoopFinder::Proposal> &proposals);

}  // namespace kiv::Cli
