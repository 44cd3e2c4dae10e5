#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "Editor/AudioEditorCore/AudioEditorBuffer.h"
#include "Editor/AudioEditorCore/AudioEditorPeaks.h"
#include "Support/Progress.h"

// Cuts a sound into slices: its hits, the parts above a level, or equal parts. Pure functions; any thread but the audio thread.
// Slices come in ascending order, none is empty and none reaches beyond the sound.
namespace kiv::AudioEditorSlicer {

enum class Mode { transients, stripSilence, grid };

inline constexpr std::array allModes{Mode::transients, Mode::stripSilence, Mode::grid};

// "transients", "stripSilence", "grid".
std::string_view storedText(Mode mode);
std::optional<Mode> modeFromText(std::string_view text);

// How loud each 128 frames of a sound are, by its loudest channel; the last hop holds what is left.
struct Energy {
    static constexpr std::int64_t hop = 128;

    std::vector<float> hops;   // mean square
    std::vector<float> edges;  // mean square of the difference to the sample before, which makes much of an attack's highs

    Energy() = default;
    // One parallel pass over the sound. A progress is started with its own total and may cancel it by Cancelled.
    explicit Energy(const AudioEditorBuffer &buffer, Progress *progress = nullptr);
};

// What the means of one of those arrays say of every hop: over what follows it, and over what came before.
struct EnergyWindows {
    std::int64_t n = 0, attack = 1, background = 1;  // hops
    std::vector<double> sums;                        // prefix sums, n + 1
    std::vector<double> level;                       // mean of hop i and those behind it, `attack` in all
    double floor = 0;                                // the level that a tenth of the hops stay under
    double loudest = 0;

    EnergyWindows(const std::vector<float> &values, std::int64_t attack, std::int64_t background);
    // Mean of the `background` values before hop i; before the sound there is the floor.
    double before(std::int64_t i) const;
};

// The parts where a sample of any channel reaches the threshold. Shorter silences than the minimum do not part them, parts of
// up to 2 ms are dropped, and 5 ms before and 30 ms behind each are kept. The peaks must be exact.
std::vector<FrameRange> detect(const AudioEditorBuffer &buffer, const AudioEditorPeaks &peaks, int thresholdDb,
                               int minSilenceMs);

struct TransientSettings {
    int sensitivity = 50;     // 0 … 100: a rise of 30 … 3 dB is a hit
    int preRollMs = 5;        // kept before each attack
    int tailDb = -50;         // a slice ends this far under its hit
    int lengthPercent = 100;  // of each slice's detected length
};

// From each hit to the end of its tail. `energy` must be that of the buffer: nothing if its size is another's.
std::vector<FrameRange> transients(const AudioEditorBuffer &buffer, const Energy &energy, const TransientSettings &settings);

// Equal parts, each start moved by `offset` frames and each length cut to a share, but to no less than one frame.
std::vector<FrameRange> grid(std::int64_t frameCount, int parts, std::int64_t offset, int lengthPercent);

}  // namespace kiv::AudioEditorSlicer
