#include <charconv>
#include <cmath>
#include <initializer_list>
#include <string>

#include "Editor/AudioEditorModel/AudioEditorEdits.h"

namespace kiv::AudioEditorEdits {
namespace {

constexpr std::string_view minusSign = "−";
constexpr std::string_view blanks = " \t";

bool takePrefix(std::string_view &text, std::string_view prefix) {
    if (!text.starts_with(prefix)) return false;
    text.remove_prefix(prefix.size());
    return true;
}

void takeBlanksAndUnit(std::string_view &text, std::initializer_list<std::string_view> units) {
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    for (const std::string_view unit : units)
        if (text.ends_with(unit)) {
            text.remove_suffix(unit.size());
            break;
        }
    text = text.substr(0, text.find_last_not_of(blanks) + 1);
}

// With a decimal point or comma, and a sign of either kind.
std::optional<double> parseSigned(std::string_view text) {
    const bool negative = takePrefix(text, minusSign) || takePrefix(text, "-");
    if (!negative) takePrefix(text, "+");
    std::string digits(text);
    for (char &c : digits) {
        if (c == ',') c = '.';
        if (c != '.' && (c < '0' || c > '9')) return std::nullopt;
    }
    double value = 0;
    const char *const last = digits.data() + digits.size();
    const auto [end, error] = std::from_chars(digits.data(), last, value, std::chars_format::fixed);
    if (error != std::errc{} || end != last) return std::nullopt;
    return negative ? -value : value;
}

}  // namespace

std::optional<double> parseDecibels(std::string_view text) {
    takeBlanksAndUnit(text, {"dB", "db", "DB"});
    return parseSigned(text);
}

std::optional<int> parseWhole(std::string_view text) {
    takeBlanksAndUnit(text, {"%", "st", "ct", "smp"});
    const auto value = parseSigned(text);
    if (!value || std::fabs(*value) > 1e6) return std::nullopt;
    return int(std::lround(*value));
}

}  // namespace kiv::AudioEditorEdits
