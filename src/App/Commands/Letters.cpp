#include "App/Commands/Letters.h"

#include <algorithm>
#include <array>

namespace kiv {
namespace {

// Upper-case letters first … last, every `step`-th, whose lower-case letters lie `distance` behind.
struct CaseRow {
    char32_t first, last;
    char32_t step, distance;
};

// clang-format off
constexpr std::array caseRows{
    CaseRow{U'A', U'Z', 1, 32},
    CaseRow{0x00C0, 0x00D6, 1, 32}, CaseRow{0x00D8, 0x00DE, 1, 32},                                   // À … Þ
    CaseRow{0x0100, 0x012E, 2, 1}, CaseRow{0x0132, 0x0136, 2, 1}, CaseRow{0x0139, 0x0147, 2, 1},      // Ā …
    CaseRow{0x014A, 0x0176, 2, 1}, CaseRow{0x0179, 0x017D, 2, 1}, CaseRow{0x01A0, 0x01A4, 2, 1},
    CaseRow{0x0218, 0x021A, 2, 1}, CaseRow{0x1E00, 0x1E94, 2, 1}, CaseRow{0x1EA0, 0x1EFE, 2, 1},
    CaseRow{0x0388, 0x038A, 1, 37}, CaseRow{0x0391, 0x03A1, 1, 32}, CaseRow{0x03A3, 0x03AB, 1, 32},   // Greek
    CaseRow{0x0400, 0x040F, 1, 80}, CaseRow{0x0410, 0x042F, 1, 32}, CaseRow{0x0460, 0x0480, 2, 1},    // Cyrillic
    CaseRow{0x048A, 0x04BE, 2, 1}, CaseRow{0x04D0, 0x052E, 2, 1},
    CaseRow{0x0531, 0x0556, 1, 48},                                                                   // Armenian
};
// clang-format on

bool contains(const CaseRow &row, char32_t letter) {
    return letter >= row.first && letter <= row.last && (letter - row.first) % row.step == 0;
}

char32_t lower(char32_t letter) {
    for (const CaseRow &row : caseRows)
        if (contains(row, letter)) return letter + row.distance;
    return letter == 0x0178 ? 0x00FF : letter;  // Ÿ
}

char32_t upper(char32_t letter) {
    for (const CaseRow &row : caseRows)
        if (letter >= row.distance && contains(row, letter - row.distance)) return letter - row.distance;
    return letter == 0x00FF ? 0x0178 : letter;
}

template <class Convert>
std::string converted(std::string_view letter, Convert convert) {
    const std::optional<char32_t> codePoint = singleCodePoint(letter);
    return codePoint ? utf8(convert(*codePoint)) : std::string(letter);
}

std::size_t sequenceLength(unsigned char lead) {
    if (lead < 0xC0) return 1;
    return lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
}

}  // namespace

std::size_t firstLength(std::string_view text) {
    return text.empty() ? 0 : std::min(sequenceLength(static_cast<unsigned char>(text.front())), text.size());
}

std::optional<char32_t> singleCodePoint(std::string_view text) {
    if (text.empty() || text.size() != sequenceLength(static_cast<unsigned char>(text.front()))) return std::nullopt;
    constexpr std::array<unsigned char, 5> leadBits{0, 0x7F, 0x1F, 0x0F, 0x07};
    char32_t codePoint = static_cast<unsigned char>(text.front()) & leadBits[text.size()];
    for (const char c : text.substr(1)) codePoint = codePoint << 6 | (static_cast<unsigned char>(c) & 0x3F);
    // Writing it again shows bad and overlong sequences.
    return utf8(codePoint) == text ? std::optional(codePoint) : std::nullopt;
}

std::string utf8(char32_t codePoint) {
    const auto tail = [&](int shift) { return char(0x80 | (codePoint >> shift & 0x3F)); };
    if (codePoint < 0x80) return {char(codePoint)};
    if (codePoint < 0x800) return {char(0xC0 | codePoint >> 6), tail(0)};
    if (codePoint < 0x10000) return {char(0xE0 | codePoint >> 12), tail(6), tail(0)};
    return {char(0xF0 | (codePoint >> 18 & 0x07)), tail(12), tail(6), tail(0)};
}

std::string lowerCased(std::string_view letter) { return converted(letter, lower); }

std::string upperCased(std::string_view letter) { return converted(letter, upper); }

}  // namespace kiv
