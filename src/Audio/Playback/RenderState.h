#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <span>

#include "Audio/Playback/AnalyzerTap.h"
#include "Audio/Playback/SpinLock.h"
#include "Editor/AudioEditorCore/AudioEditorBuffer.h"
#include "Editor/EqProcessor/EqProcessor.h"

namespace kiv {

// What is played, and how. The samples are shared with whoever gave them, never copied; an old State is let go of on the main
// thread only, because its samples may be freed with it.
struct State {
    AudioEditorBuffer samples;
    std::int64_t lower = 0, upper = 0;  // the range, inside the samples; upper exclusive
    std::int64_t position = 0;          // the next frame to play; may lie before the range
    bool loop = false;
    bool playing = false;
    std::int64_t crossfade = 0;  // frames of the loop joint; 0: none
    bool equalPower = false;
    std::int64_t fadeIn = 0, fadeOut = 0;  // frames at the range's ends; 0: none
    std::optional<EqProcessor> eq = {};    // for the output's channels; none: the sound as it is
    bool eqTap = false;                    // feed the analyzer
    float peakCarry = 0;                   // a peak not yet delivered, because peakLock was taken
};

// What the main thread and the audio thread share.
struct RenderShared {
    SpinLock stateLock;
    State state;
    std::atomic<std::int64_t> position{0};  // the render position after the last call
    std::atomic<int> finished{0};           // 1: a one-shot has reached its end
    SpinLock eqLock;
    std::optional<EqTargets> eqPending;  // what the equalizer is to glide to from the next call on
    AnalyzerTap analyzer;
    SpinLock peakLock;
    float peak = 0;  // the largest absolute output sample since the main thread last took it
};

// Renders the next out.size() / channels interleaved frames. On the audio thread: takes locks only if they are free, allocates
// nothing and frees nothing. Where the state is being changed at that moment the whole of `out` is silence.
//
// An output channel plays the source channel of its number, or the last there is. Samples that play at a gain of 1, and through
// no equalizer that does something, come out as they are, bit for bit, also beyond full scale; what is no number or infinite
// comes out as 0, since devices and the mixers before them may answer such a sample with noise that outlasts it.
void render(RenderShared &shared, std::span<float> out, int channels);

}  // namespace kiv
