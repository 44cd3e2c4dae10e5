#include "Preferences/AudioEditorTheme.h"

#include <cmath>

namespace kiv {
namespace {

constexpr int redShift = 24, greenShift = 16, blueShift = 8;
constexpr Rgba opaque = 0xFF;

struct Row {
    std::string_view key;
    Rgba dark, light;
};

// In the order of AudioEditorThemeColor.
// clang-format off
constexpr std::array<Row, themeColorCount> rows{{
    {"topbar_bg",            0x1F2329FF, 0xF2F4F7FF},
    {"topbar_button_bg",     0x2A2F37FF, 0xFFFFFFFF},
    {"topbar_button_border", 0x3B424DFF, 0xC8CFD8FF},
    {"topbar_button_text",   0xDCE1E8FF, 0x29303AFF},
    {"topbar_action_bg",     0x23416CFF, 0xDCE9FFFF},
    {"topbar_action_border", 0x3D68A3FF, 0x98BAF2FF},
    {"topbar_action_text",   0xD8E7FFFF, 0x10418CFF},
    {"accent_bg",            0x7FB2FFFF, 0x1F62D6FF},
    {"accent_fg",            0x0A1628FF, 0xFFFFFFFF},
    {"ruler_bg",             0x191C21FF, 0xE8EBEFFF},
    {"ruler_text",           0xA6AFBBFF, 0x515C6AFF},
    {"wave_bg",              0x121519FF, 0xFCFDFEFF},
    {"wave_fg",              0x5FC0C5FF, 0x14808AFF},
    {"wave_grid",            0x262C34FF, 0xDFE4EAFF},
    {"wave_selection",       0xA9C9FF30, 0x2E6BE026},
    {"wave_cursor",          0xF4F7FAFF, 0x12161CFF},
    {"wave_playhead",        0xFF8468FF, 0xD43C1AFF},
    {"wave_marker",          0xF2C063FF, 0x8A5200FF},
    {"info_text",            0xB3BCC8FF, 0x48535FFF},
    {"dialog_bg",            0x272C34FF, 0xFFFFFFFF},
    {"dialog_text",          0xE7EBF1FF, 0x1B2129FF},
    {"eq_analyzer_in",       0x9AA5B4A6, 0x566170B8},
    {"eq_analyzer_out",      0x5FC0C5CC, 0x0F7680CC},
}};
// clang-format on

AudioEditorTheme builtIn(Rgba Row::*palette) {
    AudioEditorTheme theme;
    for (std::size_t i = 0; i < rows.size(); ++i) theme.colors[i] = rows[i].*palette;
    return theme;
}

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\n\v\f\r";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

double component(Rgba color, int shift) { return double(color >> shift & 0xFF); }

double linear(double component) {
    const double c = component / 255;
    return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
}

}  // namespace

std::string_view jsonKey(AudioEditorThemeColor color) { return rows[std::size_t(color)].key; }

const AudioEditorTheme &AudioEditorTheme::dark() {
    static const AudioEditorTheme theme = builtIn(&Row::dark);
    return theme;
}

const AudioEditorTheme &AudioEditorTheme::light() {
    static const AudioEditorTheme theme = builtIn(&Row::light);
    return theme;
}

std::optional<Rgba> parseColor(std::string_view text) {
    text = trimmed(text);
    if (text.starts_with('#')) text.remove_prefix(1);
    if (text.size() != 6 && text.size() != 8) return std::nullopt;
    Rgba value = 0;
    for (const char c : text) {
        const int digit = hexDigit(c);
        if (digit < 0) return std::nullopt;
        value = value << 4 | Rgba(digit);
    }
    return text.size() == 6 ? value << 8 | opaque : value;
}

Rgba mix(Rgba a, Rgba b, double t) {
    Rgba result = opaque;
    for (const int shift : {redShift, greenShift, blueShift}) {
        const double from = component(a, shift), to = component(b, shift);
        result |= Rgba(std::lround(from + (to - from) * t)) << shift;
    }
    return result;
}

Rgba withAlpha(Rgba color, double alpha) { return (color & ~opaque) | Rgba(std::lround(alpha * 255)); }

double relativeLuminance(Rgba color) {
    return 0.2126 * linear(component(color, redShift)) + 0.7152 * linear(component(color, greenShift)) +
           0.0722 * linear(component(color, blueShift));
}

double contrastRatio(Rgba a, Rgba b) {
    const double first = relativeLuminance(a) + 0.05, second = relativeLuminance(b) + 0.05;
    return first > second ? first / second : second / first;
}

ThemeColors::ThemeColors(const AudioEditorTheme &from)
    : theme(from), isDark(relativeLuminance(from[AudioEditorThemeColor::waveBg]) < 0.18) {
    using enum AudioEditorThemeColor;
    const auto mixed = [&](AudioEditorThemeColor a, AudioEditorThemeColor b, double t) { return mix(from[a], from[b], t); };
    hairline = mixed(topbarBg, topbarButtonText, 0.14);
    edge = mixed(waveBg, topbarButtonText, 0.16);
    dim = mixed(topbarBg, topbarButtonText, 0.72);
    hover = mixed(topbarButtonBg, topbarButtonText, 0.08);
    pressed = mixed(topbarButtonBg, topbarButtonText, 0.16);
    disabled = mixed(topbarBg, topbarButtonText, 0.42);
    modebar = mixed(topbarBg, waveBg, 0.5);
    well = mixed(topbarBg, waveBg, isDark ? 0.62 : 0.75);
    waveOuter = mixed(waveBg, waveFg, isDark ? 0.50 : 0.60);
    zero = mixed(waveBg, waveFg, 0.34);
    lane = mixed(rulerBg, waveBg, 0.45);
    selectionEdge = mixed(waveBg, waveSelection, 0.75);
    panel = mixed(topbarBg, dialogBg, 0.5);
    field = isDark ? mixed(dialogBg, waveBg, 0.55) : mixed(dialogBg, dialogText, 0.045);
    fieldBorder = mixed(dialogBg, dialogText, isDark ? 0.40 : 0.50);
    dialogDim = mixed(dialogBg, dialogText, 0.72);
    dialogLine = mixed(dialogBg, dialogText, 0.13);
    over = isDark ? 0xFF5F5FFF : 0xC62828FF;
    panelEdge = isDark ? withAlpha(0xFFFFFFFF, 0.10) : withAlpha(0x141E2DFF, 0.16);
    shadow = isDark ? withAlpha(0x000000FF, 0.55) : withAlpha(0x141E2DFF, 0.28);
    fullScale = mixed(waveGrid, rulerText, 0.35);
    loopMark = mix(lane, from[accentBg], 0.72);
}

}  // namespace kiv
