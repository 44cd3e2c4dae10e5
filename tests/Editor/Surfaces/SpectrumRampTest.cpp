#include "Editor/Surfaces/SpectrumRamp.h"

#include <gtest/gtest.h>

namespace kiv {
namespace {

TEST(SpectrumRamp, RunsThroughItsStopsInBothThemes) {
    const ThemeColors dark(AudioEditorTheme::dark()), light(AudioEditorTheme::light());
    using Color = AudioEditorThemeColor;
    const auto darkRamp = spectrumRamp(dark.theme), lightRamp = spectrumRamp(light.theme);
    EXPECT_EQ(darkRamp[0], dark[Color::waveBg]);
    EXPECT_EQ(lightRamp[0], light[Color::waveBg]);
    EXPECT_EQ(darkRamp[255], mix(dark[Color::waveMarker], 0xFFFFFFFF, 0.7));
    EXPECT_EQ(lightRamp[255], mix(light[Color::accentBg], 0x000000FF, 0.88));
    for (std::size_t i = 1; i < 256; ++i) {
        EXPECT_LE(relativeLuminance(lightRamp[i]), relativeLuminance(lightRamp[i - 1]) + 1e-9) << i;
        const double step = relativeLuminance(darkRamp[i]) - relativeLuminance(darkRamp[i - 1]);
        EXPECT_LT(std::abs(step), 0.03) << i;
    }
}

TEST(SpectrumRamp, ShowsSeventyDecibels) {
    const std::pair<double, int> cases[] = {{-200, 0}, {-84, 0}, {-49, 117}, {-14, 255}, {6, 255}};
    for (const auto &[level, index] : cases) EXPECT_EQ(spectrumIndex(level), index) << level;
    EXPECT_EQ(spectrumIndices(12)[0], 0) << "what is below the analysis is never seen";
    EXPECT_EQ(spectrumIndices()[255], 255);
}

}  // namespace
}  // namespace kiv
