#pragma once

#include <string>
#include <vector>

#include "Cli/Words.h"
#include "Editor/AudioEditorModel/SliceSettings.h"

// The words that set the slicer.
namespace kiv::Cli {

struct SliceValue {
    SliceSetting setting;
    int value;
};

// "sensitivity=60". Throws WrongWords, also for a value that the setting's control cannot have.
SliceValue parseSliceSetting(const std::string &word);
bool isSliceSetting(const std::string &word);  // begins like one
AudioEditorSlicer::Mode parseSliceMode(const std::string &word);

// What can be set, for help texts.
std::string sliceSettingsHelp();

}  // namespace kiv::Cli
