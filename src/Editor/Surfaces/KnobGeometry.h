#pragma once

namespace kiv {

// Places on a knob in its box of 38 x 36, in logical pixels from the box's upper left corner. Angles are in degrees, 0 at the
// top, clockwise; the knob turns from −135 to +135.
struct KnobGeometry {
    struct Point {
        double x = 0, y = 0;
    };
    struct Arc {
        double from = 0, sweep = 0;
    };

    static constexpr int width = 38, height = 36;
    static constexpr double track = 3;           // thickness
    static constexpr double trackRadius = 15.5;  // of its middle line
    static constexpr double faceRadius = 10.5;
    static constexpr double pointerFrom = 3, pointerTo = 9.5;

    static Point centre() { return {width / 2.0, height / 2.0}; }
    static double angle(double fraction) { return -135 + 270 * fraction; }
    // The part of the track between two fractions.
    static Arc arc(double origin, double fraction) { return {angle(origin), angle(fraction) - angle(origin)}; }
    // The place at a distance from the centre in the direction of a fraction.
    static Point at(double fraction, double distance);
};

}  // namespace kiv
