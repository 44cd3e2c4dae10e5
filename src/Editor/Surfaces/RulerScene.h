#pragma once

#include <string>
#include <vector>

#include "Editor/Surfaces/RulerGeometry.h"
#include "Editor/Surfaces/TimeMarks.h"

namespace kiv {

// What is to be seen on ruler and marker lane, in columns of the waveform.
struct RulerScene {
    RulerGeometry geometry;
    std::int64_t sampleRate = 0;
    std::string unit;  // "Sec", "Smp"
    std::vector<TimeTick> ticks;
    ViewMarks marks;
    bool editsLoop = false;  // the loop can be taken hold of

    friend bool operator==(const RulerScene &, const RulerScene &) = default;
};

// `last` is the scene before, whose ticks are kept while the view stands still.
RulerScene rulerScene(const AudioEditorState &state, ViewSize size, const RulerScene &last);
Damage rulerDamage(const RulerScene &before, const RulerScene &now);

}  // namespace kiv
