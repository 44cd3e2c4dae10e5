#include "Editor/Surfaces/SpectrumRamp.h"

#include <algorithm>
#include <cmath>

#include "Editor/AudioEditorSpectral/Analysis.h"

namespace kiv {
namespace {

struct Stop {
    double at;
    Rgba color;
};
using Stops = std::array<Stop, 5>;
using Color = AudioEditorThemeColor;

constexpr Rgba black = 0x000000FF, white = 0xFFFFFFFF;

Stops stops(const ThemeColors &c) {
    const Rgba bg = c[Color::waveBg], accent = c[Color::accentBg], wave = c[Color::waveFg];
    const Rgba middle = mix(accent, wave, 0.62);
    if (c.isDark)
        return {{{0, bg},
                 {0.28, mix(bg, accent, 0.34)},
                 {0.58, mix(middle, bg, 0.18)},
                 {0.82, mix(wave, c[Color::waveMarker], 0.62)},
                 {1, mix(c[Color::waveMarker], white, 0.70)}}};
    return {{{0, bg},
             {0.28, mix(bg, accent, 0.26)},
             {0.58, mix(middle, bg, 0.22)},
             {0.82, mix(accent, black, 0.52)},
             {1, mix(accent, black, 0.88)}}};
}

Rgba colorAt(const Stops &list, double at) {
    std::size_t next = 1;
    while (next + 1 < list.size() && list[next].at < at) ++next;
    const Stop &from = list[next - 1], &to = list[next];
    return mix(from.color, to.color, (at - from.at) / (to.at - from.at));
}

}  // namespace

std::array<Rgba, 256> spectrumRamp(const AudioEditorTheme &theme) {
    const Stops list = stops(ThemeColors(theme));
    std::array<Rgba, 256> ramp;
    for (std::size_t i = 0; i < ramp.size(); ++i) ramp[i] = colorAt(list, double(i) / 255);
    return ramp;
}

std::uint8_t spectrumIndex(double levelDb) {
    return std::uint8_t(std::lround(255 * std::pow(std::clamp((levelDb + 84) / 70, 0.0, 1.0), 1.12)));
}

std::array<std::uint8_t, 256> spectrumIndices(double gainDb) {
    std::array<std::uint8_t, 256> indices;
    for (std::size_t level = 0; level < indices.size(); ++level)
        indices[level] = spectrumIndex(AudioEditorSpectral::Analysis::levelDb(std::uint8_t(level)) + gainDb);
    return indices;
}

}  // namespace kiv
