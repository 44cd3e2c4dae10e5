#include "Preferences/AudioEditorTheme.h"

#include <gtest/gtest.h>

#include <random>

namespace kiv {
namespace {

using enum AudioEditorThemeColor;

TEST(ThemeColor, textsAreReadAsHexadecimalWithOrWithoutAlpha) {
    const struct {
        std::string_view text;
        std::optional<Rgba> read;
    } cases[] = {
        // clang-format off
        {"#1E1E1E", 0x1E1E1EFF}, {"1e1e1e", 0x1E1E1EFF}, {"#1E1E1E80", 0x1E1E1E80}, {" \t#aBcDeF\r\n", 0xABCDEFFF},
        {"#1E1E", {}}, {"#GGGGGG", {}}, {"", {}}, {"#", {}}, {"##1E1E1E", {}}, {"# 1E1E1E", {}}, {"#1E1E1E8", {}},
        {"+1E1E1", {}}, {"0x1E1E1E", {}}, {"#1E1E1E800", {}}, {"-1E1E1E8", {}}, {"#00000000", 0x00000000},
        // clang-format on
    };
    for (const auto &[text, read] : cases) EXPECT_EQ(parseColor(text), read) << '"' << text << '"';
}

TEST(ThemeFile, keysAreTheRolesNamesInLowerCase) {
    EXPECT_EQ(jsonKey(topbarBg), "topbar_bg");
    EXPECT_EQ(jsonKey(topbarButtonBorder), "topbar_button_border");
    EXPECT_EQ(jsonKey(accentFg), "accent_fg");
    EXPECT_EQ(jsonKey(waveSelection), "wave_selection");
    EXPECT_EQ(jsonKey(eqAnalyzerOut), "eq_analyzer_out");
}

TEST(ThemeFile, whatItDoesNotGiveComesFromTheFallback) {
    const auto parsed = parseTheme(R"({"wave_bg": "#010203", "author": 7, "Wave_fg": "#FFFFFF"})", AudioEditorTheme::light());
    ASSERT_TRUE(parsed);
    AudioEditorTheme expected = AudioEditorTheme::light();
    expected.colors[std::size_t(waveBg)] = 0x010203FF;
    EXPECT_EQ(parsed->theme, expected);
    EXPECT_EQ(parsed->recognised, 1);
    EXPECT_EQ(parsed->skipped, 0);
}

TEST(ThemeFile, unreadableMembersAreCountedAndReplaced) {
    const auto parsed = parseTheme(
        R"({"wave_bg": "#12", "wave_fg": 5, "wave_grid": null, "accent_bg": ["#000000"], "accent_fg": "#0A0B0C",
            "topbar_button_radius": "six"})",
        AudioEditorTheme::dark());
    ASSERT_TRUE(parsed);
    EXPECT_EQ(parsed->skipped, 5);
    EXPECT_EQ(parsed->recognised, 1);
    AudioEditorTheme expected = AudioEditorTheme::dark();
    expected.colors[std::size_t(accentFg)] = 0x0A0B0CFF;
    EXPECT_EQ(parsed->theme, expected);
}

TEST(ThemeFile, theRadiusIsANumberFromZeroOn) {
    const struct {
        const char *text;
        double radius;
        int skipped;
    } cases[] = {{"0", 0, 0}, {"9.5", 9.5, 0}, {"1e1", 10, 0}, {"-1", 6, 1}, {"true", 6, 1}, {"null", 6, 1}};
    for (const auto &each : cases) {
        const auto parsed = parseTheme(std::string(R"({"topbar_button_radius": )") + each.text + "}", AudioEditorTheme::dark());
        ASSERT_TRUE(parsed) << each.text;
        EXPECT_EQ(parsed->theme.buttonRadius, each.radius) << each.text;
        EXPECT_EQ(parsed->skipped, each.skipped) << each.text;
    }
}

TEST(ThemeFile, whatIsNoObjectIsNoTheme) {
    for (const char *text : {"", "[]", "\"#000000\"", "17", "null", "{", "{\"wave_bg\": \"#000000\"", "{\"wave_bg\": \"\xFF\"}",
                             "{\"topbar_button_radius\": 1e999}", "{} {}"})
        EXPECT_FALSE(parseTheme(text, AudioEditorTheme::dark())) << text;
    EXPECT_TRUE(parseTheme("\xEF\xBB\xBF{}", AudioEditorTheme::dark())) << "a byte order mark";
    EXPECT_TRUE(
        parseTheme("{\"deep\": " + std::string(100000, '[') + std::string(100000, ']') + "}", AudioEditorTheme::dark()));
}

TEST(ThemeFile, whatIsExportedReadsBackTheSame) {
    std::mt19937 random(7);
    std::vector<AudioEditorTheme> themes{AudioEditorTheme::dark(), AudioEditorTheme::light()};
    for (int i = 0; i < 50; ++i) {
        AudioEditorTheme theme;
        for (Rgba &color : theme.colors) color = Rgba(random()) | (random() % 2 ? 0xFF : 0);
        theme.buttonRadius = double(random()) / 1e8;
        themes.push_back(theme);
    }
    for (const AudioEditorTheme &theme : themes) {
        const auto parsed = parseTheme(exportTheme(theme), AudioEditorTheme{});
        ASSERT_TRUE(parsed);
        EXPECT_EQ(parsed->theme, theme);
        EXPECT_EQ(parsed->recognised, themeColorCount + 1);
        EXPECT_EQ(parsed->skipped, 0);
    }
}

TEST(ThemeFile, opaqueColoursAreExportedWithoutAlpha) {
    const std::string text = exportTheme(AudioEditorTheme::dark());
    EXPECT_NE(text.find("  \"topbar_bg\": \"#1F2329\",\n"), std::string::npos) << text;
    EXPECT_NE(text.find("  \"wave_selection\": \"#A9C9FF30\",\n"), std::string::npos) << text;
    EXPECT_NE(text.find("  \"topbar_button_radius\": 6\n}\n"), std::string::npos) << text;
}

TEST(ColorArithmetic, mixesEachChannelAndForgetsAlpha) {
    EXPECT_EQ(mix(0x00000000, 0xFFFFFF00, 0.5), 0x808080FFu);
    EXPECT_EQ(mix(0x102030FF, 0xF0E0D0FF, 0), 0x102030FFu);
    EXPECT_EQ(mix(0x102030FF, 0xF0E0D010, 1), 0xF0E0D0FFu);
    EXPECT_EQ(mix(0xFF0000FF, 0x0000FFFF, 0.25), 0xBF0040FFu);
    EXPECT_EQ(withAlpha(0x12345678, 0.1), 0x1234561Au);
}

TEST(ColorArithmetic, contrastIsFromOneToTwentyOne) {
    EXPECT_DOUBLE_EQ(contrastRatio(0x000000FF, 0xFFFFFFFF), 21);
    EXPECT_DOUBLE_EQ(contrastRatio(0x777777FF, 0x777777FF), 1);
    EXPECT_NEAR(contrastRatio(0x777777FF, 0xFFFFFFFF), 4.478, 0.001);
    EXPECT_DOUBLE_EQ(contrastRatio(0xFFFFFFFF, 0x123456FF), contrastRatio(0x123456FF, 0xFFFFFFFF));
}

TEST(DerivedColors, areMixedFromTheRoles) {
    const ThemeColors dark(AudioEditorTheme::dark()), light(AudioEditorTheme::light());
    ASSERT_TRUE(dark.isDark);
    ASSERT_FALSE(light.isDark);
    const struct {
        const char *name;
        Rgba ThemeColors::*color;
        Rgba dark, light;
    } cases[] = {
        // clang-format off
        {"hairline", &ThemeColors::hairline, 0x393E44FF, 0xD6D9DDFF}, {"edge", &ThemeColors::edge, 0x32363AFF, 0xDADCDFFF},
        {"dim", &ThemeColors::dim, 0xA7ACB3FF, 0x61676FFF}, {"hover", &ThemeColors::hover, 0x383D45FF, 0xEEEEEFFF},
        {"pressed", &ThemeColors::pressed, 0x464B53FF, 0xDDDEDFFF},
        {"disabled", &ThemeColors::disabled, 0x6E7379FF, 0x9EA2A8FF},
        {"modebar", &ThemeColors::modebar, 0x191C21FF, 0xF7F9FBFF}, {"well", &ThemeColors::well, 0x171A1FFF, 0xFAFBFCFF},
        {"waveOuter", &ThemeColors::waveOuter, 0x396B6FFF, 0x71B2B8FF}, {"zero", &ThemeColors::zero, 0x2C4F53FF, 0xADD3D7FF},
        {"lane", &ThemeColors::lane, 0x16191DFF, 0xF1F3F6FF},
        {"selectionEdge", &ThemeColors::selectionEdge, 0x839CC6FF, 0x6290E8FF},
        {"panel", &ThemeColors::panel, 0x23282FFF, 0xF9FAFBFF}, {"field", &ThemeColors::field, 0x1B1F25FF, 0xF5F5F5FF},
        {"fieldBorder", &ThemeColors::fieldBorder, 0x747880FF, 0x8D9094FF},
        {"dialogDim", &ThemeColors::dialogDim, 0xB1B6BCFF, 0x5B5F65FF},
        {"dialogLine", &ThemeColors::dialogLine, 0x40454DFF, 0xE1E2E3FF},
        {"over", &ThemeColors::over, 0xFF5F5FFF, 0xC62828FF}, {"panelEdge", &ThemeColors::panelEdge, 0xFFFFFF1A, 0x141E2D29},
        {"shadow", &ThemeColors::shadow, 0x0000008C, 0x141E2D47},
        {"fullScale", &ThemeColors::fullScale, 0x535A63FF, 0xADB4BDFF},
        {"loopMark", &ThemeColors::loopMark, 0x6287C0FF, 0x5A8BDFFF},
        // clang-format on
    };
    for (const auto &each : cases) {
        EXPECT_EQ(dark.*each.color, each.dark) << each.name << std::hex << " dark " << dark.*each.color;
        EXPECT_EQ(light.*each.color, each.light) << each.name << std::hex << " light " << light.*each.color;
    }
}

TEST(BuiltInThemes, textIsReadableOnWhatItStandsOn) {
    for (const AudioEditorTheme &theme : {AudioEditorTheme::dark(), AudioEditorTheme::light()}) {
        const ThemeColors c(theme);
        const struct {
            const char *name;
            Rgba text, ground;
        } cases[] = {
            // clang-format off
            {"button", c[topbarButtonText], c[topbarButtonBg]}, {"hovered button", c[topbarButtonText], c.hover},
            {"pressed button", c[topbarButtonText], c.pressed}, {"action", c[topbarActionText], c[topbarActionBg]},
            {"accent", c[accentFg], c[accentBg]}, {"position", c[topbarButtonText], c[topbarBg]},
            {"label on bar", c.dim, c[topbarBg]}, {"label on mode bar", c.dim, c.modebar},
            {"label on panel", c.dim, c.panel}, {"ruler", c[rulerText], c[rulerBg]}, {"lane", c[rulerText], c.lane},
            {"info", c[infoText], c[topbarBg]}, {"drop list", c[infoText], c[waveBg]},
            {"dialog", c[dialogText], c[dialogBg]}, {"field", c[dialogText], c.field}, {"help", c.dialogDim, c[dialogBg]},
            {"unit", c.dialogDim, c.field}, {"error", c.over, c[dialogBg]}, {"max level", c.over, c[topbarBg]},
            // clang-format on
        };
        for (const auto &each : cases)
            EXPECT_GE(contrastRatio(each.text, each.ground), 4.5) << each.name << (c.isDark ? ", dark" : ", light");
    }
}

TEST(BuiltInThemes, marksStandOutFromTheirGround) {
    for (const AudioEditorTheme &theme : {AudioEditorTheme::dark(), AudioEditorTheme::light()}) {
        const ThemeColors c(theme);
        const struct {
            const char *name;
            Rgba mark, ground;
        } cases[] = {
            // clang-format off
            {"cursor", c[waveCursor], c[waveBg]}, {"playhead", c[wavePlayhead], c[waveBg]},
            {"marker", c[waveMarker], c.lane}, {"loop", c[accentBg], c[waveBg]}, {"loop elsewhere", c.loopMark, c.lane},
            {"focus on bar", c[accentBg], c[topbarBg]}, {"focus in sheet", c[accentBg], c[dialogBg]},
            {"field border", c.fieldBorder, c[dialogBg]}, {"selection edge", c.selectionEdge, c[waveBg]},
            // clang-format on
        };
        for (const auto &each : cases)
            EXPECT_GE(contrastRatio(each.mark, each.ground), 3) << each.name << (c.isDark ? ", dark" : ", light");
        EXPECT_NEAR(contrastRatio(c[waveFg], c[waveBg]), c.isDark ? 8.6 : 4.6, 0.06);
        EXPECT_NEAR(contrastRatio(c.waveOuter, c[waveBg]), c.isDark ? 3.0 : 2.4, 0.06);
    }
}

}  // namespace
}  // namespace kiv
