#pragma once

#include <cstdint>
#include <vector>

#include "Editor/AudioEditorCore/AudioEditorBuffer.h"
#include "Support/Progress.h"

// Changes of length with the pitch kept, over interleaved sound: what AudioEditorOps::wsola is made of.
namespace kiv {

// The pieces ("grains") of one change of length: where each comes to lie in the result and where it is looked for in the sound.
// Frames and rate at least 1.
struct WsolaShape {
    std::int64_t inFrames, outFrames;
    std::int64_t window;     // a grain's length: 40 ms, or the sound's
    std::int64_t hop;        // from a grain to the next in the result: half a window
    std::int64_t tolerance;  // how far from its nominal start one is looked for: 10 ms
    std::int64_t lastStart;
    double step;  // from a nominal start to the next in the sound

    WsolaShape(std::int64_t inFrames, std::int64_t outFrames, std::int64_t sampleRate);

    std::int64_t grains() const { return (outFrames + hop - 1) / hop; }
    std::int64_t nominalStart(std::int64_t grain) const;
};

// Where each grain starts in the sound. Counts a hop's frames a grain in `progress`, if there is one.
std::vector<std::int64_t> similarStarts(const AudioEditorBuffer &sound, const WsolaShape &shape, Progress *progress);

// The grains laid over each other. Counts the frames made in `progress`, if there is one.
AudioEditorBuffer overlapped(const AudioEditorBuffer &sound, const WsolaShape &shape, const std::vector<std::int64_t> &starts,
                             Progress *progress);

// The sound brought to a length. Counts each frame made twice.
AudioEditorBuffer wsola(const AudioEditorBuffer &sound, std::int64_t outFrames, Progress *progress);

}  // namespace kiv
