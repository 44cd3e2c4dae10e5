#pragma once

#include <string>

namespace kiv {

// The value with so many decimals and a point, whatever the locale says: the printf family follows the desktop's decimal comma
// once a window program has taken the locale over. Rounds as "%.3f" does. `width` fills up with zeros on the left.
std::string decimalText(double value, int decimals, int width = 0);

}  // namespace kiv
