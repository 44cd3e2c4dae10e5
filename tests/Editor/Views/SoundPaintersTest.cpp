#include <QPainter>

#include "Editor/Surfaces/SurfaceFixture.h"
#include "Editor/Views/GutterPainter.h"
#include "Editor/Views/OverviewPainter.h"
#include "Editor/Views/RulerPainter.h"
#include "Editor/Views/TestApplication.h"
#include "Editor/Views/ViewStyle.h"
#include "Editor/Views/WaveformPainter.h"

namespace kiv {
namespace {

using Role = AudioEditorThemeColor;

// `color` with its alpha over an opaque one.
Rgba over(Rgba below, Rgba color) { return mix(below, color, double(color & 255) / 255); }

// A stereo sound that is loud (±0.5 and its rms 0.25) up to frame 50000 and silent after; marks all over. 100 frames a pixel.
struct SoundPaintersTest : SurfaceFixture, testing::WithParamInterface<double> {
    ViewStyle style{(testApplication(), AudioEditorTheme::dark())};
    const ThemeColors &colors = style.colors();
    TextCache texts;
    double scale = GetParam();
    QImage image;

    SoundPaintersTest() {
        std::vector<float> samples(2 * 100000, 0.0f);
        for (std::size_t i = 0; i < 100000; ++i) samples[i] = i / 2 % 100 == 0 ? 0.5f : i / 2 % 100 == 1 ? -0.5f : 0.244f;
        load(AudioEditorBuffer(samples, 2, 44100), {30000, 70000}, FrameRange{60000, 80000});
        model.setCursorAndSelection(10000, FrameRange{10000, 20000});
        model.setPlayheads({{1, 90000}});
        size = {1000, 201, scale};
    }
    // Paints into device pixels as a widget does.
    template <class Paint>
    void paint(Paint paintAll) {
        image = QImage(int(size.width * scale), int(size.height * scale), QImage::Format_RGB32);
        image.setDevicePixelRatio(scale);
        image.fill(Qt::magenta);
        QPainter painter(&image);
        useDevicePixels(painter);
        paintAll(painter, image.rect());
    }
    void paintSound() {
        const Sound sound(buffer());
        const WaveformScene scene = waveformScene(state(), size, {});
        WaveformPixels pixels;
        pixels.update(sound.source(), scene, colors);
        paint([&](QPainter &painter, const QRect &all) { paintWaveform(painter, scene, pixels, style, texts, all); });
    }
    // The colour at a logical place, at the first device pixel there or some after it.
    Rgba at(double x, double y, int dx = 0, int dy = 0) const {
        return Rgba(image.pixel(int(x * scale) + dx, int(y * scale) + dy)) << 8 | 0xFF;
    }
    ::testing::AssertionResult near(Rgba a, Rgba b) const {
        for (int shift = 8; shift < 32; shift += 8)
            if (std::abs(int(a >> shift & 255) - int(b >> shift & 255)) > 2)
                return ::testing::AssertionFailure() << std::hex << a << " is not " << b;
        return ::testing::AssertionSuccess();
    }
};

INSTANTIATE_TEST_SUITE_P(Scales, SoundPaintersTest, testing::Values(1.0, 1.25, 1.5, 2.0));

TEST_P(SoundPaintersTest, TheWaveformInItsLayers) {
    paintSound();
    const Rgba bg = colors[Role::waveBg], tinted = over(bg, colors[Role::waveSelection]);
    // Lanes of 100 rows: full scale at 10, ±0.5 at 30 and 70, rms at 40 and 60.
    EXPECT_TRUE(near(at(50, 5), bg));
    EXPECT_TRUE(near(at(50, 34), colors.waveOuter));
    EXPECT_TRUE(near(at(50, 45), colors[Role::waveFg]));
    EXPECT_TRUE(near(at(50, 66), colors.waveOuter));
    EXPECT_TRUE(near(at(50, 75), bg));
    EXPECT_TRUE(near(at(650, 50), colors.waveOuter));  // silence
    EXPECT_TRUE(near(at(650, 53), bg));
    // The sound lies over the tint of the selection, not under it.
    EXPECT_TRUE(near(at(150, 5), tinted));
    EXPECT_TRUE(near(at(150, 45), colors[Role::waveFg]));
    EXPECT_TRUE(near(at(150, 1), colors.selectionEdge));
    EXPECT_TRUE(near(at(200, 5), colors.selectionEdge));
    EXPECT_TRUE(near(at(200, 5, hairline(scale)), bg));
}

TEST_P(SoundPaintersTest, TheWaveformsLines) {
    paintSound();
    const Rgba bg = colors[Role::waveBg];
    const int hair = hairline(scale);
    EXPECT_TRUE(near(at(100, 20), colors[Role::waveCursor]));
    EXPECT_FALSE(near(at(100, 20, hair), colors[Role::waveCursor]));
    EXPECT_TRUE(near(at(700, 20), mix(bg, colors[Role::waveMarker], 0.75)));
    EXPECT_TRUE(near(at(700, 20, hair), bg));
    const int thick = devicePixels(2, scale), middle = int(900 * scale);
    for (int dx = 0; dx < thick; ++dx) EXPECT_TRUE(near(at(0, 20, middle - thick / 2 + dx), colors[Role::wavePlayhead])) << dx;
    EXPECT_TRUE(near(at(0, 20, middle - thick / 2 - 1), bg));
    EXPECT_TRUE(near(at(0, 20, middle - thick / 2 + thick), bg));
    // Dotted, 3 on and 3 off.
    const int dot = devicePixels(3, scale);
    EXPECT_TRUE(near(at(600, 0, 0, 2 * dot), colors.loopMark));
    EXPECT_TRUE(near(at(600, 0, 0, dot), bg));
    EXPECT_TRUE(near(at(800, 0, 0, 4 * dot), colors.loopMark));
    const WaveformGeometry g = geometry();
    EXPECT_TRUE(near(at(50, 0, 0, g.lanes[0].rows.hi), colors.edge));
    EXPECT_TRUE(near(at(50, 0, 0, g.rowOf(g.lanes[0], 1)), colors.fullScale));
    EXPECT_TRUE(near(at(850, 0, 0, g.lanes[1].centreRow()), colors.waveOuter));
}

TEST_P(SoundPaintersTest, WhatAGainWouldDo) {
    const Rgba outcome = mix(colors[Role::waveBg], colors[Role::accentBg], 0.62);
    model.setGainDb(8);  // 0.5 becomes 1.256
    model.openDialog(Dialog::gain);
    paintSound();
    EXPECT_TRUE(near(at(150, 25), outcome));
    EXPECT_TRUE(near(at(150, 45), colors[Role::waveFg]));
    EXPECT_TRUE(near(at(150, 5), colors.over));
    EXPECT_TRUE(near(at(50, 25), colors[Role::waveBg]));
    model.setGainDb(-6);
    paintSound();
    EXPECT_TRUE(near(at(150, 45), outcome));
    EXPECT_TRUE(near(at(150, 34), colors.waveOuter));
    EXPECT_TRUE(near(at(50, 45), colors[Role::waveFg]));
}

TEST_P(SoundPaintersTest, CapsLieOverTheBarOfTheSelection) {
    std::vector<float> samples(100000, 0.0f);
    for (std::size_t i = 15000; i < 15200; ++i) samples[i] = 1.5f;
    load(AudioEditorBuffer(samples, 1, 44100));
    model.select({10000, 20000});
    paintSound();
    EXPECT_TRUE(near(at(150.5, 0), colors.over));
    EXPECT_TRUE(near(at(150.5, 2), colors.over));
    EXPECT_TRUE(near(at(140, 0), colors.selectionEdge));
    EXPECT_TRUE(near(at(160, 0), colors.selectionEdge));
    EXPECT_FALSE(near(at(160, 0, 0, devicePixels(2, scale)), colors.selectionEdge));
}

TEST_P(SoundPaintersTest, TheLoopWhileItIsEdited) {
    model.setEditLoopEnabled(true);
    paintSound();
    const Rgba bg = colors[Role::waveBg], accent = colors[Role::accentBg];
    for (const int y : {4, 8, 55, 95}) EXPECT_TRUE(near(at(600, y), accent)) << y;
    EXPECT_TRUE(near(at(800, 4), accent));
    EXPECT_TRUE(near(at(620, 4), mix(bg, accent, 0.09)));
    EXPECT_TRUE(near(at(820, 4), bg));
}

TEST_P(SoundPaintersTest, AnEmptySoundSaysSo) {
    load(AudioEditorBuffer(2, 44100));
    paintSound();
    EXPECT_TRUE(near(at(300, 0, 0, geometry().lanes[0].centreRow()), colors.zero));
    int letters = 0;
    for (int x = 460; x < 540; ++x)
        for (int y = 90; y < 110; ++y) letters += near(at(x, y), colors.dim);
    EXPECT_GT(letters, 20);
}

TEST_P(SoundPaintersTest, TheOverview) {
    size = {1044, 44, scale};
    model.setView({4, 37500});  // 25000 … 50000: columns 250 … 500
    const Sound sound(buffer());
    const OverviewScene scene = overviewScene(state(), size, 0);
    OverviewImage pixels;
    EXPECT_TRUE(pixels.update(sound.source(), scene.geometry, overviewLook(colors)));
    EXPECT_FALSE(pixels.update(sound.source(), scene.geometry, overviewLook(colors)));
    paint([&](QPainter &painter, const QRect &all) { paintOverview(painter, scene, pixels, colors, all); });
    const double left = 44;
    EXPECT_TRUE(near(at(10, 0), colors.hairline));
    EXPECT_TRUE(near(at(10, 20), colors.well));
    const Rgba outside = mix(colors.well, colors[Role::waveFg], 0.42);
    EXPECT_TRUE(near(at(left + 50, 22), outside));
    EXPECT_TRUE(near(at(left + 50, 7), colors.well));
    EXPECT_TRUE(near(at(left + 400, 22), colors[Role::waveFg]));
    EXPECT_TRUE(near(at(left + 400, 7), colors[Role::waveBg]));
    EXPECT_TRUE(near(at(left + 400, 15), mix(colors[Role::waveBg], colors[Role::waveFg], 0.72)));
    EXPECT_TRUE(near(at(left + 150, 22), over(outside, colors[Role::waveSelection])));
    EXPECT_TRUE(near(at(left + 400, 0, 0, hairline(scale)), mix(colors[Role::waveBg], colors[Role::topbarButtonText], 0.85)));
    EXPECT_TRUE(near(at(left + 500, 22, -1), colors[Role::topbarButtonText]));  // a grip
    EXPECT_TRUE(near(at(left + 700, 3), colors[Role::waveMarker]));
    EXPECT_TRUE(near(at(left + 650, 43), colors[Role::accentBg]));
    EXPECT_TRUE(near(at(left + 900, 30), colors[Role::wavePlayhead]));
    EXPECT_FALSE(near(at(left + 100, 30), colors[Role::waveCursor]));
}

TEST_P(SoundPaintersTest, RulerAndLane) {
    size = {1044, 40, scale};
    const RulerScene scene = rulerScene(state(), size, {});
    paint([&](QPainter &painter, const QRect &all) { paintRuler(painter, scene, style, texts, all); });
    const double left = 44;
    EXPECT_TRUE(near(at(500, 0), colors.hairline));
    EXPECT_TRUE(near(at(left + 20, 2), colors[Role::rulerBg]));
    EXPECT_TRUE(near(at(left + 20, 30), colors.lane));
    EXPECT_TRUE(near(at(20, 30), colors[Role::rulerBg]));
    EXPECT_TRUE(near(at(20, 40, 0, -1), colors.hairline));
    EXPECT_TRUE(near(at(left, 30, -1), colors.edge));
    EXPECT_TRUE(near(at(left, 16), mix(colors[Role::rulerBg], colors[Role::rulerText], 0.55)));  // a tick
    EXPECT_TRUE(near(at(left + 100, 35), colors[Role::waveCursor]));
    EXPECT_TRUE(near(at(left + 103, 15), colors[Role::waveCursor]));  // its head
    EXPECT_TRUE(near(at(left + 107, 15), colors[Role::rulerBg]));
    EXPECT_TRUE(near(at(left + 903, 2), colors[Role::wavePlayhead]));
    EXPECT_TRUE(near(at(left + 904, 8), colors[Role::rulerBg]));
    EXPECT_TRUE(near(at(left + 707, 27), colors[Role::waveMarker]));
    EXPECT_TRUE(near(at(left + 712, 27), colors.lane));
    EXPECT_TRUE(near(at(left + 750, 36), colors.loopMark));
    EXPECT_TRUE(near(at(left + 602, 29), colors.loopMark));
    EXPECT_TRUE(near(at(left + 750, 29), colors.lane));
    EXPECT_TRUE(near(at(left + 750, 40, 0, -1), colors.lane));
}

TEST_P(SoundPaintersTest, TheGutter) {
    size = {44, 201, scale};
    const GutterScene scene = gutterScene(state(), size);
    paint([&](QPainter &painter, const QRect &) { paintGutter(painter, scene, style, texts); });
    EXPECT_TRUE(near(at(3, 50), colors[Role::rulerBg]));
    EXPECT_TRUE(near(at(44, 50, -1), colors.edge));
    EXPECT_TRUE(near(at(3, 0, 0, scene.edges[0].lo), colors.edge));
    int ink = 0, beyond = 0;
    for (int x = 0; x < 43; ++x)
        for (int y = 5; y < 16; ++y) (x < 36 ? ink : beyond) += !near(at(x, y), colors[Role::rulerBg]);
    EXPECT_GT(ink, 10);
    EXPECT_EQ(beyond, 0);
}

}  // namespace
}  // namespace kiv
