#include "Editor/Surfaces/DecibelText.h"

#include <cmath>
#include <cstdio>
#include <limits>

namespace kiv {

namespace {

std::string withSign(double value, int decimals) {
    const char *sign = value < 0 ? "−" : "+";
    if (std::isinf(value)) return std::string(sign) + "∞";
    char digits[64];
    std::snprintf(digits, sizeof digits, "%.*f", decimals, std::fabs(value));
    const bool isZero = std::string(digits).find_first_not_of("0.") == std::string::npos;
    return isZero ? digits : std::string(sign) + digits;
}

}  // namespace

double amplitudeDb(double amplitude) {
    return amplitude > 0 ? 20 * std::log10(amplitude) : -std::numeric_limits<double>::infinity();
}

std::string decibelNumber(double db) { return withSign(db, 1); }

std::string decibelText(double db) { return decibelNumber(db) + " dB"; }

std::string wholeDecibelText(int db) { return withSign(db, 0) + " dB"; }

}  // namespace kiv
