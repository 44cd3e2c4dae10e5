#include "Preferences/AudioEditorTheme.h"

#include <gtest/gtest.h>

#include <random>

namespace kiv {
namespace {

using enum AudioEditorThemeColor;

const AudioEditorTheme dark = AudioEditorTheme::dark(), light = AudioEditorTheme::light();

// clang-format off
TEST(ThemeColor, textsAreReadAsHexadecimalWithOrWithoutAlpha) {
    const std::pair<std::string_view, std::optional<Rgba>> cases[] = {
        {"#1E1E1E", 0x1E1E1EFF}, {"1e1e1e", 0x1E1E1EFF}, {"#1E1E1E80", 0x1E1E1E80}, {" \t#aBcDeF\r\n", 0xABCDEFFF},
        {"#1E1E", {}}, {"#GGGGGG", {}}, {"", {}}, {"#", {}}, {"##1E1E1E", {}}, {"# 1E1E1E", {}}, {"#1E1E1E8", {}},
        {"+1E1E1", {}}, {"0x1E1E1E", {}}, {"#1E1E1E800", {}}, {"-1E1E1E8", {}}, {"#00000000", 0x00000000}};
    for (const auto &[text, read] : cases) EXPECT_EQ(parseColor(text), read) << '"' << text << '"';
}

// What a file does not give, or what cannot be read of it, comes from the fallback.
TEST(ThemeFile, givesTheColoursItHasAndCountsWhatItSkips) {
    const struct {
        std::string members;
        int recognised, skipped;
        AudioEditorThemeColor role = topbarBg;
        Rgba color = dark[topbarBg];
        double radius = 6;
    } cases[] = {
        {R"("wave_bg": "#010203", "author": 7, "Wave_fg": "#FFFFFF")", 1, 0, waveBg, 0x010203FF},
        {R"("wave_bg": "#12", "wave_fg": 5, "wave_grid": null, "accent_bg": ["#000000"], "accent_fg": "#0A0B0C")", 1, 4, accentFg, 0x0A0B0CFF},
        {R"("topbar_button_border": "#112233")", 1, 0, topbarButtonBorder, 0x112233FF},
        {R"("eq_analyzer_out": "#11223344")", 1, 0, eqAnalyzerOut, 0x11223344},
        {R"("topbar_button_radius": 0)", 1, 0, topbarBg, dark[topbarBg], 0}, {R"("topbar_button_radius": 9.5)", 1, 0, topbarBg, dark[topbarBg], 9.5},
        {R"("topbar_button_radius": -1)", 0, 1}, {R"("topbar_button_radius": true)", 0, 1}, {R"("topbar_button_radius": "six")", 0, 1},
        {"\"deep\": " + std::string(100000, '[') + std::string(100000, ']'), 0, 0}};
    for (const auto &each : cases) {
        const auto parsed = parseTheme("{" + each.members + "}", dark);
        ASSERT_TRUE(parsed) << each.members;
        AudioEditorTheme expected = dark;
        expected.colors[std::size_t(each.role)] = each.color;
        expected.buttonRadius = each.radius;
        EXPECT_EQ(parsed->theme, expected) << each.members;
        EXPECT_EQ(std::pair(parsed->recognised, parsed->skipped), std::pair(each.recognised, each.skipped)) << each.members;
    }
    for (const char *text : {"", "[]", "\"#000000\"", "17", "null", "{", "{\"wave_bg\": \"#000000\"", "{\"wave_bg\": \"\xFF\"",
                             "{\"topbar_button_radius\": 1e999}", "{} {}"})
        EXPECT_FALSE(parseTheme(text, dark)) << text;
    EXPECT_TRUE(parseTheme("\xEF\xBB\xBF{}", dark)) << "a byte order mark";
}

TEST(ThemeFile, whatIsExportedReadsBackTheSame) {
    std::mt19937 random(7);
    std::vector<AudioEditorTheme> themes{dark, light};
    for (int i = 0; i < 50; ++i) {
        for (Rgba &color : themes.emplace_back().colors) color = Rgba(random()) | (random() % 2 ? 0xFF : 0);
        themes.back().buttonRadius = double(random()) / 1e8;
    }
    for (const AudioEditorTheme &theme : themes) {
        const auto parsed = parseTheme(exportTheme(theme), AudioEditorTheme{});
        ASSERT_TRUE(parsed);
        EXPECT_TRUE(parsed->theme == theme && parsed->recognised == themeColorCount + 1 && parsed->skipped == 0);
    }
    for (const char *line : {"  \"topbar_bg\": \"#1F2329\",\n", "  \"wave_selection\": \"#A9C9FF30\",\n", "  \"topbar_button_radius\": 6\n}\n"})
        EXPECT_NE(exportTheme(dark).find(line), std::string::npos) << line;
}

TEST(ColorArithmetic, mixesEachChannelAndTellsContrastFromOneToTwentyOne) {
    EXPECT_EQ(mix(0x00000000, 0xFFFFFF00, 0.5), 0x808080FFu);
    EXPECT_EQ(mix(0x102030FF, 0xF0E0D0FF, 0), 0x102030FFu);
    EXPECT_EQ(mix(0x102030FF, 0xF0E0D010, 1), 0xF0E0D0FFu);
    EXPECT_EQ(mix(0xFF0000FF, 0x0000FFFF, 0.25), 0xBF0040FFu);
    EXPECT_EQ(withAlpha(0x12345678, 0.1), 0x1234561Au);
    const std::tuple<Rgba, Rgba, double> contrasts[] = {
        {0x000000FF, 0xFFFFFFFF, 21}, {0xFFFFFFFF, 0x000000FF, 21}, {0x777777FF, 0x777777FF, 1}, {0x777777FF, 0xFFFFFFFF, 4.478}};
    for (const auto &[a, b, ratio] : contrasts) EXPECT_NEAR(contrastRatio(a, b), ratio, 0.001);
}

TEST(DerivedColors, areMixedFromTheRoles) {
    using T = ThemeColors;
    const std::tuple<Rgba T::*, Rgba, Rgba> cases[] = {
        {&T::hairline, 0x393E44FF, 0xD6D9DDFF}, {&T::edge, 0x32363AFF, 0xDADCDFFF}, {&T::dim, 0xA7ACB3FF, 0x61676FFF},
        {&T::hover, 0x383D45FF, 0xEEEEEFFF}, {&T::pressed, 0x464B53FF, 0xDDDEDFFF}, {&T::disabled, 0x6E7379FF, 0x9EA2A8FF},
        {&T::modebar, 0x191C21FF, 0xF7F9FBFF}, {&T::well, 0x171A1FFF, 0xFAFBFCFF}, {&T::waveOuter, 0x396B6FFF, 0x71B2B8FF},
        {&T::zero, 0x2C4F53FF, 0xADD3D7FF}, {&T::lane, 0x16191DFF, 0xF1F3F6FF}, {&T::selectionEdge, 0x839CC6FF, 0x6290E8FF},
        {&T::panel, 0x23282FFF, 0xF9FAFBFF}, {&T::field, 0x1B1F25FF, 0xF5F5F5FF}, {&T::fieldBorder, 0x747880FF, 0x8D9094FF},
        {&T::dialogDim, 0xB1B6BCFF, 0x5B5F65FF}, {&T::dialogLine, 0x40454DFF, 0xE1E2E3FF}, {&T::over, 0xFF5F5FFF, 0xC62828FF},
        {&T::panelEdge, 0xFFFFFF1A, 0x141E2D29}, {&T::shadow, 0x0000008C, 0x141E2D47}, {&T::fullScale, 0x535A63FF, 0xADB4BDFF},
        {&T::loopMark, 0x6287C0FF, 0x5A8BDFFF}};
    for (const auto &[color, inDark, inLight] : cases) {
        EXPECT_EQ(T(dark).*color, inDark) << std::hex << T(dark).*color;
        EXPECT_EQ(T(light).*color, inLight) << std::hex << T(light).*color;
    }
    EXPECT_TRUE(T(dark).isDark && !T(light).isDark);
}

TEST(BuiltInThemes, textIsReadableAndMarksStandOutFromWhatTheyStandOn) {
    for (const AudioEditorTheme &theme : {dark, light}) {
        const ThemeColors c(theme);
        const std::pair<Rgba, Rgba> texts[] = {
            {c[topbarButtonText], c[topbarButtonBg]}, {c[topbarButtonText], c.hover}, {c[topbarButtonText], c.pressed},
            {c[topbarActionText], c[topbarActionBg]}, {c[accentFg], c[accentBg]}, {c[topbarButtonText], c[topbarBg]}, {c.dim, c[topbarBg]},
            {c.dim, c.modebar}, {c.dim, c.panel}, {c[rulerText], c[rulerBg]}, {c[rulerText], c.lane}, {c[infoText], c[topbarBg]},
            {c[infoText], c[waveBg]}, {c[dialogText], c[dialogBg]}, {c[dialogText], c.field}, {c.dialogDim, c[dialogBg]},
            {c.dialogDim, c.field}, {c.over, c[dialogBg]}, {c.over, c[topbarBg]}};
        const std::pair<Rgba, Rgba> marks[] = {
            {c[waveCursor], c[waveBg]}, {c[wavePlayhead], c[waveBg]}, {c[waveMarker], c.lane}, {c[accentBg], c[waveBg]}, {c.loopMark, c.lane},
            {c[accentBg], c[topbarBg]}, {c[accentBg], c[dialogBg]}, {c.fieldBorder, c[dialogBg]}, {c.selectionEdge, c[waveBg]}};
        for (const auto &[text, ground] : texts) EXPECT_GE(contrastRatio(text, ground), 4.5) << std::hex << text << " on " << ground;
        for (const auto &[mark, ground] : marks) EXPECT_GE(contrastRatio(mark, ground), 3) << std::hex << mark << " on " << ground;
        EXPECT_NEAR(contrastRatio(c[waveFg], c[waveBg]), c.isDark ? 8.6 : 4.6, 0.06);
        EXPECT_NEAR(contrastRatio(c.waveOuter, c[waveBg]), c.isDark ? 3.0 : 2.4, 0.06);
    }
}
// clang-format on

}  // namespace
}  // namespace kiv
