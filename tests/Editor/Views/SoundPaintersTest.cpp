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
    static bool near(Rgba a, Rgba b) {
        for (int shift = 8; shift < 32; shift += 8)
            if (std::abs(int(a >> shift & 255) - int(b >> shift & 255)) > 2) return false;
        return true;
    }
    struct Place {
        double x, y;
        Rgba color;
        int dx = 0, dy = 0;
    };
    void expect(std::initializer_list<Place> places) const {
        for (const auto &[x, y, color, dx, dy] : places)
            EXPECT_TRUE(near(at(x, y, dx, dy), color))
                << x << ", " << y << " " << dx << ", " << dy << std::hex << ": " << at(x, y, dx, dy) << ", not " << color;
    }
};

INSTANTIATE_TEST_SUITE_P(Scales, SoundPaintersTest, testing::Values(1.0, 1.25, 1.5, 2.0));

TEST_P(SoundPaintersTest, TheWaveformInItsLayers) {
    paintSound();
    const Rgba bg = colors[Role::waveBg], tinted = over(bg, colors[Role::waveSelection]), inner = colors[Role::waveFg];
    const int hair = hairline(scale), thick = devicePixels(2, scale), dot = devicePixels(3, scale), middle = int(900 * scale);
    const WaveformGeometry g = geometry();
    // Lanes of 100 rows: full scale at 10, ±0.5 at 30 and 70, rms at 40 and 60. From 500 on there is silence.
    expect({{50, 5, bg}, {50, 34, colors.waveOuter}, {50, 45, inner}, {50, 66, colors.waveOuter}, {50, 75, bg}});
    expect({{650, 50, colors.waveOuter, 0, hair - 1}, {650, 53, bg}, {850, 0, colors.waveOuter, 0, g.lanes[1].centreRow()}});
    // The sound lies over the tint of the selection, not under it.
    expect({{150, 5, tinted}, {150, 45, inner}, {150, 1, colors.selectionEdge}});
    expect({{200, 5, colors.selectionEdge, hair - 1}, {200, 5, bg, hair}});
    expect({{100, 20, colors[Role::waveCursor], hair - 1}, {100, 20, tinted, hair}});
    expect({{700, 20, mix(bg, colors[Role::waveMarker], 0.75), hair - 1}, {700, 20, bg, hair}});
    for (int dx = 0; dx < thick; ++dx) expect({{0, 20, colors[Role::wavePlayhead], middle - thick / 2 + dx}});
    expect({{0, 20, bg, middle - thick / 2 - 1}, {0, 20, bg, middle - thick / 2 + thick}});
    // The loop is dotted, 3 on and 3 off.
    expect({{600, 0, colors.loopMark, 0, 2 * dot}, {600, 0, bg, 0, dot}, {800, 0, colors.loopMark, 0, 4 * dot}});
    expect({{50, 0, colors.edge, 0, g.lanes[0].rows.hi}, {50, 0, colors.fullScale, 0, g.rowOf(g.lanes[0], 1)}});
    model.setEditLoopEnabled(true);
    paintSound();
    const Rgba accent = colors[Role::accentBg];
    for (const double y : {4.0, 8.0, 55.0, 95.0}) expect({{600, y, accent}});
    expect({{800, 4, accent}, {620, 4, mix(bg, accent, 0.09)}, {820, 4, bg}});
}

TEST_P(SoundPaintersTest, WhatAGainWouldDo) {
    const Rgba outcome = mix(colors[Role::waveBg], colors[Role::accentBg], 0.62);
    model.setGainDb(8);  // 0.5 becomes 1.256
    model.openDialog(Dialog::gain);
    paintSound();
    expect({{150, 25, outcome}, {150, 45, colors[Role::waveFg]}, {150, 5, colors.over}, {50, 25, colors[Role::waveBg]}});
    model.setGainDb(-6);
    paintSound();
    expect({{150, 45, outcome}, {150, 34, colors.waveOuter}, {50, 45, colors[Role::waveFg]}});
}

TEST_P(SoundPaintersTest, CapsLieOverTheBarOfTheSelection) {
    std::vector<float> samples(100000, 0.0f);
    for (std::size_t i = 15000; i < 15200; ++i) samples[i] = 1.5f;
    load(AudioEditorBuffer(samples, 1, 44100));
    model.select({10000, 20000});
    paintSound();
    const Rgba bar = colors.selectionEdge, tinted = over(colors[Role::waveBg], colors[Role::waveSelection]);
    expect({{150.5, 0, colors.over}, {150.5, 2, colors.over}, {140, 0, bar}, {160, 0, bar}});
    expect({{160, 0, tinted, 0, devicePixels(2, scale)}});
}

TEST_P(SoundPaintersTest, AnEmptySoundSaysSo) {
    load(AudioEditorBuffer(2, 44100));
    paintSound();
    expect({{300, 0, colors.zero, 0, geometry().lanes[0].centreRow()}});
    int letters = 0;
    for (int x = 460; x < 540; ++x)
        for (int y = 90; y < 110; ++y) letters += near(at(x, y), colors.dim);
    EXPECT_GT(letters, 20);
}

TEST_P(SoundPaintersTest, TheOverview) {
    size = {1044, 44, scale};
    model.setView({4, 37500});  // 25000 … 50000: columns 250 … 500
    const Sound sound(buffer());
    OverviewImage pixels;
    const auto paintStrip = [&] {
        const OverviewScene scene = overviewScene(state(), size, 0);
        EXPECT_EQ(pixels.update(sound.source(), scene.geometry, overviewLook(colors)), image.isNull());
        paint([&](QPainter &painter, const QRect &all) { paintOverview(painter, scene, pixels, colors, all); });
    };
    paintStrip();
    const double left = 44;
    const Rgba outside = mix(colors.well, colors[Role::waveFg], 0.42), bg = colors[Role::waveBg], fg = colors[Role::waveFg];
    const Rgba white = colors[Role::topbarButtonText];
    expect({{10, 0, colors.hairline}, {10, 20, colors.well}, {left + 50, 22, outside}, {left + 50, 7, colors.well}});
    expect({{left + 400, 22, fg}, {left + 400, 7, bg}, {left + 400, 15, mix(bg, fg, 0.72)}});
    expect({{left + 150, 22, over(outside, colors[Role::waveSelection])}, {left + 500, 22, white, -1}});  // a grip
    expect({{left + 400, 0, mix(bg, white, 0.85), 0, hairline(scale)}, {left + 700, 3, colors[Role::waveMarker]}});
    expect({{left + 650, 43, colors[Role::accentBg]}, {left + 900, 30, colors[Role::wavePlayhead]}});
    EXPECT_FALSE(near(at(left + 100, 30), colors[Role::waveCursor]));
    for (const auto &[heads, color] : {std::pair(1, Role::wavePlayhead), std::pair(0, Role::waveCursor)}) {
        model.placeCursor(100000);
        model.setPlayheads(std::vector<AudioEditorPlayhead>(std::size_t(heads), {1, 100000}));
        paintStrip();
        for (int dx = 1; dx <= hairline(scale); ++dx) expect({{1044, 30, colors[color], -dx}});
    }
}

TEST_P(SoundPaintersTest, RulerAndLane) {
    size = {1044, 40, scale};
    const auto paintAll = [&] {
        const RulerScene scene = rulerScene(state(), size, {});
        paint([&](QPainter &painter, const QRect &all) { paintRuler(painter, scene, style, texts, all); });
    };
    paintAll();
    const double left = 44;
    const Rgba bg = colors[Role::rulerBg], cursor = colors[Role::waveCursor], head = colors[Role::wavePlayhead];
    expect({{500, 0, colors.hairline}, {left + 20, 2, bg}, {left + 20, 30, colors.lane}, {20, 30, bg}});
    expect({{20, 40, colors.hairline, 0, -1}, {left, 30, colors.edge, -1}});
    expect({{left, 16, mix(bg, colors[Role::rulerText], 0.55)}, {left + 100, 35, cursor}});                // a tick
    expect({{left + 103, 15, cursor}, {left + 107, 15, bg}, {left + 903, 2, head}, {left + 904, 8, bg}});  // heads
    expect({{left + 707, 27, colors[Role::waveMarker]}, {left + 712, 27, colors.lane}});
    expect({{left + 750, 36, colors.loopMark}, {left + 602, 29, colors.loopMark}, {left + 750, 29, colors.lane}});
    expect({{left + 750, 40, colors.lane, 0, -1}});
    model.placeCursor(100000);
    model.setPlayheads({});
    paintAll();
    for (int dx = 1; dx <= hairline(scale); ++dx) expect({{1044, 35, cursor, -dx}});
    model.setPlayheads({{1, 100000}});
    paintAll();
    for (int dx = 1; dx <= devicePixels(2, scale); ++dx) expect({{1044, 35, head, -dx}});
}

// Names and levels keep apart, also in large type and where levels are longest.
TEST_P(SoundPaintersTest, TheGutter) {
    for (const double points : {10.0, 16.0})
        for (const int db : {0, 36}) {
            style.setDesktopFont(QFont("Inter", int(points)));
            model.setVerticalZoomDb(db);
            const int width = gutterWidth(style.textFactor());
            EXPECT_EQ(width, points == 10 ? 44 : 72);
            size = {double(width), 401, scale, style.textFactor()};
            const GutterScene scene = gutterScene(state(), size);
            paint([&](QPainter &painter, const QRect &) { paintGutter(painter, scene, style, texts); });
            expect({{3, 50, colors[Role::rulerBg]}, {double(width), 50, colors.edge, -1}});
            expect({{3, 0, colors.edge, 0, scene.edges[0].lo}});
            const auto inked = [&](double from, double to) {
                int ink = 0;
                for (double x = from; x < to; ++x)
                    for (int y = 5; y < 24; ++y) ink += !near(at(x, y), colors[Role::rulerBg]);
                return ink;
            };
            const double factor = style.textFactor(), afterName = 6 + 8 * factor;
            EXPECT_GT(inked(5, afterName), 10) << "the channel " << points << " " << db;
            EXPECT_EQ(inked(afterName, afterName + 2), 0) << points << " " << db;
            EXPECT_GT(inked(afterName + 2, width - 5), 10) << "the level " << points << " " << db;
            EXPECT_EQ(inked(width - 5, width - 1), 0);
        }
}

}  // namespace
}  // namespace kiv
