#pragma once

#include <cstdint>
#include <string>

namespace kiv {

enum class AudioEditorTimeUnit { seconds, samples };

// A position or length as text. In samples the rounded count; in seconds "1.500 s" below 60 s (judged before rounding, so
// 59.9996 s is "60.000 s") and "1:05.250" from there on, minutes not wrapped into hours. A rate below 1 counts as 1.
std::string format(AudioEditorTimeUnit unit, double frames, std::int64_t sampleRate);

}  // namespace kiv
