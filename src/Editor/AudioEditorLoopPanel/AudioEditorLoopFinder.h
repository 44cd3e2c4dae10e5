#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "Editor/AudioEditorCore/AudioEditorBuffer.h"
#include "Support/Progress.h"

// Looks for sustain loops: pairs of frames such that playing up to the end and going on from the start is heard least. Pure
// functions; any thread but the audio thread, and the search uses all cores.
namespace kiv::AudioEditorLoopFinder {

struct Proposal {
    FrameRange loop;   // playback jumps from hi back to lo
    double match = 0;  // 0 … 1: how much alike the two sides of the seam are
    friend bool operator==(const Proposal &, const Proposal &) = default;
};

// Whether loop points must lie where the sum of the channels comes up to zero or above it.
enum class LoopPoints { anywhere, atRisingZeroCrossings };

// At most 8 loops, the best first; no two have both their starts and their ends within 20 ms. Nothing where the sound is too
// short or too quiet. Searches at most 60 s from where the sound has reached its full level. Throws Cancelled.
std::vector<Proposal> analyze(const AudioEditorBuffer &buffer, LoopPoints points, Progress *progress = nullptr);

// How unlike the sound around `start` is to that around each end in `ends`, from 0 (the same) over 1 (unrelated) to 2 (the
// opposite). `samples` are interleaved frames. What is compared are 2w frames about each point under a triangular weight;
// frames outside the sound count as silence, and around the start not at all. Nothing when there are no channels, ends or w,
// when the start lies behind the sound, or when the sound around it is not above −60 dB.
std::optional<std::vector<double>> mismatch(std::span<const float> samples, std::int64_t channels, std::int64_t start,
                                            FrameRange ends, std::int64_t w);

// The count-th frame from `from` in a direction (its sign counts) where the sum of the channels changes sign, rising or
// falling; the last there is, if there are fewer; nothing if there is none. A count below 1 is one.
std::optional<std::int64_t> zeroCrossing(const AudioEditorBuffer &buffer, std::int64_t from, int direction, int count);

}  // namespace kiv::AudioEditorLoopFinder
