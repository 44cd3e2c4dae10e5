#pragma once

#include <span>
#include <string_view>

#include "Editor/AudioEditorModel/AudioEditorSlicerState.h"
#include "Preferences/Settings.h"

// The slicer's numbers as rows, read by its bar, by the command line and by the model.
namespace kiv {

// clang-format off
enum class SliceSetting {
    sensitivity, preRollMs, tailDb, lengthPercent, thresholdDb, minSilenceMs, divisions, gridOffset, gridLengthPercent,
    fadeInSamples, fadeOutSamples,
};
// clang-format on

struct SliceSettingRow {
    SliceSetting setting;
    std::string_view field;  // its name in the words of the command line
    int AudioEditorSlicerState::*value;
    const NumberSetting &stored;  // range and default; without a key it is not stored
    // The mode whose bar shows it; nothing: every one's.
    std::optional<AudioEditorSlicer::Mode> mode;
    int step, fineStep;  // of a wheel notch, and with Shift
    std::string_view label, unit, help;

    // The value that a wanted one becomes: within the range, and one of those that there are.
    int limited(double value) const;
};

std::span<const SliceSettingRow> sliceSettings();
const SliceSettingRow &row(SliceSetting setting);
const SliceSettingRow *sliceSettingFromField(std::string_view field);

// What a mode's segment says of it.
std::string_view sliceModeTitle(AudioEditorSlicer::Mode mode);
std::string_view sliceModeHelp(AudioEditorSlicer::Mode mode);

}  // namespace kiv
