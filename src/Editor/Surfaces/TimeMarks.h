#pragma once

#include <string>
#include <vector>

#include "Editor/Surfaces/TimeAxis.h"

// The marks of the time ruler, which the lines behind the waveform follow.
namespace kiv {

struct TimeTick {
    enum class Kind { labelled, middle, minor };

    int x = 0;  // device-pixel column
    Kind kind = Kind::minor;
    std::string label;  // of labelled ones that have room for it

    friend bool operator==(const TimeTick &, const TimeTick &) = default;
};

// The ticks that stand in the first `columns` columns, from the left. At the edges there may be some just outside. `textScale`
// is device pixels for a logical pixel of text. Where labelled ticks stand closer than a millisecond, their labels have as many
// decimals as it takes to tell them apart.
std::vector<TimeTick> timeTicks(const AudioEditorState &state, const TimeAxis &axis, int columns, double textScale);
// The columns of the labelled ones alone.
std::vector<int> timeLines(const AudioEditorState &state, const TimeAxis &axis, int columns, double textScale);

}  // namespace kiv
