#pragma once

#include "Editor/AudioEditorCore/AudioEditorStretch.h"
#include "Editor/AudioEditorModel/AudioEditorModel.h"

// The edits, each one undoable step on the model's active range. One that would change nothing makes no step.
namespace kiv::AudioEditorEdits {

void cut(AudioEditorModel &model);
void copy(AudioEditorModel &model);
void paste(AudioEditorModel &model);
void deleteSelection(AudioEditorModel &model);
void trim(AudioEditorModel &model);

void fadeIn(AudioEditorModel &model);
void fadeOut(AudioEditorModel &model);
void silence(AudioEditorModel &model);
void reverse(AudioEditorModel &model);
void gain(AudioEditorModel &model, double db);
void normalize(AudioEditorModel &model, double targetDb);
void mono(AudioEditorModel &model, AudioEditorMonoSource source);
void stereo(AudioEditorModel &model);
// What is stretched stays selected if it was, with the cursor at its start.
void timeStretch(AudioEditorModel &model, const StretchSettings &settings);

// Does what the open dialog says, with the typed text if there is one, and closes it: true. A text that cannot be read leaves
// the dialog open and everything as it is: false.
bool confirmDialog(AudioEditorModel &model);
// A typed decibel value: point or comma, a leading sign with a minus of either kind, "dB" behind it or not. Nothing when it
// cannot be read.
std::optional<double> parseDecibels(std::string_view text);

}  // namespace kiv::AudioEditorEdits
