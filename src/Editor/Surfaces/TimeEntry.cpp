#include "Editor/Surfaces/TimeEntry.h"

#include <charconv>
#include <cmath>
#include <string>
#include <vector>

namespace kiv {

namespace {

constexpr double limit = 9e15;  // frames beyond this are no longer exact

std::string tidied(std::string_view text) {
    std::string result;
    for (char c : text)
        if (c != ' ' && c != '\t') result += c == ',' ? '.' : c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c;
    return result;
}

bool takeSuffix(std::string &text, std::string_view suffix) {
    if (!text.ends_with(suffix)) return false;
    text.resize(text.size() - suffix.size());
    return true;
}

// Digits with at most one point; no sign, no exponent.
std::optional<double> plainNumber(std::string_view text) {
    if (text.empty() || text.find_first_not_of("0123456789.") != text.npos || text == ".") return std::nullopt;
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

// "1:05.25", "1:02:03": sixty of each in the next, only the last part with decimals.
std::optional<double> clockSeconds(std::string_view text) {
    double total = 0;
    for (;;) {
        const auto colon = text.find(':');
        const auto part = plainNumber(text.substr(0, colon));
        if (!part || (colon != text.npos && *part != std::floor(*part))) return std::nullopt;
        total = total * 60 + *part;
        if (colon == text.npos) return total;
        text.remove_prefix(colon + 1);
    }
}

std::optional<std::int64_t> rounded(std::optional<double> frames) {
    if (!frames || *frames > limit) return std::nullopt;
    return std::int64_t(std::llround(*frames));
}

std::optional<double> scaled(std::optional<double> value, double factor) {
    return value ? std::optional(*value * factor) : std::nullopt;
}

}  // namespace

std::optional<std::int64_t> parseTimeEntry(std::string_view text, AudioEditorTimeUnit unit, std::int64_t sampleRate,
                                           std::int64_t frames) {
    std::string entry = tidied(text);
    const double rate = double(sampleRate < 1 ? 1 : sampleRate);
    for (const char *suffix : {"smp", "samples", "sample"})
        if (takeSuffix(entry, suffix)) return rounded(plainNumber(entry));
    if (takeSuffix(entry, "ms")) return rounded(scaled(plainNumber(entry), rate / 1000));
    const bool isTime = takeSuffix(entry, "sec") || takeSuffix(entry, "s");
    const bool isWhole = entry.find_first_of(".:") == std::string::npos;
    const auto value = clockSeconds(entry);
    if (!value || isTime || !isWhole) return rounded(scaled(value, rate));
    const bool countsSamples =
        unit == AudioEditorTimeUnit::samples || (*value * rate > double(frames) && *value <= double(frames));
    return rounded(countsSamples ? value : scaled(value, rate));
}

}  // namespace kiv
