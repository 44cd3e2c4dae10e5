#include "Support/DecimalText.h"

#include <array>
#include <charconv>

namespace kiv {

std::string decimalText(double value, int decimals, int width) {
    std::array<char, 400> text;  // the largest double has 309 digits before the point
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed, decimals).ptr;
    std::string result(text.data(), end);
    if (int(result.size()) < width) result.insert(0, std::size_t(width) - result.size(), '0');
    return result;
}

}  // namespace kiv
