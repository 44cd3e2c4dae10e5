#pragma once

#include <optional>
#include <string>

#include "Support/Observers.h"

namespace kiv {

// A font of the desktop's; points are those of a screen at 96 dots an inch.
struct DesktopFont {
    std::string family;
    double points = 10;

    friend bool operator==(const DesktopFont &, const DesktopFont &) = default;
};

// Whether the desktop asks for dark windows, and its other wishes. Main thread only; never blocks.
class Appearance {
public:
    virtual ~Appearance() = default;
    virtual bool isDark() const = 0;
    virtual bool reducesMotion() const = 0;
    // The desktop's interface font, if it says.
    virtual std::optional<DesktopFont> font() const { return std::nullopt; }
    // Told after any has changed.
    Observers<Appearance> changed;
};

}  // namespace kiv
