#include "Editor/AudioEditorModel/AudioEditorModel.h"

// Spectral mode and the equalizer as the model holds them.
namespace kiv {

using SpectralState = AudioEditorSpectral::State;

void AudioEditorModel::readSpectralSettings() {
    state_.spectralBrush = AudioEditorSpectral::brushFromText(settings_.get(Setting::spectralBrush));
    state_.spectralBrushSize = int(settings_.get(Setting::spectralBrushSize));
    state_.spectralIntensity = int(settings_.get(Setting::spectralIntensity));
}

void AudioEditorModel::setSpectralEnabled(bool enabled) {
    const Batch batch(*this);
    if (!set(&AudioEditorState::spectralEnabled, enabled, Change::spectral)) return;
    if (enabled) leaveModesBut(Mode::spectral);
    if (!enabled && state_.spectralStroke) holdSpectral(state_.spectral);  // without the stroke
    if (enabled && !state_.spectral) holdSpectral(nullptr);
}

void AudioEditorModel::setSpectralState(AudioEditorSpectralState next) {
    AudioEditorSpectralState &held = state_;
    if (held == next) return;
    if (held.spectralBrush != next.spectralBrush) settings_.set(Setting::spectralBrush, storedText(next.spectralBrush));
    if (held.spectralBrushSize != next.spectralBrushSize) settings_.set(Setting::spectralBrushSize, next.spectralBrushSize);
    if (held.spectralIntensity != next.spectralIntensity) settings_.set(Setting::spectralIntensity, next.spectralIntensity);
    held = std::move(next);
    tell(Change::spectral);
}

// Brings the state in line with the sound, which is what the given state makes it: without one it is made anew from the sound
// as it now is, where the mode is on. A stroke is part of the sound by now, or belongs to another.
void AudioEditorModel::holdSpectral(std::shared_ptr<const SpectralState> spectral) {
    std::shared_ptr<SpectralState> now;
    if (spectral) now = std::make_shared<SpectralState>(*spectral);
    if (!spectral && state_.spectralEnabled)
        now = std::make_shared<SpectralState>(state_.generation, state_.buffer, state_.generation);
    if (!now && !state_.spectral && !state_.spectralStroke) return;
    if (now) now->generation = state_.generation;
    state_.spectral = std::move(now);
    state_.spectralStroke = nullptr;
    state_.spectralPreview.reset();
    state_.spectralPreviewScheduled = false;
    ++state_.spectralRevision;
    tell(Change::spectral);
}

void AudioEditorModel::setEqEnabled(bool enabled) {
    const Batch batch(*this);
    if (set(&AudioEditorState::eqEnabled, enabled, Change::eq) && onEqChanged) onEqChanged(enabled);
}

}  // namespace kiv
