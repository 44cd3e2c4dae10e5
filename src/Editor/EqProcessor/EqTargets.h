#pragma once

#include "Editor/EqCore/EqSettings.h"

namespace kiv {

// What the processor is to do, as handed to the audio thread: plain, of fixed size.
struct EqTargets {
    bool on = false;  // the equalizer is heard
    double gainDb = 0;
    EqCut lowCut{false, EqSettings::defaultLowCutHz};
    EqCut highCut{false, EqSettings::defaultHighCutHz};
    EqBands bands = EqSettings::defaultBands;

    EqTargets() = default;
    EqTargets(const EqSettings &settings, bool isOn)
        : on(isOn), gainDb(settings.gainDb), lowCut(settings.lowCut), highCut(settings.highCut), bands(settings.bands) {}
    friend bool operator==(const EqTargets &, const EqTargets &) = default;
};

}  // namespace kiv
