#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "Editor/AudioEditorSpectral/Analysis.h"
#include "Editor/AudioEditorSpectral/Stroke.h"

namespace kiv {

// What Spectral mode works with. The brush's settings are stored. The mask, once it is part of the sound, never changes; a
// stroke makes a new one.
struct AudioEditorSpectralState {
    bool spectralEnabled = false;
    // The sound that is painted on, and the mask that makes the model's sound of it. Kept when the mode is left, until the
    // sound is changed by something else.
    std::shared_ptr<const AudioEditorSpectral::State> spectral;
    std::int64_t spectralRevision = 0;                                      // grows whenever the gains to be shown change
    std::shared_ptr<const AudioEditorSpectral::Analysis> spectralAnalysis;  // of the original whose id it bears
    bool spectralAnalyzing = false;                                         // one is being made
    std::shared_ptr<AudioEditorSpectral::Stroke> spectralStroke;            // a drag, and until it has become part of the sound
    std::optional<AudioEditorBuffer> spectralPreview;              // the sound with the stroke, as far as it was rendered
    double spectralPreviewTime = 0;                                // of the last one; seconds of the model's clock
    bool spectralPreviewScheduled = false;                         // there is more of the stroke than the preview has
    std::optional<AudioEditorSpectral::Point> spectralBrushPoint;  // under the pointer
    AudioEditorSpectral::Brush spectralBrush = AudioEditorSpectral::Brush::attenuate;
    int spectralBrushSize = 40;  // diameter, points on the screen
    int spectralIntensity = 50;  // percent

    static constexpr double spectralPreviewInterval = 0.04;  // seconds from one preview to the next

    // The gains to be shown: the stroke's while there is one. None outside the mode's reach.
    const AudioEditorSpectral::Mask *spectralMask() const {
        if (spectralStroke) return &spectralStroke->mask();
        return spectral ? &spectral->mask : nullptr;
    }
    friend bool operator==(const AudioEditorSpectralState &, const AudioEditorSpectralState &) = default;
};

}  // namespace kiv
