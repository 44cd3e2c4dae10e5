#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Editor/AudioEditorLoopPanel/AudioEditorLoopFinder.h"

namespace kiv {

// What a search has found, and for what: it stops applying, without being cleared, when the sound or the setting is another.
struct LoopFound {
    std::vector<AudioEditorLoopFinder::Proposal> proposals;
    std::int64_t generation = 0;
    bool zeroCrossing = false;
    friend bool operator==(const LoopFound &, const LoopFound &) = default;
};

// What Edit Loop works with, beside the loop points themselves.
struct AudioEditorLoopState {
    bool editLoopEnabled = false;
    bool canStoreLoop = true;              // the file's format has a place for a loop
    int loopCrossfadeStep = 0;             // into loopCrossfadeTableMs; 0 is none
    bool loopCrossfadeEqualPower = false;  // stored; false: equal gain
    double jointHalfSeconds = 0.01;        // of the joint view
    bool loopZeroCrossing = false;         // stored
    bool loopAnalyzing = false;            // a search is running
    std::optional<std::string> loopFindNotice;
    std::optional<LoopFound> loopFound;

    friend bool operator==(const AudioEditorLoopState &, const AudioEditorLoopState &) = default;
};

}  // namespace kiv
