#include "Editor/AudioEditorCore/AudioEditorStretch.h"

#include <cmath>

namespace kiv {
namespace {

double timeFactor(int timePercent) { return stretchTimePercentRange.clamp(timePercent) / 100.0; }

}  // namespace

StretchSettings clamped(StretchSettings settings) {
    settings.timePercent = stretchTimePercentRange.clamp(settings.timePercent);
    settings.semitones = stretchSemitonesRange.clamp(settings.semitones);
    settings.cents = stretchCentsRange.clamp(settings.cents);
    settings.cycle = stretchCycleRange.clamp(settings.cycle);
    return settings;
}

bool leavesUnchanged(const StretchSettings &settings, std::int64_t frames) {
    const double pitch = AudioEditorOps::stretchPitchRatio(settings.semitones, settings.cents);
    return frames < 2 || (timeFactor(settings.timePercent) == 1 && pitch == 1);
}

std::int64_t stretchedFrames(const StretchSettings &settings, std::int64_t frames) {
    if (leavesUnchanged(settings, frames)) return frames;
    return std::max<std::int64_t>(std::llround(timeFactor(settings.timePercent) * double(frames)), 1);
}

double AudioEditorOps::stretchPitchRatio(int semitones, int cents) {
    return std::exp2((stretchSemitonesRange.clamp(semitones) + stretchCentsRange.clamp(cents) / 100.0) / 12);
}

}  // namespace kiv
