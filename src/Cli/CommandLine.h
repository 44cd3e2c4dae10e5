#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "Audio/Files/AudioSaveFormat.h"
#include "Cli/JsonWriter.h"

// The words of a call, as values.
namespace kiv::Cli {

// How the result is printed; nothing: as plain text.
using JsonLayout = std::optional<JsonWriter::Layout>;

struct InfoCall {
    std::string file;
    JsonLayout json;
};

struct EditCall {
    std::string file;
    std::vector<std::string> steps;
    std::optional<std::string> script;      // "-": standard input
    std::optional<std::string> out;         // nothing: over the file
    std::optional<AudioSaveFormat> format;  // of `out`; nothing: the file's own
    bool saves = true;
    JsonLayout json;
};

struct LoopsCall {
    std::string file;
    bool zeroCrossing = false;
    JsonLayout json;
};

struct SlicesCall {
    std::string file;
    std::string mode;
    std::vector<std::string> settings;  // SETTING=VALUE
    bool saves = false;
    std::string name;  // of the slices; empty: the file's
    bool replaces = false;
    JsonLayout json;
};

struct PeaksCall {
    std::string file;
    JsonLayout json;
};

struct SpectrumCall {
    std::string file;
    std::string out;  // the picture's file
};

struct EqResponseCall {
    std::string settings;  // the words of the eq step
    std::string rate, at;  // hertz; `at` a list parted by commas
    JsonLayout json;
};

struct CommandsCall {
    JsonLayout json;
};

// The call is answered already: by a help text or the version (status 0), or with what is wrong with it (2).
struct Answered {
    int status = 0;
    std::string text;
};

using Call =
    std::variant<Answered, InfoCall, EditCall, LoopsCall, SlicesCall, PeaksCall, SpectrumCall, EqResponseCall, CommandsCall>;

Call parseCommandLine(int argc, const char *const *argv);

}  // namespace kiv::Cli
