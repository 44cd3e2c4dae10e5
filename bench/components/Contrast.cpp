#include "Contrast.h"

#include <algorithm>
#include <cstdio>
#include <vector>

namespace kiv {

namespace {

using enum AudioEditorThemeColor;

constexpr double forText = 4.5, forMarks = 3;

struct Pair {
    const char *what;
    Rgba front, ground;
    double least;
};

// A colour with an alpha as it comes out on an opaque one.
Rgba over(Rgba color, Rgba ground) { return mix(ground, color, double(color & 0xFF) / 255); }

std::vector<Pair> texts(const ThemeColors &c) {
    const Rgba bar = c[topbarBg], button = c[topbarButtonBg], dialog = c[dialogBg], wave = c[waveBg];
    return {
        {"button", c[topbarButtonText], button, forText},
        {"button under the pointer", c[topbarButtonText], c.hover, forText},
        {"button pressed", c[topbarButtonText], c.pressed, forText},
        {"action button", c[topbarActionText], c[topbarActionBg], forText},
        {"action button under the pointer", c[topbarActionText], mix(c[topbarActionBg], c[topbarActionText], 0.08), forText},
        {"action button pressed", c[topbarActionText], mix(c[topbarActionBg], c[topbarActionText], 0.16), forText},
        {"switched on", c[accentFg], c[accentBg], forText},
        {"switched on, under the pointer", c[accentFg], mix(c[accentBg], c[topbarButtonText], 0.08), forText},
        {"switched on, pressed", c[accentFg], mix(c[accentBg], c[topbarButtonText], 0.16), forText},
        {"value on a bar", c[topbarButtonText], bar, forText},
        {"label on a bar", c.dim, bar, forText},
        {"label on a mode bar", c.dim, c.modebar, forText},
        {"label in a hovered cell", c.dim, button, forText},
        {"label while typing in a cell", c.dim, wave, forText},
        {"info line", c[infoText], bar, forText},
        {"drop window's list", c[infoText], wave, forText},
        {"ruler", c[rulerText], c[rulerBg], forText},
        {"sheet", c[dialogText], dialog, forText},
        {"sheet, secondary", c.dialogDim, dialog, forText},
        {"sheet, over full scale", c.over, dialog, forText},
        {"bar, over full scale", c.over, button, forText},
        {"field", c[dialogText], c.field, forText},
        {"field's unit", c.dialogDim, c.field, forText},
        {"chosen row", c[dialogText], mix(dialog, c[accentBg], 0.22), forText},
        {"chosen row, secondary", mix(dialog, c[dialogText], 0.8), mix(dialog, c[accentBg], 0.22), forText},
        {"note box", c[dialogText], mix(dialog, c[dialogText], 0.055), forText},
        {"label on a window's band", c.dialogDim, mix(dialog, c[dialogText], 0.035), forText},
        {"panel", c[dialogText], c.panel, forText},
        {"knob that is off", mix(dialog, c[dialogText], 0.72), dialog, forText},
        {"key in a mono tile", c.dialogDim, wave, forText},
    };
}

std::vector<Pair> marks(const ThemeColors &c) {
    const Rgba dialog = c[dialogBg], wave = c[waveBg];
    return {
        {"waveform", c[waveFg], wave, forMarks},
        {"waveform, selected", c[waveFg], over(c[waveSelection], wave), forMarks},
        {"cursor", c[waveCursor], wave, forMarks},
        {"playhead", c[wavePlayhead], wave, forMarks},
        {"marker", c[waveMarker], wave, forMarks},
        {"loop", c[accentBg], wave, forMarks},
        {"focus ring on a bar", c[accentBg], c[topbarBg], forMarks},
        {"focus ring in a sheet", c[accentBg], dialog, forMarks},
        {"field border", c.fieldBorder, dialog, forMarks},
        {"error border", c.over, dialog, forMarks},
        {"slider's thumb", c[dialogText], dialog, forMarks},
        {"slider's fill", c[accentBg], dialog, forMarks},
        {"knob's arc", c[accentBg], dialog, forMarks},
        {"knob's arc, off", mix(dialog, c[dialogText], c.isDark ? 0.42 : 0.50), dialog, forMarks},
        {"warning sign", c[waveMarker], dialog, forMarks},
    };
}

int print(const std::vector<Pair> &pairs) {
    int below = 0;
    double lowest = 21;
    for (const Pair &pair : pairs) {
        const double ratio = contrastRatio(pair.front, pair.ground);
        lowest = std::min(lowest, ratio);
        below += ratio < pair.least;
        std::printf("  %-34s %5.2f%s\n", pair.what, ratio, ratio < pair.least ? "  too low" : "");
    }
    std::printf("  lowest %.2f\n", lowest);
    return below;
}

}  // namespace

int printContrast(const char *name, const AudioEditorTheme &theme) {
    const ThemeColors colors(theme);
    std::printf("%s, texts (at least %.1f)\n", name, forText);
    const int below = print(texts(colors));
    std::printf("%s, marks (at least %.1f)\n", name, forMarks);
    return below + print(marks(colors));
}

}  // namespace kiv
