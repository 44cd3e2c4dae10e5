#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <span>

#include "Cli/Commands.h"
#include "Cli/Interrupt.h"
#include "Cli/Reading.h"
#include "Cli/Results.h"
#include "Cli/Steps.h"
#include "Editor/AudioEditorCore/AudioEditorOps.h"
#include "Editor/AudioEditorModel/AudioEditorLoops.h"

namespace kiv::Cli {

namespace {

struct Outcome {
    const AudioDocument &document;
    bool edited;
    std::vector<std::string> notices;
    std::optional<std::string> saved;
    std::optional<int> cycle;
};

std::string readAll(std::FILE &file, const std::string &name) {
    std::string text;
    std::array<char, 4096> block;
    while (const std::size_t count = std::fread(block.data(), 1, block.size(), &file)) text.append(block.data(), count);
    if (std::ferror(&file)) throw FileFailure(name, std::strerror(errno));
    return text;
}

std::string readScript(const std::string &path) {
    if (path == "-") return readAll(*stdin, "standard input");
    const std::unique_ptr<std::FILE, int (*)(std::FILE *)> file(std::fopen(path.c_str(), "rb"), std::fclose);
    if (!file) throw FileFailure(path, std::strerror(errno));
    return readAll(*file, path);
}

struct NamedStep {
    std::string name;
    Step run;
};

std::vector<NamedStep> parseSteps(const EditCall &call) {
    std::vector<Words> words;
    if (call.script) words = scriptSteps(readScript(*call.script));
    for (const std::string &step : call.steps) words.push_back(splitWords(step));
    std::vector<NamedStep> steps;
    for (const Words &step : words) {
        Step run = parseStep(step);
        steps.push_back({step[0], std::move(run)});
    }
    return steps;
}

// Only what a later step can bring back is worth its memory.
void runSteps(StepContext &context, std::span<const NamedStep> steps) {
    for (; !steps.empty(); steps = steps.subspan(1)) {
        const auto still = [&](std::string_view name) {
            return std::size_t(std::ranges::count(steps, name, &NamedStep::name));
        };
        context.document.model().keepOnly(still("undo"), still("redo"));
        steps.front().run(context);
        Interrupt::throwIfRequested();
    }
}

void saveDocument(AudioDocument &document, const EditCall &call, CallUi &ui) {
    bool saved = false;
    const auto done = [&](bool ok) { saved = ok; };
    if (call.format) {
        document.saveAs(*call.out, *call.format, done);
    } else if (call.out) {
        document.saveTo(*call.out, done);
    } else {
        document.save(done);
    }
    if (saved) return;
    Interrupt::throwIfRequested();
    throw FileFailure(call.out.value_or(call.file), ui.error);
}

void writeLoops(JsonWriter &json, const AudioEditorState &state) {
    writeRange(json.key("loop"), state.loopPoints);
    writeRanges(json.key("slices"), state.slices);
    writeProposals(json.key("loopCandidates"), AudioEditorLoops::loopCandidates(state));
    json.key("loopCrossfade").beginObject().field("frames", AudioEditorLoops::loopCrossfadeFrames(state));
    json.field("limited", AudioEditorLoops::loopCrossfadeLimited(state)).endObject();
}

// What the window would say, in its bars and panels too.
std::vector<std::string> noticesOf(const AudioEditorState &state, std::vector<std::string> notices) {
    for (const auto &said : {state.loopFindNotice, state.slicerNotice})
        if (said) notices.push_back(*said);
    return notices;
}

double peakOf(const AudioEditorBuffer &buffer) { return AudioEditorOps::peak(buffer, {0, buffer.frames()}); }

std::string asJson(const Outcome &outcome, JsonWriter::Layout layout) {
    const AudioEditorModel &model = outcome.document.model();
    const AudioEditorState &state = model.state();
    JsonWriter json(layout);
    json.beginObject().field("frames", state.buffer.frames()).field("channels", state.buffer.channels());
    json.field("sampleRate", state.buffer.sampleRate()).field("cursor", state.cursorFrame);
    writeRange(json.key("selection"), state.selection);
    json.key("markers").beginList();
    for (const std::int64_t frame : state.markerFrames) json.value(frame);
    json.endList();
    writeLoops(json, state);
    json.field("cycle", outcome.cycle).field("undo", model.history().undoDepth()).field("redo", model.history().redoDepth());
    json.field("edited", outcome.edited).field("peak", peakOf(state.buffer));
    json.key("notices").beginList();
    for (const std::string &notice : outcome.notices) json.value(notice);
    return json.endList().field("saved", outcome.saved).endObject().take();
}

}  // namespace

std::string edit(const EditCall &call, const DocumentServices &services) {
    const std::vector<NamedStep> steps = parseSteps(call);
    Interrupt::install();  // until here there is nothing to be left whole
    CallUi ui;
    AudioDocument document(services, ui);
    openNow(document, call.file);
    if (!call.json) ui.tellWarnings(call.file);
    StepContext context{document, services, ui};
    runSteps(context, steps);
    Outcome outcome{document, document.isEdited(), {}, std::nullopt, context.cycle};
    if (call.saves) {
        saveDocument(document, call, ui);
        outcome.saved = call.out.value_or(call.file);
        ui.tellIfEqIsLeftOut(*outcome.saved);
        if (!call.json) ui.tellWarnings(*outcome.saved);
    }
    if (!call.saves && document.model().state().loopPoints && !document.model().state().canStoreLoop)
        ui.notices.push_back("This format cannot store a loop: it will not be saved");
    outcome.notices = noticesOf(document.model().state(), ui.notices);
    return call.json ? asJson(outcome, *call.json) : "";
}

}  // namespace kiv::Cli
