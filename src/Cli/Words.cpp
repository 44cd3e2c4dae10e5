#include "Cli/Words.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace kiv::Cli {

namespace {

constexpr std::string_view blanks = " \t\r";
// Of a time, in its unit: as minutes, times the highest rate, in 10⁻¹⁸ s, this still fits into 127 bits.
constexpr std::size_t maxWholeDigits = 8;

// The word in quotes that begins the text; takes it off.
std::string takeQuoted(std::string_view &text) {
    std::string word;
    for (std::size_t i = 1; i < text.size(); ++i) {
        const bool escaped = text[i] == '\\' && i + 1 < text.size() && (text[i + 1] == '"' || text[i + 1] == '\\');
        if (escaped) {
            ++i;
        } else if (text[i] == '"') {
            text.remove_prefix(i + 1);
            if (!text.empty() && blanks.find(text[0]) == blanks.npos) throw WrongWords("a quoted word must end with a blank");
            return word;
        }
        word += text[i];
    }
    throw WrongWords("a double quote is not closed");
}

std::string takePlain(std::string_view &text) {
    const std::string word(text.substr(0, text.find_first_of(blanks)));
    text.remove_prefix(word.size());
    return word;
}

bool isDigits(std::string_view text) { return !text.empty() && text.find_first_not_of("0123456789") == text.npos; }

bool takeSuffix(std::string_view &text, std::string_view suffix) {
    if (!text.ends_with(suffix)) return false;
    text.remove_suffix(suffix.size());
    return true;
}

// "12.5" as units of 10⁻ᵈ; decimals beyond d are cut off, being finer than any rate can tell.
std::optional<Wide> scaledDecimal(std::string_view text, std::size_t decimals) {
    const std::size_t point = text.find('.');
    const std::string_view whole = text.substr(0, point);
    std::string fraction(point == text.npos ? "0" : text.substr(point + 1));
    const bool hasWhole = isDigits(whole) || (whole.empty() && point == 0);  // ".5"
    if (!hasWhole || whole.size() > maxWholeDigits || !isDigits(fraction)) return std::nullopt;
    fraction.resize(decimals, '0');
    Wide value = 0;
    for (const std::string_view part : {whole, std::string_view(fraction)})
        for (const char digit : part) value = value * 10 + (digit - '0');
    return value;
}

constexpr Wide unitsPerSecond = 1'000'000'000'000'000'000;

// A time in 10⁻¹⁸ s.
std::optional<Wide> parseTime(std::string_view word) {
    if (takeSuffix(word, "ms")) return scaledDecimal(word, 15);
    if (takeSuffix(word, "s")) return scaledDecimal(word, 18);
    const std::size_t colon = word.find(':');
    if (colon == word.npos) return std::nullopt;
    const auto minutes = scaledDecimal(word.substr(0, colon), 0), seconds = scaledDecimal(word.substr(colon + 1), 18);
    const bool isClock = minutes && seconds && isDigits(word.substr(0, colon)) && *seconds < 60 * unitsPerSecond;
    return isClock ? std::optional(*minutes * 60 * unitsPerSecond + *seconds) : std::nullopt;
}

std::optional<std::int64_t> parseFrame(std::string_view word) {
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
    return isDigits(word) && error == std::errc() && end == word.data() + word.size() ? std::optional(value) : std::nullopt;
}

}  // namespace

Words splitWords(std::string_view step, Comments comments) {
    Words words;
    for (;;) {
        step.remove_prefix(std::min(step.find_first_not_of(blanks), step.size()));
        if (step.empty() || (step[0] == '#' && comments == Comments::afterHash)) return words;
        words.push_back(step[0] == '"' ? takeQuoted(step) : takePlain(step));
    }
}

std::vector<Words> scriptSteps(std::string_view script) {
    std::vector<Words> steps;
    if (script.starts_with("\uFEFF")) script.remove_prefix(3);  // some editors put it in front
    for (int line = 1; !script.empty(); ++line) {
        const std::string_view text = script.substr(0, script.find('\n'));
        script.remove_prefix(std::min(text.size() + 1, script.size()));
        try {
            if (Words words = splitWords(text, Comments::afterHash); !words.empty()) steps.push_back(std::move(words));
        } catch (const WrongWords &error) {
            throw WrongWords("line " + std::to_string(line) + ": " + error.what());
        }
    }
    return steps;
}

std::optional<double> parseNumber(std::string_view word) {
    if (word.starts_with("+") && !word.starts_with("+-")) word.remove_prefix(1);
    double value = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
    const bool isAll = error == std::errc() && end == word.data() + word.size();
    return isAll && std::isfinite(value) ? std::optional(value) : std::nullopt;
}

std::optional<Position> Position::parse(std::string_view word) {
    const bool isNegative = word.starts_with('-');
    if (isNegative) word.remove_prefix(1);
    const auto frame = parseFrame(word);
    const auto time = parseTime(word);
    if (!frame && !time) return std::nullopt;
    const Wide value = frame ? *frame : *time;
    Position position;
    position.isTime_ = !frame;
    position.value_ = isNegative ? -value : value;
    return position;
}

std::int64_t Position::frame(std::int64_t sampleRate) const {
    if (!isTime_) return std::int64_t(value_);
    const Wide scaled = value_ * sampleRate;
    const Wide half = scaled < 0 ? -unitsPerSecond / 2 : unitsPerSecond / 2;
    using Frames = std::numeric_limits<std::int64_t>;
    return std::int64_t(std::clamp<Wide>((scaled + half) / unitsPerSecond, Frames::min(), Frames::max()));
}

std::optional<bool> Position::isBelow(const Position &a, const Position &b) {
    if (a.isTime_ != b.isTime_) return std::nullopt;
    return a.value_ < b.value_;
}

}  // namespace kiv::Cli
