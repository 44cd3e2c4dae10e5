#pragma once

#include <string>

#include "Editor/AudioEditorModel/AudioEditorModel.h"
#include "Editor/Surfaces/LevelSlider.h"

namespace kiv {

// What the Gain and Normalize dialogs show.
struct LevelSheetScene {
    std::string title;
    std::string target;  // what they act on: "Selection · 1.154 s"
    double value = 0;    // dB
    std::string peakBefore, peakAfter;
    std::string note;        // "gain +3.2 dB", "over full scale"
    bool isOver = false;     // the outcome would pass full scale
    bool isReadable = true;  // what is being typed is a number

    friend bool operator==(const LevelSheetScene &, const LevelSheetScene &) = default;
};

// `peak` is the largest absolute sample of the active range.
LevelSheetScene levelSheetScene(const AudioEditorState &state, Dialog dialog, float peak);
LevelSlider levelSlider(Dialog dialog);  // without its place
// "Selection · 1.154 s", "Whole file · 7.385 s".
std::string dialogTarget(const AudioEditorState &state);

// The largest absolute sample of a range, from the peaks where they tell it, so that an hour takes a millisecond.
float peakOfRange(const AudioEditorBuffer &buffer, const AudioEditorPeaks &peaks, FrameRange range);

// The value of the dialog, its setting (clamped by the model), a step up or down, and typing: a text that can be read is in
// force at once.
double dialogLevel(const AudioEditorState &state, Dialog dialog);
void setDialogLevel(AudioEditorModel &model, Dialog dialog, double db);
void stepDialogLevel(AudioEditorModel &model, Dialog dialog, double db);
void typeDialogLevel(AudioEditorModel &model, Dialog dialog, const std::string &text, bool typedAhead);

}  // namespace kiv
