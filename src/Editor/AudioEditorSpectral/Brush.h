#pragma once

#include <array>
#include <string>
#include <string_view>

namespace kiv::AudioEditorSpectral {

enum class Brush { attenuate, accentuate };
std::string_view storedText(Brush brush);
Brush brushFromText(std::string_view text);  // anything but "accentuate" is attenuate
Brush otherBrush(Brush brush);

// The level of one pass, as a gain: 1 − i / 100 down, up to +12 dB up. The intensity is clamped to 0 … 100 %.
float passFactor(Brush brush, int intensity);
// The same in decibels, with a sign: "-6.0 dB", "0 dB", "-∞ dB".
std::string levelText(Brush brush, int intensity);

// A round dab: how much of a pass it is, whole in the inner half of the radius and falling off to nothing at its rim, and the
// gain that this share of a pass has: so much of its decibels.
class BrushProfile {
public:
    explicit BrushProfile(float factor);

    struct Value {
        float coverage, gain;
    };
    // For the square of the distance from the centre, in radii: below 1.
    const Value &at(double squaredDistance) const { return values_[std::size_t(squaredDistance * steps)]; }

private:
    static constexpr int steps = 1024;
    std::array<Value, steps + 1> values_;
};

}  // namespace kiv::AudioEditorSpectral
