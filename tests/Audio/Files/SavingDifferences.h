#pragma once

#include <map>
#include <set>
#include <string>

#include "Audio/Files/AudioFileContents.h"

namespace kiv {

// How a file that was saved without an edit may differ from what it was; docs/what-saving-changes.md says the same in words.
enum class SavingDifference {
    staleChunk,
    formSize,
    chunkSize,
    padByte,
    incompleteFrame,
    positionBeyondEnd,
    rateAndAlign,
    factFrames,
    commonFrames,
    soundHeader,
};

// The words of the document that stand for each.
const std::map<SavingDifference, std::string> &documentedDifferences();

struct ComparedFiles {
    std::set<SavingDifference> differences;
    std::string fault;  // what is none of them; empty when all are accounted for
};

// Compares the bytes of a file with those saved of it. `contents` are what was read: they say what the samples are and where
// positions stand.
ComparedFiles compareSaved(const Bytes &before, const Bytes &after, const AudioFileContents &contents);

}  // namespace kiv
