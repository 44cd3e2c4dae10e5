#include "Cli/Interrupt.h"
#include "Cli/Reading.h"
#include "Cli/SliceWords.h"
#include "Cli/StepForms.h"
#include "Editor/AudioEditorModel/AudioEditorSlices.h"

namespace kiv::Cli {

namespace {

using IfHeld = AudioDocument::IfHeld;

void checkSlicer(const Arguments &arguments) {
    for (std::size_t i = 1; i < arguments.size(); ++i) parseSliceSetting(arguments[i].text);
}

void slicer(StepContext &context, const Arguments &arguments) {
    AudioEditorModel &model = context.document.model();
    for (std::size_t i = 1; i < arguments.size(); ++i) {
        const auto [setting, value] = parseSliceSetting(arguments[i].text);
        AudioEditorSlices::setSetting(model, setting, value);
    }
    AudioEditorSlices::detect(model, parseSliceMode(arguments[0].text));
}

bool isReplace(const Argument &argument) { return argument.text == "replace"; }

void checkSaveSlices(const Arguments &arguments) {
    const bool isRight = arguments.size() < 2 || (arguments.size() == 2 && isReplace(arguments[1]));
    if (!isRight) throw WrongWords("the words are: saveSlices [NAME] [replace]");
}

void saveSlices(StepContext &context, const Arguments &arguments) {
    const bool replaces = !arguments.empty() && isReplace(arguments.back());
    const bool isNamed = arguments.size() > (replaces ? 1u : 0u);
    saveSlicesNow(context, isNamed ? arguments[0].text : "", replaces ? IfHeld::replace : IfHeld::refuse);
}

}  // namespace

void saveSlicesNow(StepContext &context, const std::string &name, IfHeld ifHeld) {
    AudioDocument &document = context.document;
    if (document.model().state().slices.empty()) return;
    bool saved = false;
    document.saveSlices(name, ifHeld, [&](bool ok) { saved = ok; });
    Interrupt::throwIfRequested();
    if (!saved) throw FileFailure(document.slicesFolder(), context.ui.error);
    context.ui.tellIfEqIsLeftOut(document.slicesFolder());
}

std::vector<StepForm> sliceSteps() {
    using enum ParameterKind;
    const Parameter mode{"transients|stripSilence|grid", choice, 0, 0, "transients stripSilence grid"};
    return {
        {"slicer", {mode}, slicer, checkSlicer, Parameter{"SETTING=VALUE", word}},
        {"saveSlices", {}, saveSlices, checkSaveSlices, Parameter{"NAME|replace", word}},
    };
}

}  // namespace kiv::Cli
