#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Cli/Steps.h"

// The forms of the steps as rows: what their words are, and what they do.
namespace kiv::Cli {

// A `whole` number is brought into its range; `wholeOrAuto` may be the word "auto" instead.
enum class ParameterKind { position, number, wholeInRange, whole, wholeOrAuto, choice, path, word };

struct Parameter {
    std::string_view name;
    ParameterKind kind = ParameterKind::path;
    double lo = 0, hi = 0;          // numbers
    std::string_view choices = "";  // parted by blanks
};

struct Argument {
    std::string text;
    Position position;
    double number = 0;
};
using Arguments = std::vector<Argument>;

// One form of a step; a step that takes different words has several.
struct StepForm {
    std::string_view name;
    std::vector<Parameter> parameters;
    void (*run)(StepContext &, const Arguments &);
    // Throws WrongWords for what no single word can tell.
    void (*check)(const Arguments &) = nullptr;
    std::optional<Parameter> further = {};  // any number of them may follow
};

std::int64_t frame(const StepContext &context, const Argument &argument);

// The steps that act on the loop and on the slices.
std::vector<StepForm> loopSteps();
std::vector<StepForm> sliceSteps();

}  // namespace kiv::Cli
