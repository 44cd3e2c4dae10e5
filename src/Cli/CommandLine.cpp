#include "Cli/CommandLine.h"

#include <CLI/CLI.hpp>
#include <sstream>

#include "Cli/SaveWords.h"
#include "Cli/SliceWords.h"
#include "Cli/Steps.h"

namespace kiv::Cli {

namespace {

struct JsonFlags {
    bool json = false;
    bool pretty = false;

    JsonLayout layout() const {
        if (!json) return std::nullopt;
        return pretty ? JsonWriter::Layout::pretty : JsonWriter::Layout::line;
    }
};

// All that the words of a call may set.
struct Parsed {
    InfoCall info;
    EditCall edit;
    std::string script, out;
    std::vector<std::string> saveAs;
    bool noSave = false;
    LoopsCall loops;
    SlicesCall slices;
    PeaksCall peaks;
    SpectrumCall spectrum;
    EqResponseCall eqResponse;
    JsonFlags flags;
};

CLI::App *addCommand(CLI::App &app, const char *name, const char *description, JsonFlags &flags) {
    CLI::App *command = app.add_subcommand(name, description);
    command->set_version_flag("--version", KIV_VERSION);
    CLI::Option *json = command->add_flag("--json", flags.json, "Print JSON, on one line");
    command->add_flag("--pretty", flags.pretty, "JSON over several lines")->needs(json);
    return command;
}

std::string namesAFile(const std::string &path) { return path.empty() ? "an empty name is no file's" : ""; }

CLI::App *addEdit(CLI::App &app, Parsed &parsed) {
    CLI::App *edit = addCommand(app, "edit", "Perform steps on a file and save it", parsed.flags);
    edit->add_option("FILE", parsed.edit.file, "The sound file")->required();
    edit->add_option("STEP", parsed.edit.steps, "Steps, one argument each");
    edit->add_option("--script", parsed.script, "Read steps from a file first, one a line (\"-\": standard input)")
        ->check(namesAFile);
    CLI::Option *out = edit->add_option("-o", parsed.out, "Save there, in the file's own format")->check(namesAFile);
    CLI::Option *saveAs = edit->add_option("--save-as", parsed.saveAs, "Save there, in this format: " + saveFormatNames())
                              ->option_text("FORMAT OUT")
                              ->expected(2)
                              ->excludes(out);
    edit->add_flag("--no-save", parsed.noSave, "Do not save")->excludes(out)->excludes(saveAs);
    edit->footer("Steps:\n" + stepsHelp());
    return edit;
}

CLI::App *addSpectrum(CLI::App &app, SpectrumCall &call) {
    CLI::App *spectrum = app.add_subcommand("spectrum", "A picture of the spectrum, one pixel a column and band");
    spectrum->set_version_flag("--version", KIV_VERSION);
    spectrum->add_option("FILE", call.file, "The sound file")->required();
    spectrum->add_option("-o", call.out, "The PNG file to write")->required()->check(namesAFile);
    return spectrum;
}

CLI::App *addEqResponse(CLI::App &app, EqResponseCall &call, JsonFlags &flags) {
    CLI::App *response = addCommand(app, "eq-response", "The equalizer's gain at some frequencies, in decibels", flags);
    response->add_option("SETTINGS", call.settings, "The words of the eq step, in one argument")->required();
    response->add_option("--rate", call.rate, "The sample rate in hertz")->required();
    response->add_option("--at", call.at, "Frequencies in hertz, parted by commas")->required();
    return response;
}

CLI::App *addLoops(CLI::App &app, Parsed &parsed) {
    CLI::App *loops = addCommand(app, "loops", "The best loops of a sound", parsed.flags);
    loops->add_option("FILE", parsed.loops.file, "The sound file")->required();
    loops->add_flag("--zero-crossing", parsed.loops.zeroCrossing, "Loop points at rising zero crossings only");
    return loops;
}

CLI::App *addSlices(CLI::App &app, Parsed &parsed) {
    SlicesCall &call = parsed.slices;
    CLI::App *slices = addCommand(app, "slices", "The slices of a sound", parsed.flags);
    slices->add_option("FILE", call.file, "The sound file")->required();
    slices->add_option("SETTING=VALUE", call.settings, "Settings of the slicer");
    slices->add_option("--mode", call.mode, "transients, stripSilence or grid")->default_str("transients");
    CLI::Option *save =
        slices->add_option("--save", call.name, "Save the slices beside the file, under a name or the file's own")
            ->option_text("[NAME]")
            ->expected(0, 1);
    slices->add_flag("--replace", call.replaces, "Move audio files that are already there to the trash")->needs(save);
    slices->footer("Settings: " + sliceSettingsHelp());
    return slices;
}

// The parser takes a word in brackets apart as a list: this sign in front keeps it whole, and comes off again.
constexpr char wholeSign = '\x1f';

std::vector<std::string> wholeWords(int argc, const char *const *argv) {
    std::vector<std::string> words;
    for (int i = argc - 1; i > 0; --i) words.push_back(argv[i][0] == '[' ? wholeSign + std::string(argv[i]) : argv[i]);
    return words;  // the last first, as the parser wants them
}

std::string plain(std::string word) {
    if (word.starts_with(wholeSign)) word.erase(0, 1);
    return word;
}

std::vector<std::string> plain(std::vector<std::string> words) {
    for (std::string &word : words) word = plain(word);
    return words;
}

std::optional<std::string> given(const CLI::App &command, const char *option, const std::string &value) {
    return command.count(option) ? std::optional(plain(value)) : std::nullopt;
}

// The parser's own words, but where they would leave open which command was meant.
std::string complaint(const CLI::App &app, const std::vector<std::string> &words, const CLI::ParseError &error) {
    if (!app.get_subcommands().empty() || (!words.empty() && words.back().starts_with("-"))) return error.what();
    const std::string what = words.empty() ? "no command given" : "there is no command \"" + plain(words.back()) + "\"";
    return what + "; kiv --help lists them";
}

// A word behind --save may be the name, or a setting.
SlicesCall slicesCall(const CLI::App &command, const SlicesCall &parsed, JsonLayout json) {
    SlicesCall call = parsed;
    call.file = plain(parsed.file);
    call.mode = parsed.mode.empty() ? "transients" : plain(parsed.mode);
    call.settings = plain(parsed.settings);
    call.saves = command.count("--save") > 0;
    call.name = plain(parsed.name);
    call.json = json;
    if (isSliceSetting(call.name)) call.settings.push_back(std::exchange(call.name, ""));
    return call;
}

Call editCall(const CLI::App &command, const Parsed &parsed) {
    EditCall call{plain(parsed.edit.file),
                  plain(parsed.edit.steps),
                  given(command, "--script", parsed.script),
                  given(command, "-o", parsed.out),
                  std::nullopt,
                  !parsed.noSave,
                  parsed.flags.layout()};
    if (parsed.saveAs.empty()) return call;
    const std::string word = plain(parsed.saveAs[0]);
    call.format = parseSaveFormat(word);
    call.out = plain(parsed.saveAs[1]);
    if (!call.format) return Answered{2, "--save-as: “" + word + "” is not one of: " + saveFormatNames()};
    if (const std::string fault = namesAFile(*call.out); !fault.empty()) return Answered{2, "--save-as: " + fault};
    return call;
}

}  // namespace

Call parseCommandLine(int argc, const char *const *argv) {
    Parsed parsed;
    CLI::App app("Edits sound files.", "kiv");
    app.set_version_flag("--version", KIV_VERSION);
    app.require_subcommand(1);
    CLI::App *info = addCommand(app, "info", "What a file is and holds", parsed.flags);
    info->add_option("FILE", parsed.info.file, "The sound file")->required();
    CLI::App *edit = addEdit(app, parsed);
    CLI::App *loops = addLoops(app, parsed);
    CLI::App *slices = addSlices(app, parsed);
    CLI::App *peaks = addCommand(app, "peaks", "The extremes of every 256 frames", parsed.flags);
    peaks->add_option("FILE", parsed.peaks.file, "The sound file")->required();
    CLI::App *spectrum = addSpectrum(app, parsed.spectrum);
    CLI::App *response = addEqResponse(app, parsed.eqResponse, parsed.flags);
    addCommand(app, "commands", "The editor's commands", parsed.flags);
    const std::vector<std::string> words = wholeWords(argc, argv);
    try {
        app.parse(std::vector(words));
    } catch (const CLI::ParseError &error) {
        std::ostringstream text, ignored;
        if (error.get_exit_code() != 0) return Answered{2, complaint(app, words, error)};
        app.exit(error, text, ignored);
        return Answered{0, text.str()};
    }
    const JsonLayout json = parsed.flags.layout();
    if (*info) return InfoCall{plain(parsed.info.file), json};
    if (*loops) return LoopsCall{plain(parsed.loops.file), parsed.loops.zeroCrossing, json};
    if (*slices) return slicesCall(*slices, parsed.slices, json);
    if (*peaks) return PeaksCall{plain(parsed.peaks.file), json};
    if (*spectrum) return SpectrumCall{plain(parsed.spectrum.file), plain(parsed.spectrum.out)};
    if (*response) return EqResponseCall{parsed.eqResponse.settings, parsed.eqResponse.rate, parsed.eqResponse.at, json};
    if (!*edit) return CommandsCall{json};
    return editCall(*edit, parsed);
}

}  // namespace kiv::Cli
