#include "Editor/AudioEditorModel/AudioEditorModel.h"
#include "Editor/AudioEditorModel/SliceSettings.h"

// Edit Loop and the slicer as the model holds them.
namespace kiv {

void AudioEditorModel::readModeSettings() {
    state_.loopZeroCrossing = settings_.get(Setting::loopZeroCrossing);
    state_.loopCrossfadeEqualPower = settings_.get(Setting::loopCrossfadeEqualPower);
    state_.sliceMode = *AudioEditorSlicer::modeFromText(settings_.get(Setting::sliceMode));
    for (const SliceSettingRow &row : sliceSettings())
        if (!row.stored.key.empty()) state_.*row.value = row.limited(settings_.get(row.stored));
}

void AudioEditorModel::leaveModesBut(Mode mode) {
    if (mode != Mode::editLoop) setEditLoopEnabled(false);
    if (mode != Mode::slicer) setSlicerEnabled(false);
    if (mode != Mode::spectral) setSpectralEnabled(false);
}

void AudioEditorModel::setEditLoopEnabled(bool enabled) {
    const Batch batch(*this);
    if (!set(&AudioEditorState::editLoopEnabled, enabled, Change::editLoop)) return;
    if (enabled) leaveModesBut(Mode::editLoop);
    if (onEditLoopChanged) onEditLoopChanged(enabled);
}

void AudioEditorModel::setSlicerEnabled(bool enabled) {
    const Batch batch(*this);
    if (set(&AudioEditorState::slicerEnabled, enabled, Change::slicer) && enabled) leaveModesBut(Mode::slicer);
}

void AudioEditorModel::setLoopState(AudioEditorLoopState next) {
    AudioEditorLoopState &held = state_;
    if (held == next) return;
    if (held.loopZeroCrossing != next.loopZeroCrossing) settings_.set(Setting::loopZeroCrossing, next.loopZeroCrossing);
    if (held.loopCrossfadeEqualPower != next.loopCrossfadeEqualPower)
        settings_.set(Setting::loopCrossfadeEqualPower, next.loopCrossfadeEqualPower);
    held = std::move(next);
    tell(Change::editLoop);
}

void AudioEditorModel::setSlicerState(AudioEditorSlicerState next) {
    const Batch batch(*this);
    setSlices(std::move(next.slices));
    AudioEditorSlicerState &held = state_;
    next.slices = held.slices;
    if (held == next) return;
    if (held.sliceMode != next.sliceMode) settings_.set(Setting::sliceMode, storedText(next.sliceMode));
    for (const SliceSettingRow &row : sliceSettings())
        if (!row.stored.key.empty() && held.*row.value != next.*row.value) settings_.set(row.stored, next.*row.value);
    held = std::move(next);
    tell(Change::slicer);
}

void AudioEditorModel::setSlices(std::vector<FrameRange> slices) {
    set(&AudioEditorState::slices, std::move(slices), Change::slices);
}

void AudioEditorModel::analyse(AnalysisPlan plan) {
    if (onAnalyse) return onAnalyse(std::move(plan));
    Progress unwatched;
    plan.work(unwatched);
    plan.done(nullptr);
}

}  // namespace kiv
