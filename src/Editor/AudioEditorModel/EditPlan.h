#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "Editor/AudioEditorCore/AudioEditorBuffer.h"
#include "Editor/AudioEditorCore/AudioEditorLengthChange.h"
#include "Editor/AudioEditorCore/AudioEditorPeaks.h"
#include "Editor/AudioEditorSpectral/State.h"
#include "Support/Progress.h"

namespace kiv {

// What an edit has made of a sound.
struct EditOutcome {
    struct Place {
        std::int64_t cursor = 0;
        std::optional<FrameRange> selection;
    };

    AudioEditorBuffer buffer;
    AudioEditorLengthChange change = AudioEditorLengthChange::none();
    std::optional<Place> place = {};             // of cursor and selection; none: they stay where they then are
    std::optional<AudioEditorPeaks> peaks = {};  // of the buffer; none: they are still to be measured
    // With a mask that made this sound of its original; none: something else made it.
    std::shared_ptr<const AudioEditorSpectral::State> spectral = {};
    bool closesEq = false;  // the equalizer is part of the sound now
};

// An edit as a value, to be carried out anywhere: it works on its own copy of the sound and knows nothing of the model.
struct EditPlan {
    // Up to this cost an edit is done on the spot: it is over within a few frames of the screen.
    static constexpr double quickCost = 4e6;

    // What it takes, counted in samples multiplied by a gain.
    double cost = 0;
    // The stages of work, as shares of the whole.
    std::vector<double> stages = {1};
    // Any thread but the audio thread; blocks. Nothing when the edit would change nothing. Throws Cancelled.
    std::function<std::optional<EditOutcome>(Progress &)> carryOut;

    bool isLong() const { return cost > quickCost; }
};

}  // namespace kiv
