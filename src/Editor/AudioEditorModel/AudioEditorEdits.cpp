#include "Editor/AudioEditorModel/AudioEditorEdits.h"

#include <cmath>

#include "Editor/AudioEditorCore/AudioEditorOps.h"

namespace kiv::AudioEditorEdits {
namespace {

// An edit that keeps the length, and with it the cursor, the selection and all positions.
void commitInPlace(AudioEditorModel &model, AudioEditorBuffer buffer) {
    const AudioEditorState &state = model.state();
    model.commit(std::move(buffer), state.cursorFrame, state.selection, AudioEditorLengthChange::none());
}

using RangeOperation = AudioEditorBuffer (*)(const AudioEditorBuffer &, FrameRange);

void onActiveRange(AudioEditorModel &model, RangeOperation operation) {
    if (const auto range = model.activeRange()) commitInPlace(model, operation(model.state().buffer, *range));
}

void scale(AudioEditorModel &model, double factor) {
    const auto range = model.activeRange();
    if (range && factor != 1 && std::isfinite(factor))
        commitInPlace(model, AudioEditorOps::scaled(model.state().buffer, *range, factor));
}

// Whether the typed text, if there is one, could be read.
bool takeTypedText(AudioEditorModel &model, Dialog dialog) {
    if (dialog == Dialog::mono || model.state().dialogText.empty()) return true;
    const std::optional<double> db = parseDecibels(model.state().dialogText);
    if (!db) return false;
    dialog == Dialog::gain ? model.setGainDb(*db) : model.setNormalizeDb(*db);
    return true;
}

void performDialog(AudioEditorModel &model, Dialog dialog) {
    switch (dialog) {
        case Dialog::gain:
            return gain(model, model.state().gainDb);
        case Dialog::normalize:
            return normalize(model, model.state().normalizeDb);
        case Dialog::mono:
            return mono(model, model.state().monoSource);
    }
}

}  // namespace

void copy(AudioEditorModel &model) {
    if (!model.state().selection) return;
    Clipboard &clipboard = model.clipboard();
    clipboard.buffer = AudioEditorOps::slice(model.state().buffer, *model.state().selection);
    clipboard.changed.notify(clipboard);
}

void cut(AudioEditorModel &model) {
    if (!model.canCut()) return;
    copy(model);
    deleteSelection(model);
}

void deleteSelection(AudioEditorModel &model) {
    if (!model.canCut()) return;
    const FrameRange range = *model.state().selection;
    model.commit(AudioEditorOps::removing(model.state().buffer, range), range.lo, std::nullopt,
                 AudioEditorLengthChange::removed(range));
}

void paste(AudioEditorModel &model) {
    const AudioEditorState &state = model.state();
    const auto &clipboard = model.clipboard().buffer;
    if (!clipboard || clipboard->isEmpty()) return;
    const AudioEditorBuffer clip = AudioEditorOps::withSampleRate(*clipboard, state.buffer.sampleRate());
    const FrameRange over = state.selection.value_or(FrameRange{state.cursorFrame, state.cursorFrame});
    const FrameRange pasted{over.lo, over.lo + clip.frames()};
    const auto rest = over.isEmpty() ? state.buffer : AudioEditorOps::removing(state.buffer, over);
    model.commit(AudioEditorOps::inserting(rest, clip, over.lo), pasted.hi, pasted,
                 over.isEmpty() ? AudioEditorLengthChange::inserted(over.lo, clip.frames())
                                : AudioEditorLengthChange::replaced(over, clip.frames()));
}

void trim(AudioEditorModel &model) {
    const auto range = model.state().selection;
    if (!range || range->count() == model.state().buffer.frames()) return;
    model.commit(AudioEditorOps::slice(model.state().buffer, *range), 0, std::nullopt, AudioEditorLengthChange::kept(*range));
}

void fadeIn(AudioEditorModel &model) { onActiveRange(model, AudioEditorOps::fadeIn); }

void fadeOut(AudioEditorModel &model) { onActiveRange(model, AudioEditorOps::fadeOut); }

void silence(AudioEditorModel &model) { onActiveRange(model, AudioEditorOps::silenced); }

void reverse(AudioEditorModel &model) {
    const auto range = model.activeRange();
    if (range && range->count() >= 2) onActiveRange(model, AudioEditorOps::reversed);
}

void gain(AudioEditorModel &model, double db) { scale(model, AudioEditorOps::gainFactor(db)); }

void normalize(AudioEditorModel &model, double targetDb) {
    const auto range = model.activeRange();
    const double peak = range ? AudioEditorOps::peak(model.state().buffer, *range) : 0;
    // No factor brings an infinite sample to a level.
    if (peak > 0 && std::isfinite(peak)) scale(model, AudioEditorOps::gainFactor(targetDb) / peak);
}

void mono(AudioEditorModel &model, AudioEditorMonoSource source) {
    const AudioEditorBuffer &buffer = model.state().buffer;
    if (buffer.channels() >= 2) commitInPlace(model, AudioEditorOps::mono(buffer, source));
}

void stereo(AudioEditorModel &model) {
    const AudioEditorBuffer &buffer = model.state().buffer;
    if (buffer.channels() != 2) commitInPlace(model, AudioEditorOps::withChannels(buffer, 2));
}

bool confirmDialog(AudioEditorModel &model) {
    const std::optional<Dialog> dialog = model.state().dialog;
    if (!dialog) return false;
    const AudioEditorModel::Batch batch(model);
    if (!takeTypedText(model, *dialog)) return false;
    model.closeDialog();
    performDialog(model, *dialog);
    return true;
}

}  // namespace kiv::AudioEditorEdits
