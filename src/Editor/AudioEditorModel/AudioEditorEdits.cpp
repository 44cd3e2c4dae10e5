#include "Editor/AudioEditorModel/AudioEditorEdits.h"

#include <cmath>
#include <functional>

#include "Editor/AudioEditorCore/AudioEditorOps.h"

namespace kiv::AudioEditorEdits {
namespace {

using Operation = std::function<AudioEditorBuffer(const AudioEditorBuffer &, Progress *)>;
using RangeOperation = AudioEditorBuffer (*)(const AudioEditorBuffer &, FrameRange, Progress *);

double samplesIn(const AudioEditorBuffer &buffer, FrameRange range) { return double(range.count() * buffer.channels()); }

// An edit that keeps the length, and with it the cursor, the selection and all positions.
void applyInPlace(AudioEditorModel &model, double cost, Operation operation) {
    const auto carryOut = [buffer = model.state().buffer, operation = std::move(operation)](Progress &progress) {
        return std::optional(EditOutcome{.buffer = operation(buffer, &progress)});
    };
    model.apply({cost, {1}, carryOut});
}

void onActiveRange(AudioEditorModel &model, RangeOperation operation) {
    const auto range = model.activeRange();
    if (!range) return;
    applyInPlace(
        model, samplesIn(model.state().buffer, *range),
        [operation, range = *range](const auto &buffer, Progress *progress) { return operation(buffer, range, progress); });
}

// What else is done to a sample, as against multiplying it by a gain: converting its rate; measuring the peaks of silence,
// which takes no writing.
constexpr double conversionCost = 25, silenceCost = 0.1;

double pastingCost(const AudioEditorBuffer &clip, const AudioEditorBuffer &into) {
    const double samples = samplesIn(clip, {0, clip.frames()});
    if (clip.sampleRate() != into.sampleRate()) return conversionCost * samples;
    return clip.channels() == into.channels() ? 0 : samples;
}

std::vector<double> pastingStages(const AudioEditorBuffer &clip, const AudioEditorBuffer &into) {
    const bool hasBoth = clip.sampleRate() != into.sampleRate() && clip.channels() != into.channels();
    return hasBoth ? std::vector{0.95, 0.05} : std::vector{1.0};
}

EditOutcome pasted(const AudioEditorBuffer &buffer, FrameRange over, const AudioEditorBuffer &clipboard, Progress &progress) {
    const auto converted = AudioEditorOps::withSampleRate(clipboard, buffer.sampleRate(), &progress);
    const auto clip = AudioEditorOps::withChannels(converted, buffer.channels(), &progress);
    const FrameRange range{over.lo, over.lo + clip.frames()};
    const auto rest = over.isEmpty() ? buffer : AudioEditorOps::removing(buffer, over);
    return {.buffer = AudioEditorOps::inserting(rest, clip, over.lo),
            .change = over.isEmpty() ? AudioEditorLengthChange::inserted(over.lo, clip.frames())
                                     : AudioEditorLengthChange::replaced(over, clip.frames()),
            .place = EditOutcome::Place{range.hi, range}};
}

// A stretch by cycles reads and writes each sample with a few more steps than a gain; a clean one searches for each frame made.
double stretchingCost(const AudioEditorBuffer &buffer, FrameRange range, const StretchSettings &settings) {
    constexpr double cycleCost = 4, searchCost = 20;
    const double made = double(stretchedFrames(settings, range.count()));
    if (settings.mode == StretchMode::s950) return cycleCost * made * double(buffer.channels());
    const bool shifts = AudioEditorOps::stretchPitchRatio(settings.semitones, settings.cents) != 1;
    return searchCost * made + (shifts ? conversionCost * samplesIn(buffer, range) : 0);
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
    const FrameRange over = state.selection.value_or(FrameRange{state.cursorFrame, state.cursorFrame});
    model.apply({pastingCost(*clipboard, state.buffer), pastingStages(*clipboard, state.buffer),
                 [over, buffer = state.buffer, clip = *clipboard](Progress &progress) {
                     return std::optional(pasted(buffer, over, clip, progress));
                 }});
}

void trim(AudioEditorModel &model) {
    const auto range = model.state().selection;
    if (!range || range->count() == model.state().buffer.frames()) return;
    model.commit(AudioEditorOps::slice(model.state().buffer, *range), 0, std::nullopt, AudioEditorLengthChange::kept(*range));
}

void fadeIn(AudioEditorModel &model) { onActiveRange(model, AudioEditorOps::fadeIn); }

void fadeOut(AudioEditorModel &model) { onActiveRange(model, AudioEditorOps::fadeOut); }

void silence(AudioEditorModel &model) {
    const auto range = model.activeRange();
    if (!range) return;
    applyInPlace(model, silenceCost * samplesIn(model.state().buffer, *range),
                 [=](const auto &buffer, Progress *) { return AudioEditorOps::silenced(buffer, *range); });
}

void reverse(AudioEditorModel &model) {
    const auto range = model.activeRange();
    if (range && range->count() >= 2) onActiveRange(model, AudioEditorOps::reversed);
}

void gain(AudioEditorModel &model, double db) {
    const auto range = model.activeRange();
    const double factor = AudioEditorOps::gainFactor(db);
    if (!range || factor == 1 || !std::isfinite(factor)) return;
    applyInPlace(model, samplesIn(model.state().buffer, *range), [=](const auto &buffer, Progress *progress) {
        return AudioEditorOps::scaled(buffer, *range, factor, progress);
    });
}

void normalize(AudioEditorModel &model, double targetDb) {
    const auto range = model.activeRange();
    if (!range) return;
    const auto carryOut = [=, buffer = model.state().buffer](Progress &progress) -> std::optional<EditOutcome> {
        const double peak = AudioEditorOps::peak(buffer, *range, &progress);
        const double factor = AudioEditorOps::gainFactor(targetDb) / peak;
        // No factor brings silence or an infinite sample to a level.
        if (!(peak > 0) || factor == 1 || !std::isfinite(peak) || !std::isfinite(factor)) return std::nullopt;
        return EditOutcome{.buffer = AudioEditorOps::scaled(buffer, *range, factor, &progress)};
    };
    model.apply({1.2 * samplesIn(model.state().buffer, *range), {0.2, 0.8}, carryOut});
}

void mono(AudioEditorModel &model, AudioEditorMonoSource source) {
    const AudioEditorBuffer &sound = model.state().buffer;
    if (sound.channels() < 2) return;
    applyInPlace(model, samplesIn(sound, {0, sound.frames()}),
                 [=](const auto &buffer, Progress *progress) { return AudioEditorOps::mono(buffer, source, progress); });
}

void stereo(AudioEditorModel &model) {
    const AudioEditorBuffer &sound = model.state().buffer;
    if (sound.channels() == 2) return;
    applyInPlace(model, 2 * double(sound.frames()),
                 [](const auto &buffer, Progress *progress) { return AudioEditorOps::withChannels(buffer, 2, progress); });
}

void timeStretch(AudioEditorModel &model, const StretchSettings &settings) {
    const auto range = model.activeRange();
    if (!range || leavesUnchanged(settings, range->count())) return;
    const AudioEditorBuffer &sound = model.state().buffer;
    const FrameRange after{range->lo, range->lo + stretchedFrames(settings, range->count())};
    const auto selection = model.state().selection ? std::optional(after) : std::nullopt;
    model.apply({stretchingCost(sound, *range, settings), {1}, [=, buffer = sound, range = *range](Progress &progress) {
                     return std::optional(EditOutcome{.buffer = AudioEditorOps::stretched(buffer, range, settings, &progress),
                                                      .change = AudioEditorLengthChange::replaced(range, after.count()),
                                                      .place = EditOutcome::Place{after.lo, selection}});
                 }});
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
