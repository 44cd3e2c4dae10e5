#include "Editor/AudioEditorCore/AudioEditorTimeUnit.h"

#include <algorithm>
#include <cmath>

#include "Support/DecimalText.h"

namespace kiv {
namespace {

std::string minutesText(double seconds) {
    const std::int64_t ms = std::llround(seconds * 1000);
    return std::to_string(ms / 60000) + ":" + decimalText(double(ms / 1000 % 60), 0, 2) + "." +
           decimalText(double(ms % 1000), 0, 3);
}

}  // namespace

std::string format(AudioEditorTimeUnit unit, double frames, std::int64_t sampleRate) {
    if (unit == AudioEditorTimeUnit::samples) return decimalText(frames, 0);
    const double seconds = frames / double(std::max<std::int64_t>(sampleRate, 1));
    return seconds < 60 ? decimalText(seconds, 3) + " s" : minutesText(seconds);
}

}  // namespace kiv
