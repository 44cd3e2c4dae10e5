#include "Editor/Surfaces/KnobGeometry.h"

#include <cmath>
#include <numbers>

namespace kiv {

KnobGeometry::Point KnobGeometry::at(double fraction, double distance) {
    const double radians = angle(fraction) * std::numbers::pi / 180;
    return {centre().x + distance * std::sin(radians), centre().y - distance * std::cos(radians)};
}

}  // namespace kiv
