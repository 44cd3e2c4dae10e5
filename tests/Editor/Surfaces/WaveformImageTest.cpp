#include "Editor/Surfaces/WaveformImage.h"

#include <cmath>
#include <functional>
#include <utility>

#include "Editor/Surfaces/SurfaceFixture.h"
#include "Editor/Surfaces/WaveformCurve.h"

namespace kiv {
namespace {

constexpr Pixel outer = 0xFF000001, inner = 0xFF000002, overColor = 0xFF000003, curve = 0xFF0000F0, stem = 0xFF00F000,
                ring = 0xFFF00000;
const WaveformInk ink{outer, inner, overColor, curve, stem, ring};

// One lane of 61 rows, centre row 30, half 20: full scale at rows 10 and 50.
const ColumnDrawing drawing{{{0, 61}, 30.5, 20}, 1, 1, 1, 3};

constexpr ColumnLevel none{};

// The rows of the last column in runs: "20. 5o 11i" are twenty without sound, five of the extremes, eleven of the rms; "!" is
// over full scale.
std::string columnText(std::vector<ColumnLevel> levels, const ColumnDrawing &how) {
    levels.insert(levels.begin(), none);
    const std::size_t width = levels.size() - 1;
    std::vector<Pixel> pixels(61 * width, 0xFFFFFFFF);
    rasterColumns({pixels.data(), std::ptrdiff_t(width)}, 0, levels, how, ink);
    std::string text;
    for (std::size_t row = 0, run = 0; row < 61; ++row) {
        const Pixel pixel = pixels[(row + 1) * width - 1];
        ++run;
        if (row < 60 && pixels[(row + 2) * width - 1] == pixel) continue;
        text += (text.empty() ? "" : " ") + std::to_string(std::exchange(run, 0));
        text += pixel == outer ? 'o' : pixel == inner ? 'i' : pixel == overColor ? '!' : pixel == 0 ? '.' : '?';
    }
    return text;
}

TEST(WaveformRaster, DrawsColumns) {
    ColumnDrawing thick = drawing, louder = drawing, smaller = drawing;
    thick.leastRows = 2;
    louder.capRows = smaller.capRows = 0;
    louder.factor = smaller.factor = 2;
    smaller.gain = 0.5;  // of the vertical zoom: full scale is elsewhere, and so is what passes it
    struct Row {
        const char *rule;
        std::vector<ColumnLevel> levels;
        ColumnDrawing how;
        const char *rows;
    };
    for (const Row &row : std::initializer_list<Row>{
             {"extremes and rms", {{-0.5f, 0.5f, 0.25f}}, drawing, "20. 5o 11i 5o 20."},
             {"the rms ends at the extremes", {{0.25f, 0.5f, 0.4f}}, drawing, "20. 2o 4i 35."},
             {"an unknown rms", {{-0.5f, 0.5f, -1}}, drawing, "20. 21o 20."},
             {"outside the sound", {none}, drawing, "61."},
             {"silence", {{0, 0, 0}}, drawing, "30. 1o 30."},
             {"where a hairline is two", {{0, 0, 0}}, thick, "30. 2o 29."},
             {"which a taller one keeps", {{-0.1f, 0.1f, -1}}, thick, "28. 5o 28."},
             {"falling to touch the one before", {{0.5f, 0.5f, -1}, {-0.5f, -0.5f, -1}}, drawing, "20. 21o 20."},
             {"rising", {{-0.5f, -0.5f, -1}, {0.5f, 0.5f, -1}}, drawing, "20. 21o 20."},
             {"full scale", {{0, 1.0f, -1}}, drawing, "10. 21o 30."},
             {"above it", {{0, 1.01f, -1}}, drawing, "3! 7. 21o 30."},
             {"far below it", {{-9.0f, 0, -1}}, drawing, "30. 28o 3!"},
             {"what a gain would do", {{0, 0.6f, -1}}, louder, "6. 4! 21o 30."},
             {"zoomed out", {{0, 0.6f, -1}}, smaller, "18. 2! 11o 30."},
         })
        EXPECT_EQ(columnText(row.levels, row.how), row.rows) << row.rule;
}

TEST(BandLimited, RunsThroughItsSamplesAndBetweenThemAsTheSoundDid) {
    for (const double cyclesPerSample : {0.01, 0.1, 0.25, 0.35}) {
        std::vector<float> sine(64);
        for (std::size_t i = 0; i < sine.size(); ++i) sine[i] = float(std::sin(2 * M_PI * cyclesPerSample * double(i) + 0.3));
        for (double place = 16; place < 40; place += 0.17) {
            const auto floor = std::size_t(place);
            const auto around = std::span(sine).subspan(floor - 7).first<16>();
            EXPECT_NEAR(bandLimited(around, place - double(floor)), std::sin(2 * M_PI * cyclesPerSample * place + 0.3), 0.02)
                << cyclesPerSample << " " << place;
        }
        EXPECT_EQ(bandLimited(std::span(sine).subspan(13).first<16>(), 0), double(sine[20]));
    }
}

// Draws a sound's line over 400 columns with one lane of 61 rows.
std::vector<Pixel> curvePixels(const AudioEditorBuffer &buffer, double framesPerColumn, int pieces, std::int64_t first = 0) {
    constexpr int width = 400;
    std::vector<Pixel> pixels(width * 61, 0xFFFFFFFF);
    for (int i = 0; i < pieces; ++i) {
        const int lo = width * i / pieces, hi = width * (i + 1) / pieces;
        rasterCurve({pixels.data(), width}, lo, hi - lo, buffer, 0, {first + lo, framesPerColumn}, 1, drawing, ink);
    }
    return pixels;
}

TEST(WaveformCurve, DrawsTheSameInPiecesAsInOne) {
    const AudioEditorBuffer buffer = noise(400, 1, 9);
    for (const double framesPerColumn : {0.9, 0.4, 0.125, 0.09, 0.02})
        for (const std::int64_t first : {-5, 0, 333})
            EXPECT_EQ(curvePixels(buffer, framesPerColumn, 1, first), curvePixels(buffer, framesPerColumn, 23, first))
                << framesPerColumn << " " << first;
}

TEST(WaveformCurve, MarksSamplesWithDotsAndStemsOnceThereIsRoom) {
    const AudioEditorBuffer buffer(std::vector<float>(100, 0.5f), 1, 44100);
    struct Row {
        double pixelsPerSample;
        bool dots, stems;
    };
    for (const Row &row : {Row{4, false, false}, Row{7.9, false, false}, Row{8, true, false}, Row{11.9, true, false},
                           Row{12, true, true}, Row{60, true, true}}) {
        const std::vector<Pixel> pixels = curvePixels(buffer, 1 / row.pixelsPerSample, 1);
        EXPECT_EQ(std::count(pixels.begin(), pixels.end(), ring) > 0, row.dots) << row.pixelsPerSample;
        EXPECT_EQ(std::count(pixels.begin(), pixels.end(), stem) > 0, row.stems) << row.pixelsPerSample;
    }
}

// Also the first sample's, and those of samples beyond the lane.
TEST(WaveformCurve, DotsStandOnTheirSamplesAndAreSeenWhole) {
    struct Row {
        std::int64_t frame;
        float sample;
        int x, row;
    };
    for (const Row &row : {Row{3, 0.5f, 180, 20}, Row{0, 0.5f, 5, 20}, Row{3, 9.0f, 180, 5}, Row{3, -9.0f, 180, 55}}) {
        std::vector<float> samples(100, 0.0f);
        samples[std::size_t(row.frame)] = row.sample;
        const std::vector<Pixel> pixels = curvePixels(AudioEditorBuffer(samples, 1, 44100), 1.0 / 60, 1);
        const auto at = [&](int dx, int dy) { return pixels[std::size_t((row.row + dy) * 400 + row.x + dx)]; };
        for (const int sign : {-1, 1}) {
            for (const int side : {0, 3 * sign}) EXPECT_EQ(at(side, 0), curve) << row.frame << " " << row.sample;
            EXPECT_TRUE(std::abs(row.sample) > 1 || at(0, 4 * sign) == ring) << row.frame << " " << sign;
        }
        EXPECT_TRUE(row.sample != 0.5f || at(0, 8) == stem) << row.frame;
    }
}

TEST(WaveformCurve, OfASingleSampleFallsToTheEndOfItsTime) {
    const std::vector<Pixel> pixels = curvePixels(AudioEditorBuffer(std::vector<float>{1.0f}, 1, 44100), 1.0 / 400, 1);
    for (std::size_t x = 10; x < 400; x += 10) {
        bool isDrawn = false;
        for (std::size_t row = 10; row <= 31; ++row) isDrawn = isDrawn || pixels[row * 400 + x] != 0;
        EXPECT_TRUE(isDrawn) << x;
    }
}

struct WaveformImageTest : SurfaceFixture {
    WaveformColumns columns;
    WaveformImage image;
    const WaveformImage::Look look{ink, 1, true};

    int update(const Sound &sound, WaveformColumns &withColumns, WaveformImage &to, const WaveformImage::Look &how) {
        const WaveformGeometry g = geometry();
        withColumns.update(sound.source(), g.axis.framesPerColumn, g.isMerged, g.axis.firstColumn - 1, g.columns() + 1);
        return to.update(sound.source(), withColumns, g, how);
    }
    // The view's pixels from its first column on.
    static std::vector<Pixel> unrolled(const WaveformImage &from) {
        std::vector<Pixel> pixels;
        for (int row = 0; row < from.rows(); ++row)
            for (int x = 0; x < from.width(); ++x)
                pixels.push_back(from.pixels()[row * from.width() + (x + from.origin()) % from.width()]);
        return pixels;
    }
};

TEST_F(WaveformImageTest, ScrollingDrawsOnlyNewColumnsAndGivesWhatDrawingAnewGives) {
    const Sound sound(noise(1500000, 2, 1));
    load(sound.buffer);
    for (const double framesPerPixel : {300.0, 20.0, 0.5, 0.05}) {
        show(framesPerPixel * 2000, framesPerPixel);
        EXPECT_EQ(update(sound, columns, image, look), 1000);
        std::int64_t first = geometry().axis.firstColumn;
        for (const int step : {0, 7, -3, 250, -400, 999}) {
            show(framesPerPixel * double(first + step), framesPerPixel);
            EXPECT_EQ(geometry().axis.firstColumn, first + step);
            first += step;
            EXPECT_EQ(update(sound, columns, image, look), std::abs(step));
            WaveformColumns freshColumns;
            WaveformImage fresh;
            update(sound, freshColumns, fresh, look);
            ASSERT_TRUE(unrolled(image) == unrolled(fresh)) << framesPerPixel << " " << step;
        }
    }
}

TEST_F(WaveformImageTest, DrawsAllAnewWhenWhatItShowsIsAnother) {
    const Sound sound(noise(400000, 2, 1));
    load(sound.buffer);
    show(0, 20);
    WaveformImage::Look how = look;
    for (const auto &change : std::initializer_list<std::function<void()>>{[] {}, [&] { model.setVerticalZoomDb(3); },
                                                                           [&] { how.factor = 2; }, [&] { size.height = 180; },
                                                                           [&] { size.height = 80; }, [&] { show(0, 20.5); }}) {
        change();
        EXPECT_EQ(update(sound, columns, image, how), 1000);
        EXPECT_EQ(update(sound, columns, image, how), 0);
        WaveformImage fresh;
        update(sound, columns, fresh, how);
        EXPECT_TRUE(unrolled(image) == unrolled(fresh)) << "also where no lane is";
    }
}

TEST_F(WaveformImageTest, KnowsWhichColumnsAreCapped) {
    std::vector<float> samples(100000, 0.5f);
    samples[20 * 600 + 3] = 1.5f;
    const Sound sound(AudioEditorBuffer(samples, 1, 44100));
    load(sound.buffer);
    for (const std::int64_t first : {0, 137, 590}) {
        show(double(20 * first), 20);
        update(sound, columns, image, look);
        for (int column = 0; column < 1000; ++column) ASSERT_EQ(image.isCapped(column), first + column == 600) << column;
    }
}

}  // namespace
}  // namespace kiv
