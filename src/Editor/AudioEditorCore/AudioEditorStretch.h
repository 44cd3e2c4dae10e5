#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "Editor/AudioEditorCore/AudioEditorBuffer.h"
#include "Support/Progress.h"

// Changes of length and of pitch, each without the other or both at once. Pure functions like the other operations, but long
// ones: those that take a Progress start it with their own total, count what they have done, and throw Cancelled soon after it
// was cancelled; null does without. They work on all cores, may be called from any thread but the audio thread, and block.
namespace kiv {

// `clean` keeps what is heard whole: overlapping pieces are laid where they continue each other best, and the pitch is moved by
// band-limited resampling. `s950` cuts the sound into cycles of a fixed length, repeats or drops whole ones, and reads each at
// the speed of the new pitch: the sound of early samplers.
enum class StretchMode { clean, s950 };

// A whole number's range, both ends included.
struct WholeRange {
    int lo, hi;
    constexpr int clamp(std::int64_t value) const { return int(std::clamp<std::int64_t>(value, lo, hi)); }
};

// What a stretch is to do. Numbers out of their range count as its nearest end.
struct StretchSettings {
    StretchMode mode = StretchMode::clean;
    int timePercent = 100;  // the new length, of the old one
    int semitones = 0;
    int cents = 0;
    int cycle = 1000;  // frames, for s950 only

    friend bool operator==(const StretchSettings &, const StretchSettings &) = default;
};

inline constexpr WholeRange stretchTimePercentRange{25, 400};
inline constexpr WholeRange stretchSemitonesRange{-12, 12};
inline constexpr WholeRange stretchCentsRange{-100, 100};
inline constexpr WholeRange stretchCycleRange{50, 8000};

// The settings with every number inside its range.
StretchSettings clamped(StretchSettings settings);

// Whether the settings leave a range of so many frames as it is: neither length nor pitch is to change, or there are fewer
// than 2 frames.
bool leavesUnchanged(const StretchSettings &settings, std::int64_t frames);

// The length that a range of so many frames, at least 0, has after the stretch.
std::int64_t stretchedFrames(const StretchSettings &settings, std::int64_t frames);

namespace AudioEditorOps {

// 2^((semitones + cents / 100) / 12), both brought into their ranges first. Above 1 is higher.
double stretchPitchRatio(int semitones, int cents);

// The buffer with a range, which must lie inside it, replaced by its stretched version of stretchedFrames() frames; what is
// around the range is shared with the input. One that leaves the range unchanged gives the buffer itself.
AudioEditorBuffer stretched(const AudioEditorBuffer &buffer, FrameRange range, const StretchSettings &settings,
                            Progress *progress = nullptr);

// The same by name: mode `s950`.
AudioEditorBuffer timeStretched(const AudioEditorBuffer &buffer, FrameRange range, int timePercent, int cycle, int semitones,
                                int cents, Progress *progress = nullptr);
// Mode `clean`.
AudioEditorBuffer cleanStretched(const AudioEditorBuffer &buffer, FrameRange range, int timePercent, int semitones, int cents,
                                 Progress *progress = nullptr);

// A cycle for `s950` that suits a range: a whole number of periods of what it starts with (its first 200 ms), near 1000
// frames, by autocorrelation. 1000 when there is no clear period. Quick: for the main thread.
int autoCycle(const AudioEditorBuffer &buffer, FrameRange range);

// Planar channels of equal length brought to exactly `outFrames` frames with their pitch kept, by overlap-add of pieces of
// 40 ms that are chosen, up to 10 ms about their nominal place, for continuing the one before (Verhelst and Roelands, "An
// overlap-add technique based on waveform similarity", 1993). All channels are cut at the same places. Fewer than 2 frames, or
// fewer than 1 asked for: silence. The first frame stays the first frame.
std::vector<std::vector<float>> wsola(const std::vector<std::vector<float>> &channels, std::int64_t outFrames,
                                      std::int64_t sampleRate, Progress *progress = nullptr);

}  // namespace AudioEditorOps
}  // namespace kiv
