#include "Editor/Surfaces/InfoFields.h"

#include <algorithm>
#include <cmath>
#include <tuple>

#include "Editor/Surfaces/TimeEntry.h"

namespace kiv {

namespace {

constexpr int step = 10, smallStep = 1;  // milliseconds or samples

// How many frames one of the unit that facts are in has.
double framesPerUnit(const AudioEditorState &state) {
    const double rate = double(std::max<std::int64_t>(state.buffer.sampleRate(), 1));
    return state.timeUnit == AudioEditorTimeUnit::seconds ? rate : 1;
}

double unitsPerStep(const AudioEditorState &state, int length) {
    return state.timeUnit == AudioEditorTimeUnit::seconds ? length / 1000.0 : length;
}

// Least and most frames that stepping leads to.
FrameRange reach(const AudioEditorState &state, InfoField field) {
    const std::int64_t frames = state.buffer.frames();
    if (!state.selection || field == InfoField::cursor) return {0, frames};
    const FrameRange selection = *state.selection;
    if (field == InfoField::selectionStart) return {0, selection.hi - 1};
    if (field == InfoField::selectionEnd) return {selection.lo + 1, frames};
    return {1, frames - selection.lo};
}

bool isAtEnd(InfoField field) { return field == InfoField::selectionEnd || field == InfoField::selectionLength; }

}  // namespace

std::int64_t infoFieldValue(const AudioEditorState &state, InfoField field) {
    if (!state.selection || field == InfoField::cursor) return state.cursorFrame;
    const FrameRange selection = *state.selection;
    if (field == InfoField::selectionStart) return selection.lo;
    return field == InfoField::selectionEnd ? selection.hi : selection.count();
}

void setInfoField(AudioEditorModel &model, InfoField field, std::int64_t frames) {
    const AudioEditorModel::Batch batch(model);
    const std::optional<FrameRange> selection = model.state().selection;
    if (field == InfoField::cursor || !selection) {
        model.placeCursor(frames);
        return model.revealFrame(double(model.state().cursorFrame));
    }
    const std::int64_t lo = field == InfoField::selectionStart ? frames : selection->lo;
    const std::int64_t hi = field == InfoField::selectionEnd      ? frames
                            : field == InfoField::selectionLength ? selection->lo + frames
                                                                  : selection->hi;
    // An edge moved past the other one turns the selection round instead of losing it.
    model.select({std::min(lo, hi), std::max(lo, hi)});
    const FrameRange now = model.state().selection.value_or(FrameRange{lo, lo});
    model.revealFrame(double(isAtEnd(field) ? now.hi : now.lo));
}

bool typeInfoField(AudioEditorModel &model, InfoField field, const std::string &typed) {
    const AudioEditorState &state = model.state();
    const auto frames = parseTimeEntry(typed, state.timeUnit, state.buffer.sampleRate(), state.buffer.frames());
    if (frames) setInfoField(model, field, *frames);
    return frames.has_value();
}

ValueFacts infoFieldFacts(const AudioEditorState &state, InfoField field) {
    const double unit = framesPerUnit(state);
    const FrameRange range = reach(state, field);
    return {double(infoFieldValue(state, field)) / unit, double(range.lo) / unit, double(range.hi) / unit,
            unitsPerStep(state, step)};
}

void setInfoFieldInUnit(AudioEditorModel &model, InfoField field, double value) {
    const FrameRange range = reach(model.state(), field);
    const auto frames = std::int64_t(std::llround(value * framesPerUnit(model.state())));
    setInfoField(model, field, std::clamp(frames, range.lo, std::max(range.lo, range.hi)));
}

void stepInfoField(AudioEditorModel &model, InfoField field, double steps, bool isSmall) {
    const double by = steps * unitsPerStep(model.state(), isSmall ? smallStep : step);
    setInfoFieldInUnit(model, field, infoFieldFacts(model.state(), field).value + by);
}

void resetInfoField(AudioEditorModel &model, InfoField field) {
    const FrameRange range = reach(model.state(), field);
    setInfoField(model, field, isAtEnd(field) ? range.hi : range.lo);
}

void connectInfoField(ValueInput &input, AudioEditorModel &model, InfoField field) {
    input.onStep = [&model, field](double steps, bool isSmall) { stepInfoField(model, field, steps, isSmall); };
    input.onReset = [&model, field] { resetInfoField(model, field); };
    restoreWhenCancelled(
        input, [&model] { return std::tuple(model.state().cursorFrame, model.state().selection, model.state().view); },
        [&model](const auto &before) {
            const AudioEditorModel::Batch batch(model);
            model.setCursorAndSelection(std::get<0>(before), std::get<1>(before));
            model.setView(std::get<2>(before));
        });
}

std::string infoFieldHelp(AudioEditorTimeUnit unit, InfoField field) {
    const std::string word = unit == AudioEditorTimeUnit::seconds ? " ms" : " smp";
    return "Click to type. Scroll or drag up / down = " + std::to_string(step) + word +
           ", with ⇧ = " + std::to_string(smallStep) + word + "; double-click = " + (isAtEnd(field) ? "end" : "start") +
           " of the sound.";
}

}  // namespace kiv
