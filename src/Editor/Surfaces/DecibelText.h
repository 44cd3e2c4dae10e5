#pragma once

#include <string>

// Levels and gains as the window shows them: a sign on either side of 0 and none on it, U+2212 for minus, −∞ for silence.
namespace kiv {

std::string decibelText(double db);    // "−3.1 dB", "+2.0 dB", "0.0 dB"
std::string decibelNumber(double db);  // the same without its unit
std::string wholeDecibelText(int db);  // "+6 dB", "0 dB"
double amplitudeDb(double amplitude);  // −infinity for 0

}  // namespace kiv
