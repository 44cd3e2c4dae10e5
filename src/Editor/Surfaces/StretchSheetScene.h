#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "Editor/AudioEditorCore/AudioEditorStretch.h"
#include "Editor/AudioEditorModel/AudioEditorModel.h"

namespace kiv {

// The numbers of the Pitch / Time dialog, a row each; all are whole.
enum class StretchField { time, semitones, cents, cycle };

struct StretchNumber {
    StretchField field;
    const char *label;
    const char *unit;
    int StretchSettings::*value;
    WholeRange range;
    bool hasSign;         // written with it where it is above 0
    int step, smallStep;  // by keys and wheel
    int width;            // of its field
};
inline constexpr std::array stretchNumbers{
    StretchNumber{StretchField::time, "Time", "%", &StretchSettings::timePercent, stretchTimePercentRange, false, 5, 1, 96},
    StretchNumber{StretchField::semitones, "Semitones", "st", &StretchSettings::semitones, stretchSemitonesRange, true, 1, 1,
                  88},
    StretchNumber{StretchField::cents, "Cents", "ct", &StretchSettings::cents, stretchCentsRange, true, 5, 1, 88},
    StretchNumber{StretchField::cycle, "Cycle", "smp", &StretchSettings::cycle, stretchCycleRange, false, 10, 1, 96},
};
constexpr const StretchNumber &row(StretchField field) { return stretchNumbers[std::size_t(field)]; }

// What the dialog shows.
struct StretchSheetScene {
    std::string target;  // what it acts on: "Selection · 1.154 s"
    bool isCyclic = false;
    std::array<std::string, stretchNumbers.size()> numbers;
    std::string lengthBefore, lengthAfter;
    bool isReadable = true;  // what is being typed is a number

    friend bool operator==(const StretchSheetScene &, const StretchSheetScene &) = default;
};

StretchSheetScene stretchSheetScene(const AudioEditorState &state);
// The field is shown in this mode.
bool isShown(StretchField field, StretchMode mode);
// "+3", "−12", "125".
std::string stretchNumberText(const StretchSettings &settings, StretchField field);

void setStretchMode(AudioEditorModel &model, StretchMode mode);
// Takes the place of what is being typed.
void setStretchNumber(AudioEditorModel &model, StretchField field, int value);
void stepStretchNumber(AudioEditorModel &model, StretchField field, int steps, bool isSmall);
// A text that can be read is in force at once.
void typeStretchNumber(AudioEditorModel &model, StretchField field, const std::string &text, bool typedAhead);
// A cycle that suits what the dialog acts on.
void findStretchCycle(AudioEditorModel &model);

}  // namespace kiv
