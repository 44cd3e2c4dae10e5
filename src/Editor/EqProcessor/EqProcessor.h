#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "Editor/AudioEditorCore/AudioEditorBuffer.h"
#include "Editor/EqProcessor/EqSections.h"
#include "Editor/EqProcessor/EqTargets.h"
#include "Support/Progress.h"

namespace kiv {

// Runs the equalizer over interleaved 32-bit float frames, in 64-bit float. New settings are glided to, so that turning a knob
// is heard at once and makes no noise of its own: frequencies and qualities move in logarithms, gains in decibels, each with a
// time constant of 5 ms in steps of 16 frames.
//
// One thread at a time. Nothing allocates but the constructor and copying.
class EqProcessor {
public:
    // A rate of 1000 Hz or less counts as 44100.
    EqProcessor(double sampleRate, std::int64_t channels);

    std::int64_t channels() const { return channels_; }
    double sampleRate() const { return sampleRate_; }

    // What to glide to from now on.
    void setTargets(const EqTargets &targets);
    // Takes every target at once and forgets what was heard.
    void reset();
    // Whether it can change the sound now or is still gliding. If not, process() leaves every bit as it is.
    bool isActive() const;
    // Filters whole interleaved frames in place. A sample that is no number, or infinite, goes in as 0.
    void process(std::span<float> interleaved);

    // A buffer with the equalizer written into a range, which is clamped to it; the rest shares the samples. The filters start
    // on the half second before the range, so that they are settled where it begins. Unchanged when the range is empty or the
    // settings do nothing. Throws Cancelled.
    static AudioEditorBuffer applied(FrameRange range, const EqSettings &settings, const AudioEditorBuffer &buffer,
                                     Progress *progress = nullptr);

private:
    // A value that moves evenly from one parameter step to the next.
    struct Ramp {
        double from = 0, to = 0;
        bool isAt(double value) const { return from == value && to == value; }
    };
    // How much of what a filter does is heard. One that would do nothing any more still holds what it has heard, and is faded
    // out rather than dropped.
    struct Share {
        Ramp mix;
        double targetMix = 0;
        bool running = false;
    };
    struct Band : Share {
        double freqLog = 0, qLog = 0, gainDb = 0;
        double targetFreqLog = 0, targetQLog = 0, targetGainDb = 0;
    };
    struct Cut : Share {
        double freqLog = 0, targetFreqLog = 0;
    };
    struct Block;

    void advance();
    bool advanceLowCut();
    bool advanceBand(std::size_t index);
    bool advanceHighCut();
    bool advanceOutput();
    bool advanceShare(Share &share) const;
    bool glide(double &value, double target, double snap) const;
    static void take(Share &share, double mix);
    void start(Share &share, EqSections::Index first, std::size_t number, double mix);
    void rebuildLowCut();
    void rebuildBand(std::size_t index);
    void rebuildHighCut();
    bool changesNothing() const;
    void processBlock(std::span<float> interleaved);
    void filter(Block &block);
    void amplify(Block &block) const;

    std::int64_t channels_;
    double sampleRate_;
    double smoothK_;
    EqSections sections_;
    std::array<Band, eqBandCount> bands_;
    Cut lowCut_, highCut_;
    double outGainDb_ = 0, targetOutGainDb_ = 0;
    Ramp outGain_{1, 1};
    int counter_ = 0;       // frames left until the next step of the parameters
    bool settled_ = false;  // steps change nothing until there are new targets
};

}  // namespace kiv
