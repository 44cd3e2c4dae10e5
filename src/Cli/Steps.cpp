#include "Cli/Steps.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "Cli/EqWords.h"
#include "Cli/Interrupt.h"
#include "Cli/Reading.h"
#include "Cli/StepForms.h"
#include "Document/CommandActions.h"
#include "Editor/AudioEditorModel/AudioEditorEdits.h"
#include "Editor/AudioEditorModel/AudioEditorSpectralPainting.h"
#include "Support/DecimalText.h"

namespace kiv::Cli {

namespace {

void loadToClipboard(StepContext &context, const Arguments &arguments) {
    const std::string &path = arguments[0].text;
    context.services.clipboard.buffer = readNow(context.services, path).buffer;
    context.services.clipboard.changed.notify(context.services.clipboard);
}

void saveSelectionNow(StepContext &context, const Arguments &arguments) {
    AudioDocument &document = context.document;
    if (!document.model().state().selection) return;
    const std::string &out = arguments[0].text;
    bool saved = false;
    document.saveSelection(out, [&](bool ok) { saved = ok; });
    Interrupt::throwIfRequested();
    if (!saved) throw FileFailure(out, context.ui.error);
    context.ui.tellIfEqIsLeftOut(out);
}

void stretchCleanly(StepContext &context, const Arguments &arguments) {
    const auto number = [&](std::size_t i) { return int(arguments[i].number); };
    AudioEditorEdits::timeStretch(context.document.model(), {StretchMode::clean, number(1), number(2), number(3)});
}

void stretchByCycles(StepContext &context, const Arguments &arguments) {
    AudioEditorModel &model = context.document.model();
    const auto range = model.activeRange();
    if (!range) return;
    const auto number = [&](std::size_t i) { return int(arguments[i].number); };
    const bool isAuto = arguments[4].text == "auto";
    context.cycle = isAuto ? AudioEditorOps::autoCycle(model.state().buffer, *range) : number(4);
    AudioEditorEdits::timeStretch(model, {StretchMode::s950, number(1), number(2), number(3), *context.cycle});
}

Parameter whole(std::string_view name, WholeRange range, ParameterKind kind = ParameterKind::whole) {
    return {name, kind, double(range.lo), double(range.hi)};
}

namespace Painting = AudioEditorSpectralPainting;

void multiplyMask(StepContext &context, const Arguments &arguments) {
    const auto cell = [&](std::size_t i) { return std::int64_t(arguments[i].number); };
    const Painting::ColumnRange columns{cell(0), cell(1)}, bands{cell(2), cell(3)};
    context.document.model().setSpectralEnabled(true);
    Painting::multiply(context.document.model(), columns, bands, arguments[4].number);
}

std::vector<StepForm> editSteps() {
    constexpr auto position = ParameterKind::position;
    const Parameter gainDb{"DB", ParameterKind::number, Setting::gainDb.lo, Setting::gainDb.hi};
    const Parameter normalizeDb{"DB", ParameterKind::number, Setting::normalizeDb.lo, Setting::normalizeDb.hi};
    const Parameter monoSource{"left|right|mix", ParameterKind::choice, 0, 0, "left right mix"};
    const Parameter percent = whole("PERCENT", stretchTimePercentRange), semitones = whole("SEMITONES", stretchSemitonesRange);
    const Parameter cents = whole("CENTS", stretchCentsRange);
    const Parameter cycle = whole("CYCLE|auto", stretchCycleRange, ParameterKind::wholeOrAuto);
    const Parameter clean{"clean", ParameterKind::choice, 0, 0, "clean"}, s950{"s950", ParameterKind::choice, 0, 0, "s950"};
    const Parameter onOff{"on|off", ParameterKind::choice, 0, 0, "on off"};
    const auto cell = [](std::string_view name) { return Parameter{name, ParameterKind::whole, -1e15, 1e15}; };
    const Parameter maskDb{"DB", ParameterKind::number, -96, 12};
    // clang-format off
    return {
        {"select", {{"LO", position}, {"HI", position}},
         [](StepContext &c, const Arguments &a) { c.document.model().select({frame(c, a[0]), frame(c, a[1])}); }},
        {"cursor", {{"F", position}},
         [](StepContext &c, const Arguments &a) { c.document.model().placeCursor(frame(c, a[0])); }},
        {"load", {{"FILE2"}}, loadToClipboard},
        {"gain", {gainDb},
         [](StepContext &c, const Arguments &a) { AudioEditorEdits::gain(c.document.model(), a[0].number); }},
        {"normalize", {normalizeDb},
         [](StepContext &c, const Arguments &a) { AudioEditorEdits::normalize(c.document.model(), a[0].number); }},
        {"mono", {monoSource},
         [](StepContext &c, const Arguments &a) { AudioEditorEdits::mono(c.document.model(), *monoSourceFromText(a[0].text)); }},
        {"timeStretch", {clean, percent, semitones, cents}, stretchCleanly},
        {"timeStretch", {s950, percent, semitones, cents, cycle}, stretchByCycles},
        {"spectral", {onOff},
         [](StepContext &c, const Arguments &a) { c.document.model().setSpectralEnabled(a[0].text == "on"); }},
        {"spectralClear", {}, [](StepContext &c, const Arguments &) { Painting::clear(c.document.model()); }},
        {"spectralReset", {}, [](StepContext &c, const Arguments &) { Painting::reset(c.document.model()); }},
        {"spectralMask", {cell("C0"), cell("C1"), cell("B0"), cell("B1"), maskDb}, multiplyMask},
        {"saveSelection", {{"OUT"}}, saveSelectionNow},
        {"applyEq", {}, [](StepContext &c, const Arguments &) { c.document.applyEq(); }},
    };
    // clang-format on
}

const std::vector<StepForm> &stepForms() {
    static const std::vector<StepForm> forms = [] {
        std::vector<StepForm> all = editSteps();
        for (const auto &more : {loopSteps(), sliceSteps()}) all.insert(all.end(), more.begin(), more.end());
        return all;
    }();
    return forms;
}

// A step that reads all of its words itself.
struct FreeForm {
    std::string_view name, words;
    Step (*parse)(std::span<const std::string> words);
};

Step parseEq(std::span<const std::string> words) {
    if (words.empty()) throw WrongWords("a setting is missing");
    std::vector<std::function<void(EqSettings &)>> changes;
    for (const std::string &word : words) changes.push_back(parseEqSetting(word));
    return [changes](StepContext &context) {
        EqSettings settings = context.document.eq().settings();
        for (const auto &change : changes) change(settings);
        context.document.eq().setSettings(settings);
        context.document.model().setEqEnabled(true);
    };
}

constexpr FreeForm freeForms[] = {
    {"eq", "gain=DB|lowCut=on|off:HZ|highCut=on|off:HZ|bandN=on|off:HZ:DB:Q …", parseEq},
};

// Steps without parameters are the commands of the same name.
constexpr std::array plainSteps{
    EditorCommand::selectAll, EditorCommand::selectNone, EditorCommand::goToStart,
    EditorCommand::goToEnd,   EditorCommand::undo,       EditorCommand::redo,
    EditorCommand::cut,       EditorCommand::copy,       EditorCommand::paste,
    EditorCommand::delete_,   EditorCommand::trim,       EditorCommand::fadeIn,
    EditorCommand::fadeOut,   EditorCommand::silence,    EditorCommand::reverse,
    EditorCommand::stereo,    EditorCommand::findLoop,   EditorCommand::applyLoopCrossfade,
};

bool isOneOf(std::string_view word, std::string_view choices) {
    const std::string padded = " " + std::string(choices) + " ";
    return word.find(' ') == word.npos && padded.find(" " + std::string(word) + " ") != padded.npos;
}

[[noreturn]] void fail(const std::string &word, const std::string &why) { throw WrongWords("“" + word + "” is " + why); }

bool isWhole(ParameterKind kind) { return kind == ParameterKind::whole || kind == ParameterKind::wholeOrAuto; }

Argument parseArgument(const Parameter &parameter, const std::string &word) {
    Argument argument{word, {}, 0};
    if (parameter.kind == ParameterKind::position) {
        const auto position = Position::parse(word);
        if (!position) fail(word, "no position: a frame (4800) or a time (1.5s, 20ms, 1:05.250)");
        argument.position = *position;
    } else if (parameter.kind == ParameterKind::number || parameter.kind == ParameterKind::wholeInRange) {
        const bool mustBeWhole = parameter.kind == ParameterKind::wholeInRange;
        const auto number = parseNumber(word);
        const bool isIn = number && *number >= parameter.lo && *number <= parameter.hi;
        if (!isIn || (mustBeWhole && *number != std::trunc(*number)))
            fail(word, (mustBeWhole ? "no whole number from " : "no number from ") + decimalText(parameter.lo, 0) + " to " +
                           decimalText(parameter.hi, 0));
        argument.number = *number;
    } else if (isWhole(parameter.kind) && !(parameter.kind == ParameterKind::wholeOrAuto && word == "auto")) {
        const auto number = parseNumber(word);
        if (!number || *number != std::trunc(*number)) fail(word, "no whole number");
        argument.number = std::clamp(*number, parameter.lo, parameter.hi);
    } else if (parameter.kind == ParameterKind::choice && !isOneOf(word, parameter.choices)) {
        fail(word, "not one of: " + std::string(parameter.choices));
    } else if (parameter.kind == ParameterKind::path && word.empty()) {
        throw WrongWords("a file name is missing");
    }
    return argument;
}

Step parseForm(const StepForm &form, const Words &words) {
    Arguments arguments;
    for (std::size_t i = 0; i < form.parameters.size(); ++i)
        arguments.push_back(parseArgument(form.parameters[i], words[i + 1]));
    for (std::size_t i = form.parameters.size() + 1; i < words.size(); ++i)
        arguments.push_back(parseArgument(*form.further, words[i]));
    if (form.check) form.check(arguments);
    return [run = form.run, arguments = std::move(arguments)](StepContext &context) { run(context, arguments); };
}

std::string formText(const StepForm &form) {
    std::string text(form.name);
    for (const Parameter &parameter : form.parameters) text += " " + std::string(parameter.name);
    if (form.further) text += " [" + std::string(form.further->name) + " …]";
    return text;
}

std::string formTexts(std::string_view name, std::string_view between) {
    std::string text;
    for (const StepForm &form : stepForms())
        if (name.empty() || form.name == name) text += (text.empty() ? "" : std::string(between)) + formText(form);
    return text;
}

bool fits(const StepForm &form, std::size_t words) {
    return form.further ? words > form.parameters.size() : words == form.parameters.size() + 1;
}

Step parseWords(const Words &words) {
    if (words.empty()) throw WrongWords("a step without words");
    for (const FreeForm &form : freeForms)
        if (form.name == words[0]) return form.parse(std::span(words).subspan(1));
    bool isKnown = false;
    for (const StepForm &form : stepForms()) {
        isKnown = isKnown || form.name == words[0];
        if (form.name == words[0] && fits(form, words.size())) return parseForm(form, words);
    }
    if (isKnown) throw WrongWords("the words are: " + formTexts(words[0], ", or "));
    const auto command = editorCommandFromRaw(words[0]);
    if (!command || std::ranges::find(plainSteps, *command) == plainSteps.end()) throw WrongWords("there is no such step");
    if (words.size() > 1) throw WrongWords("the step takes no words");
    return [command](StepContext &context) { perform(*command, context.document); };
}

}  // namespace

std::int64_t frame(const StepContext &context, const Argument &argument) {
    return argument.position.frame(context.document.model().state().buffer.sampleRate());
}

Step parseStep(const Words &words) {
    try {
        return parseWords(words);
    } catch (const WrongWords &error) {
        std::string step;
        for (const std::string &word : words) step += (step.empty() ? "" : " ") + word;
        throw WrongWords("step “" + step + "”: " + error.what());
    }
}

std::string stepsHelp() {
    std::string text = formTexts("", "\n");
    for (const FreeForm &form : freeForms) text += "\n" + std::string(form.name) + " " + std::string(form.words);
    for (const EditorCommand command : plainSteps) text += "\n" + std::string(row(command).raw);
    return text;
}

}  // namespace kiv::Cli
