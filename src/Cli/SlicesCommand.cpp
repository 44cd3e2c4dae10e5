#include "Cli/Commands.h"
#include "Cli/Interrupt.h"
#include "Cli/Reading.h"
#include "Cli/Results.h"
#include "Cli/SliceWords.h"
#include "Cli/Steps.h"
#include "Editor/AudioEditorModel/AudioEditorSlices.h"

namespace kiv::Cli {

namespace {

std::string asJson(const std::vector<FrameRange> &slices, JsonWriter::Layout layout) {
    JsonWriter json(layout);
    writeRanges(json, slices);
    return json.take();
}

// A line a slice: start and end.
std::string asText(const std::vector<FrameRange> &slices) {
    std::string text;
    for (const FrameRange slice : slices) text += std::to_string(slice.lo) + " " + std::to_string(slice.hi) + "\n";
    return text;
}

}  // namespace

std::string slices(const SlicesCall &call, const DocumentServices &services) {
    const AudioEditorSlicer::Mode mode = parseSliceMode(call.mode);
    std::vector<SliceValue> settings;
    for (const std::string &word : call.settings) settings.push_back(parseSliceSetting(word));
    Interrupt::install();
    CallUi ui;
    AudioDocument document(services, ui);
    openNow(document, call.file);
    ui.tellWarnings(call.file);
    for (const auto &[setting, value] : settings) AudioEditorSlices::setSetting(document.model(), setting, value);
    AudioEditorSlices::detect(document.model(), mode);
    Interrupt::throwIfRequested();
    StepContext context{document, services, ui};
    const auto ifHeld = call.replaces ? AudioDocument::IfHeld::replace : AudioDocument::IfHeld::refuse;
    if (call.saves) saveSlicesNow(context, call.name, ifHeld);
    const std::vector<FrameRange> &found = document.model().state().slices;
    return call.json ? asJson(found, *call.json) : asText(found);
}

}  // namespace kiv::Cli
