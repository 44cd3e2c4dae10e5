#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kiv::AudioEditorTimeGrid {

// The text of a ruler mark at `seconds` where marks are `step` seconds apart: "0 s", "250 ms", "12.5 ms", "12.5 s", "1:15",
// "1:05.50".
std::string label(double seconds, double step);

inline constexpr double finestStepBelowOneSecond = 0.0001;
inline constexpr double finestStep = 0.001;
// The smallest step in seconds that keeps labels at least `minPixels` apart: 1-2-5 per decade up to 10, then 15, 30, 60, 120,
// 300, 600, 900, 1800, 3600, and doublings of that beyond. It is never so fine that two neighbouring marks would read the same:
// labels tell 0.1 ms apart below one second and 1 ms from there on. `latestSeconds` is the latest time in view.
double secondsStep(double secondsPerPixel, double minPixels, double latestSeconds = 0);
// The same in samples: 1-2-5 throughout, at least 1.
std::int64_t samplesStep(double framesPerPixel, double minPixels);

// Into how many parts a labelled step is divided by small ticks: 10 if these are at least 7 pixels apart, else 5.
int minorDivisions(double stepPixels);

}  // namespace kiv::AudioEditorTimeGrid
