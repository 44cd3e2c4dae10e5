#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// The colours of the editor: 23 roles and one corner radius, and the colours derived from them.
namespace kiv {

// clang-format off
enum class AudioEditorThemeColor {
    topbarBg, topbarButtonBg, topbarButtonBorder, topbarButtonText, topbarActionBg, topbarActionBorder, topbarActionText,
    accentBg, accentFg, rulerBg, rulerText, waveBg, waveFg, waveGrid, waveSelection, waveCursor, wavePlayhead, waveMarker,
    infoText, dialogBg, dialogText, eqAnalyzerIn, eqAnalyzerOut,
};
// clang-format on
inline constexpr int themeColorCount = 23;
std::string_view jsonKey(AudioEditorThemeColor color);

using Rgba = std::uint32_t;  // red in the most significant byte, alpha in the least

struct AudioEditorTheme {
    std::array<Rgba, themeColorCount> colors{};
    double buttonRadius = 6;  // pixels

    Rgba operator[](AudioEditorThemeColor color) const { return colors[std::size_t(color)]; }

    static const AudioEditorTheme &dark();
    static const AudioEditorTheme &light();
    static const AudioEditorTheme &standard() { return dark(); }  // stands in for every colour that is missing
    friend bool operator==(const AudioEditorTheme &, const AudioEditorTheme &) = default;
};

// "#1E1E1E", "1e1e1e80"; nothing when it cannot be read.
std::optional<Rgba> parseColor(std::string_view text);

struct ParsedTheme {
    AudioEditorTheme theme;
    int recognised = 0;
    int skipped = 0;  // members with one of our names whose value cannot be read
};
// A theme file's text; nothing when it is no JSON object. Missing and unreadable colours come from the fallback.
std::optional<ParsedTheme> parseTheme(std::string_view json, const AudioEditorTheme &fallback);
// The same as a file, so that it reads back equal.
std::string exportTheme(const AudioEditorTheme &theme);

// a + (b − a) · t per sRGB channel, alpha taken as opaque.
Rgba mix(Rgba a, Rgba b, double t);
Rgba withAlpha(Rgba color, double alpha);
double relativeLuminance(Rgba color);  // 0 … 1, WCAG 2
double contrastRatio(Rgba a, Rgba b);  // 1 … 21, WCAG 2

// What the roles give by mixing, so that any theme stays whole.
struct ThemeColors {
    explicit ThemeColors(const AudioEditorTheme &theme);

    AudioEditorTheme theme;
    bool isDark;
    Rgba hairline, edge, dim, hover, pressed, disabled, modebar, well, waveOuter, zero, lane, selectionEdge, panel, field,
        fieldBorder, dialogDim, dialogLine, over, panelEdge, shadow, fullScale, loopMark;

    Rgba operator[](AudioEditorThemeColor color) const { return theme[color]; }
};

}  // namespace kiv
