#include "Editor/Surfaces/WaveformImage.h"

#include <cmath>

#include "Editor/Surfaces/SurfaceFixture.h"
#include "Editor/Surfaces/WaveformCurve.h"

namespace kiv {
namespace {

constexpr Pixel outer = 0xFF000001, inner = 0xFF000002, overColor = 0xFF000003, curve = 0xFF0000F0, stem = 0xFF00F000,
                ring = 0xFFF00000;
const WaveformInk ink{outer, inner, overColor, curve, stem, ring};

// One lane of 61 rows, centre row 30, half 20: full scale at rows 10 and 50.
const ColumnDrawing drawing{{{0, 61}, 30.5, 20}, 1, 1, 3};

// The rows of one column as letters: o outer, i inner, ! over, . nothing.
std::string columnText(const std::vector<ColumnLevel> &levels, ColumnDrawing how = drawing, std::size_t column = 0) {
    std::vector<Pixel> pixels(61 * (levels.size() - 1), 0xFFFFFFFF);
    const auto width = std::ptrdiff_t(levels.size() - 1);
    rasterColumns({pixels.data(), width}, 0, levels, how, ink);
    std::string text;
    for (std::size_t row = 0; row < 61; ++row) {
        const Pixel pixel = pixels[row * std::size_t(width) + column];
        text += pixel == outer ? 'o' : pixel == inner ? 'i' : pixel == overColor ? '!' : pixel == 0 ? '.' : '?';
    }
    return text;
}

std::string rows(std::initializer_list<std::pair<char, int>> runs) {
    std::string text;
    for (const auto &[letter, count] : runs) text += std::string(std::size_t(count), letter);
    return text;
}

constexpr ColumnLevel none{};

TEST(WaveformRaster, DrawsExtremesAndRmsWithinThem) {
    EXPECT_EQ(columnText({none, {-0.5f, 0.5f, 0.25f}}), rows({{'.', 20}, {'o', 5}, {'i', 11}, {'o', 5}, {'.', 20}}));
    // All above the centre: the rms ends at the column's own extremes.
    EXPECT_EQ(columnText({none, {0.25f, 0.5f, 0.4f}}), rows({{'.', 20}, {'o', 2}, {'i', 4}, {'.', 35}}));
    // Not known: only extremes.
    EXPECT_EQ(columnText({none, {-0.5f, 0.5f, -1}}), rows({{'.', 20}, {'o', 21}, {'.', 20}}));
    EXPECT_EQ(columnText({none, none}), rows({{'.', 61}}));
}

TEST(WaveformRaster, DrawsSilenceAsOneRow) { EXPECT_EQ(columnText({none, {0, 0, 0}}), rows({{'.', 30}, {'o', 1}, {'.', 30}})); }

TEST(WaveformRaster, LetsEveryColumnTouchTheOneBefore) {
    const std::vector<ColumnLevel> falling{none, {0.5f, 0.5f, -1}, {-0.5f, -0.5f, -1}};
    EXPECT_EQ(columnText(falling, drawing, 0), rows({{'.', 20}, {'o', 1}, {'.', 40}}));
    EXPECT_EQ(columnText(falling, drawing, 1), rows({{'.', 20}, {'o', 21}, {'.', 20}}));
    const std::vector<ColumnLevel> rising{none, {-0.5f, -0.5f, -1}, {0.5f, 0.5f, -1}};
    EXPECT_EQ(columnText(rising, drawing, 1), rows({{'.', 20}, {'o', 21}, {'.', 20}}));
}

TEST(WaveformRaster, CapsWhatPassesFullScaleAtTheLanesEdge) {
    EXPECT_EQ(columnText({none, {0, 1.0f, -1}}).find('!'), std::string::npos);
    EXPECT_EQ(columnText({none, {0, 1.01f, -1}}), rows({{'!', 3}, {'.', 7}, {'o', 21}, {'.', 30}}));
    EXPECT_EQ(columnText({none, {-9.0f, 0, -1}}), rows({{'.', 30}, {'o', 28}, {'!', 3}}));
}

TEST(WaveformRaster, PreviewsAGainAndColoursWhatWouldBeOver) {
    ColumnDrawing preview = drawing;
    preview.capRows = 0;
    preview.factor = 2;
    EXPECT_EQ(columnText({none, {0, 0.6f, -1}}, preview), rows({{'.', 6}, {'!', 4}, {'o', 21}, {'.', 30}}));
    // With vertical zoom, full scale is elsewhere, and so is what passes it.
    preview.gain = 0.5;
    EXPECT_EQ(columnText({none, {0, 0.6f, -1}}, preview), rows({{'.', 18}, {'!', 2}, {'o', 11}, {'.', 30}}));
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
        const auto has = [&](Pixel color) { return std::find(pixels.begin(), pixels.end(), color) != pixels.end(); };
        EXPECT_EQ(has(ring), row.dots) << row.pixelsPerSample;
        EXPECT_EQ(has(stem), row.stems) << row.pixelsPerSample;
    }
    // Sample 3 at column 180: the dot's middle, its ring, its stem and the line between dots.
    const std::vector<Pixel> pixels = curvePixels(buffer, 1.0 / 60, 1);
    const auto at = [&](int x, int row) { return pixels[std::size_t(row * 400 + x)]; };
    EXPECT_EQ(at(180, 20), curve);
    EXPECT_EQ(at(183, 20), curve);
    EXPECT_EQ(at(180, 16), ring);
    EXPECT_EQ(at(180, 28), stem);
    EXPECT_EQ(at(181, 28), 0u);
    EXPECT_EQ(at(210, 20), curve);
    EXPECT_EQ(at(210, 24), 0u);
}

TEST(WaveformCurve, OfASingleSampleFallsToTheEndOfItsTime) {
    const std::vector<Pixel> pixels = curvePixels(AudioEditorBuffer(std::vector<float>{1.0f}, 1, 44100), 1.0 / 400, 1);
    for (int x = 10; x < 400; x += 10) {
        int rows = 0;
        for (int row = 10; row <= 31; ++row) rows += pixels[std::size_t(row * 400 + x)] != 0;
        EXPECT_GE(rows, 1) << x;
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
    EXPECT_EQ(update(sound, columns, image, look), 1000);
    model.setVerticalZoomDb(3);
    EXPECT_EQ(update(sound, columns, image, look), 1000);
    EXPECT_EQ(update(sound, columns, image, {ink, 2, true}), 1000);
    size.height = 180;
    EXPECT_EQ(update(sound, columns, image, {ink, 2, true}), 1000);
    EXPECT_EQ(update(sound, columns, image, {ink, 2, true}), 0);
    show(0, 20.5);
    EXPECT_EQ(update(sound, columns, image, {ink, 2, true}), 1000);
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
