#pragma once

#include <functional>
#include <span>
#include <string_view>

#include "Cli/CallUi.h"
#include "Cli/Words.h"
#include "Document/AudioDocument.h"

// The steps of `kiv edit`, a row each.
namespace kiv::Cli {

struct StepContext {
    AudioDocument &document;
    DocumentServices services;
    CallUi &ui;
    std::optional<int> cycle = {};  // of the last stretch by cycles
};

// Applies a step; one that cannot apply does nothing. Throws FileFailure and Cancelled.
using Step = std::function<void(StepContext &)>;

// Throws WrongWords.
Step parseStep(const Words &words);

// Saves the slices that there are. Throws FileFailure, also for a folder that holds audio files which may not be replaced, and
// Cancelled.
void saveSlicesNow(StepContext &context, const std::string &name, AudioDocument::IfHeld ifHeld);

// All forms of all steps for the help text, one a line.
std::string stepsHelp();

}  // namespace kiv::Cli
