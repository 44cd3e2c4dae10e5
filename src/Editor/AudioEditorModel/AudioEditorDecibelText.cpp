#include <charconv>
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

void takeBlanksAndUnit(std::string_view &text) {
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    for (const std::string_view unit : {"dB", "db", "DB"})
        if (text.ends_with(unit)) {
            text.remove_suffix(unit.size());
            break;
        }
    text = text.substr(0, text.find_last_not_of(blanks) + 1);
}

}  // namespace

std::optional<double> parseDecibels(std::string_view text) {
    takeBlanksAndUnit(text);
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

}  // namespace kiv::AudioEditorEdits
