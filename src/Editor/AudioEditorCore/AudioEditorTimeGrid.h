#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kiv::AudioEditorTimeGrid {

// The text of a ruler mark at `seconds` where marks are `step` seconds apart: "0 s", "250 ms", "12.5 ms", "12.5 s", "1:15",
// "1:05.50".
std::string label(double seconds, double step);

// The distance at which labels of marks around `seconds` still read differently: 0.1 ms below one second, 1 ms from there on.
double labelPrecision(double seconds);
// The text of a mark where they stand closer than that: the same with as many decimals as the step takes, "12.34 ms",
// "1.23456 s", "1:05.00002".
std::string fineLabel(double seconds, double step);

// The smallest step in seconds that keeps labels at least `minPixels` apart: 1-2-5 per decade from 1 ns up to 10 s, then 15,
// 30, 60, 120, 300, 600, 900, 1800, 3600, and doublings of that beyond. It may be finer than labels can tell apart.
double secondsStep(double secondsPerPixel, double minPixels);
// The same in samples: 1-2-5 throughout, at least 1.
std::int64_t samplesStep(double framesPerPixel, double minPixels);

// Into how many parts a labelled step is divided by small ticks: 10 if these are at least 7 pixels apart, else 5.
int minorDivisions(double stepPixels);

}  // namespace kiv::AudioEditorTimeGrid
