#include <array>
#include <charconv>
#include <cmath>
#include <nlohmann/json.hpp>

#include "Preferences/AudioEditorTheme.h"

namespace kiv {
namespace {

constexpr const char *radiusKey = "topbar_button_radius";

std::optional<Rgba> readColor(const nlohmann::json &value) {
    return value.is_string() ? parseColor(value.get_ref<const std::string &>()) : std::nullopt;
}

std::optional<double> readRadius(const nlohmann::json &value) {
    const double radius = value.is_number() ? value.get<double>() : -1;
    return std::isfinite(radius) && radius >= 0 ? std::optional(radius) : std::nullopt;
}

template <class T>
void take(ParsedTheme &parsed, T &into, const std::optional<T> &value) {
    ++(value ? parsed.recognised : parsed.skipped);
    into = value.value_or(into);
}

std::string colorText(Rgba color) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    const bool isOpaque = (color & 0xFF) == 0xFF;
    std::string text = "#";
    for (int shift = 28; shift >= (isOpaque ? 8 : 0); shift -= 4) text += digits[color >> shift & 0xF];
    return text;
}

std::string member(std::string_view key, const std::string &value) { return "  \"" + std::string(key) + "\": " + value; }

}  // namespace

std::optional<ParsedTheme> parseTheme(std::string_view text, const AudioEditorTheme &fallback) {
    const nlohmann::json object = nlohmann::json::parse(text, nullptr, false);
    if (!object.is_object()) return std::nullopt;
    ParsedTheme parsed{fallback};
    for (int i = 0; i < themeColorCount; ++i) {
        const auto found = object.find(jsonKey(AudioEditorThemeColor(i)));
        if (found != object.end()) take(parsed, parsed.theme.colors[std::size_t(i)], readColor(*found));
    }
    const auto radius = object.find(radiusKey);
    if (radius != object.end()) take(parsed, parsed.theme.buttonRadius, readRadius(*radius));
    return parsed;
}

std::string exportTheme(const AudioEditorTheme &theme) {
    std::string lines = "{\n";
    for (int i = 0; i < themeColorCount; ++i) {
        const AudioEditorThemeColor role{i};
        lines += member(jsonKey(role), '"' + colorText(theme[role]) + '"') + ",\n";
    }
    std::array<char, 32> radius;
    const auto end = std::to_chars(radius.data(), radius.data() + radius.size(), theme.buttonRadius).ptr;
    return lines + member(radiusKey, {radius.data(), end}) + "\n}\n";
}

}  // namespace kiv
