#include "Editor/Surfaces/StretchSheetScene.h"

#include <cstdlib>

#include "Editor/AudioEditorModel/AudioEditorEdits.h"
#include "Editor/Surfaces/LevelSheetScene.h"

namespace kiv {

namespace {

void setNumber(AudioEditorModel &model, StretchField field, int value) {
    StretchSettings settings = model.state().stretch;
    settings.*row(field).value = value;
    model.setStretch(settings);
}

}  // namespace

StretchSheetScene stretchSheetScene(const AudioEditorState &state) {
    const std::int64_t before = state.selection ? state.selection->count() : state.buffer.frames();
    const auto time = [&](std::int64_t frames) { return format(state.timeUnit, double(frames), state.buffer.sampleRate()); };
    StretchSheetScene scene{
        .target = dialogTarget(state),
        .isCyclic = state.stretch.mode == StretchMode::s950,
        .numbers = {},
        .lengthBefore = time(before),
        .lengthAfter = time(stretchedFrames(state.stretch, before)),
        .isReadable = state.dialogText.empty() || AudioEditorEdits::parseWhole(state.dialogText).has_value(),
    };
    for (const StretchNumber &number : stretchNumbers)
        scene.numbers[std::size_t(number.field)] = stretchNumberText(state.stretch, number.field);
    return scene;
}

bool isShown(StretchField field, StretchMode mode) { return field != StretchField::cycle || mode == StretchMode::s950; }

std::string stretchNumberText(const StretchSettings &settings, StretchField field) {
    const int value = settings.*row(field).value;
    const char *sign = value < 0 ? "−" : value > 0 && row(field).hasSign ? "+" : "";
    return sign + std::to_string(std::abs(value));
}

void setStretchMode(AudioEditorModel &model, StretchMode mode) {
    StretchSettings settings = model.state().stretch;
    settings.mode = mode;
    model.setStretch(settings);
}

void setStretchNumber(AudioEditorModel &model, StretchField field, int value) {
    const AudioEditorModel::Batch batch(model);
    model.setDialogText({}, false);
    setNumber(model, field, value);
}

void stepStretchNumber(AudioEditorModel &model, StretchField field, int steps, bool isSmall) {
    const StretchNumber &number = row(field);
    const int by = steps * (isSmall ? number.smallStep : number.step);
    setStretchNumber(model, field, model.state().stretch.*number.value + by);
}

void typeStretchNumber(AudioEditorModel &model, StretchField field, const std::string &text, bool typedAhead) {
    const AudioEditorModel::Batch batch(model);
    if (const auto value = AudioEditorEdits::parseWhole(text)) setNumber(model, field, *value);
    model.setDialogText(text, typedAhead);
}

void findStretchCycle(AudioEditorModel &model) {
    if (const auto range = model.activeRange())
        setStretchNumber(model, StretchField::cycle, AudioEditorOps::autoCycle(model.state().buffer, *range));
}

}  // namespace kiv
