#pragma once

#include "Support/Observers.h"

namespace kiv {

// Whether the desktop asks for dark windows, and its other wishes. Main thread only; never blocks.
class Appearance {
public:
    virtual ~Appearance() = default;
    virtual bool isDark() const = 0;
    virtual bool reducesMotion() const = 0;
    // Told after either has changed.
    Observers<Appearance> changed;
};

}  // namespace kiv
