#include "Preferences/Settings.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace kiv {
namespace {

// The whole text as a number, with a decimal point whatever the locale says.
std::optional<double> parseNumber(std::string_view text) {
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
    return value;
}

// The shortest text that reads back as the same value.
std::string numberText(double value) {
    std::array<char, 32> text;
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), value).ptr};
}

bool isListed(std::string_view list, std::string_view text) {
    while (!list.empty()) {
        const std::size_t end = std::min(list.find(' '), list.size());
        if (list.substr(0, end) == text) return true;
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    return false;
}

double limited(const NumberSetting &row, double value) {
    return std::isnan(value) ? row.fallback : std::clamp(value, row.lo, row.hi);
}

std::string_view limited(const TextSetting &row, std::string_view text) {
    return row.allowed.empty() || isListed(row.allowed, text) ? text : row.fallback;
}

}  // namespace

double Settings::get(const NumberSetting &row) const {
    const std::optional<std::string> stored = defaults_.text(row.key);
    return limited(row, stored ? parseNumber(*stored).value_or(row.fallback) : row.fallback);
}

bool Settings::get(const FlagSetting &row) const {
    const std::optional<std::string> stored = defaults_.text(row.key);
    return stored == "true" || (stored != "false" && row.fallback);
}

std::string Settings::get(const TextSetting &row) const {
    const std::optional<std::string> stored = defaults_.text(row.key);
    return std::string(stored ? limited(row, *stored) : row.fallback);
}

void Settings::set(const NumberSetting &row, double value) { defaults_.setText(row.key, numberText(limited(row, value))); }

void Settings::set(const FlagSetting &row, bool value) { defaults_.setText(row.key, value ? "true" : "false"); }

void Settings::set(const TextSetting &row, std::string_view value) {
    defaults_.setText(row.key, std::string(limited(row, value)));
}

}  // namespace kiv
