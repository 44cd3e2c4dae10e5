#pragma once

#include <string>
#include <vector>

#include "Audio/Files/AudioFileContents.h"

// What the chunks of a CAF file say of its sound: markers, regions, texts.
namespace kiv {

// Fills positions, and the fields of the wrapping's chunks. Where markers are told by a clock as well, which no edit can move,
// the wrapping counts frames from then on.
void collectCafPositions(AudioFileContents &contents, SampleWrapping &wrapping);

// The names of the positions; empty for those that have none, and no longer than any that is meant as one: markers may share
// it.
inline constexpr std::size_t longestCafName = 4096;
std::vector<std::string> cafNames(const AudioFileContents &contents, const SampleWrapping &wrapping);

// "TITLE" and the like, as they stand in "info".
std::vector<std::pair<std::string, std::string>> cafTexts(const SampleWrapping &wrapping);

}  // namespace kiv
