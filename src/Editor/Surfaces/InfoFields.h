#pragma once

#include <optional>
#include <string>

#include "Editor/AudioEditorModel/AudioEditorModel.h"
#include "Editor/Surfaces/ValueInput.h"
#include "Editor/Surfaces/ValueScenes.h"

// The places that stand in the window as numbers: typed, scrolled, dragged, stepped and reset like every other number.
namespace kiv {

enum class InfoField { cursor, selectionStart, selectionEnd, selectionLength };

// The frame or length that a field shows, and what setting it does: values are clamped as the model clamps them, and the place
// that has moved is brought into view.
std::int64_t infoFieldValue(const AudioEditorState &state, InfoField field);
void setInfoField(AudioEditorModel &model, InfoField field, std::int64_t frames);
// A position or length as it is typed; false when it cannot be read.
bool typeInfoField(AudioEditorModel &model, InfoField field, const std::string &typed);

// In the document's unit. A step is 10 ms or 10 samples, a small one 1; the cursor stays in the sound, and an edge of the
// selection on its side of the other.
ValueFacts infoFieldFacts(const AudioEditorState &state, InfoField field);
void setInfoFieldInUnit(AudioEditorModel &model, InfoField field, double value);
void stepInfoField(AudioEditorModel &model, InfoField field, double steps, bool isSmall);
// To the sound's start or end.
void resetInfoField(AudioEditorModel &model, InfoField field);
// Steps, drags and resets of a read-out's input; a cancelled drag leaves cursor and selection as they were.
void connectInfoField(ValueInput &input, AudioEditorModel &model, InfoField field);
// "Click to type. Scroll or drag up / down = 10 ms, with ⇧ = 1 ms; double-click = start of the sound."
std::string infoFieldHelp(AudioEditorTimeUnit unit, InfoField field);

}  // namespace kiv
