#include "Editor/Surfaces/WaveformScene.h"

#include <cmath>

#include "Editor/Surfaces/GutterScene.h"
#include "Editor/Surfaces/SurfaceFixture.h"
#include "Editor/Surfaces/TimeMarks.h"

namespace kiv {
namespace {

struct WaveformSceneTest : SurfaceFixture {
    WaveformViewState view;

    WaveformSceneTest() {
        load(noise(100000, 2, 1), {20000, 30000}, FrameRange{40000, 60000});
        show(10000, 50);
    }
    WaveformScene scene() const { return waveformScene(state(), size, view); }
    // What an action makes it necessary to paint.
    template <class Act>
    Damage damage(Act act) {
        const WaveformScene before = scene();
        act();
        return waveformDamage(before, scene());
    }
};

TEST_F(WaveformSceneTest, MarksStandOnTheirColumns) {
    model.setCursorAndSelection(11000, FrameRange{11000, 15000});
    model.setPlayheads({{1, 12000}, {2, 60000}});
    const ViewMarks marks = scene().marks;
    EXPECT_EQ(marks.playheads, (std::vector{40, 1000 - 1}));
    EXPECT_EQ(marks.cursor, 20);
    EXPECT_EQ(marks.selection, (PixelSpan{20, 100}));
    EXPECT_EQ(marks.markers, (std::vector{200, 400}));
    EXPECT_EQ(marks.loop, (PixelSpan{600, 1000 - 1}));  // its end is the view's end: the last column
}

TEST_F(WaveformSceneTest, OverlaysComeInTheirOrder) {
    using Kind = OverlayLine::Kind;
    model.setCursorAndSelection(11000, FrameRange{11000, 15000});
    model.setPlayheads({{1, 12000}});
    view.pointer = PointerEvent{77.5, 3, {}};
    const std::vector<OverlayLine> want{
        {Kind::loop, {600, 601}},   {Kind::loop, {999, 1000}},       {Kind::marker, {200, 201}},
        {Kind::marker, {400, 401}}, {Kind::selectionEdge, {20, 21}}, {Kind::selectionEdge, {100, 101}},
        {Kind::cursor, {20, 21}},   {Kind::playhead, {39, 41}},      {Kind::hover, {77, 78}},
    };
    EXPECT_EQ(overlayLines(scene()), want);
    view.isButtonDown = true;
    EXPECT_EQ(overlayLines(scene()).back().kind, Kind::playhead);
    model.setPlayheads({{1, 60000}});
    EXPECT_EQ(overlayLines(scene()).back().columns, (PixelSpan{998, 1000})) << "whole at the view's end";
}

TEST_F(WaveformSceneTest, NothingIsPaintedWhenNothingIsSeenToChange) {
    EXPECT_TRUE(damage([] {}).isNone());
    EXPECT_TRUE(damage([&] { model.setMaxLevel(0.5f); }).isNone());
    EXPECT_TRUE(damage([&] { model.setLoopEnabled(true); }).isNone());
    EXPECT_TRUE(damage([&] { model.openDialog(Dialog::mono); }).isNone());
}

TEST_F(WaveformSceneTest, APlayheadStepIsTwoStripsFourteenWide) {
    model.setPlayheads({{1, 12000}});
    const Damage step = damage([&] { model.setPlayheads({{1, 12500}}); });
    EXPECT_FALSE(step.everything);
    EXPECT_EQ(step.strips, (std::vector<PixelSpan>{{33, 47}, {43, 57}}));
}

TEST_F(WaveformSceneTest, ASelectionDragIsTheStripThatItsEdgeCrossed) {
    model.select({11000, 15000});
    const Damage drag = damage([&] { model.select({11000, 16000}); });
    EXPECT_FALSE(drag.everything);
    EXPECT_EQ(drag.strips, (std::vector<PixelSpan>{{93, 127}}));
    EXPECT_EQ(damage([&] { model.selectNone(); }).strips, (std::vector<PixelSpan>{{13, 127}}));
}

TEST_F(WaveformSceneTest, TheRestIsEverything) {
    EXPECT_TRUE(damage([&] { model.setVerticalZoomDb(3); }).everything);
    EXPECT_TRUE(damage([&] { show(11000, 50); }).everything);
    EXPECT_TRUE(damage([&] { load(noise(100000, 2, 2)); }).everything);
    EXPECT_TRUE(damage([&] { ++view.powersRevision; }).everything);
    EXPECT_TRUE(damage([&] { model.setEditLoopEnabled(true); }).everything);
}

TEST_F(WaveformSceneTest, DialogsShowTheirOutcomeInTheActiveRange) {
    std::vector<float> samples(100000, 0.25f);
    samples[90000] = -0.5f;  // the peak, out of view
    load(AudioEditorBuffer(samples, 1, 44100));
    show(10000, 50);
    EXPECT_FALSE(scene().preview);
    model.setGainDb(6);
    model.openDialog(Dialog::gain);
    ASSERT_TRUE(scene().preview);
    EXPECT_NEAR(scene().preview->factor, 1.99526, 1e-5);
    EXPECT_EQ(scene().preview->columns, (PixelSpan{0, 1000}));
    model.select({11000, 15000});
    EXPECT_EQ(scene().preview->columns, (PixelSpan{20, 100}));
    EXPECT_EQ(damage([&] { model.setGainDb(5); }).strips[0], (PixelSpan{20, 100}));
    model.setGainDb(0);
    EXPECT_FALSE(scene().preview);
    model.setNormalizeDb(0);
    model.openDialog(Dialog::normalize);
    EXPECT_NEAR(scene().preview->factor, 4, 1e-9);
    model.selectNone();
    EXPECT_NEAR(scene().preview->factor, 2, 1e-9);
}

TEST_F(WaveformSceneTest, TheGutterNamesChannelsAndLevelsOfEachLane) {
    size.height = 616;
    const GutterScene stereo = gutterScene(state(), {44, 616, 1});
    EXPECT_EQ(stereo.channels, (std::vector<GutterScene::Text>{{0, "L"}, {309, "R"}}));
    EXPECT_EQ(stereo.edges, (std::vector<PixelSpan>{{308, 309}}));
    const std::vector<std::pair<double, std::string>> upper{{10.5, "0"},   {52.5, "−3"},   {82.5, "−6"}, {118.5, "−12"},
                                                            {154.5, "−∞"}, {190.5, "−12"}, {298.5, "0"}};
    for (const auto &[y, text] : upper)
        EXPECT_NE(std::find(stereo.levels.begin(), stereo.levels.end(), GutterScene::Text{y, text}), stereo.levels.end())
            << y << text;
    load(noise(1000, 1, 1));
    EXPECT_TRUE(gutterScene(state(), {44, 616, 1}).channels.empty());
    load(noise(1000, 3, 1));
    EXPECT_EQ(gutterScene(state(), {44, 616, 1}).channels[2].text, "3");
}

TEST_F(WaveformSceneTest, TimeLabelsKeepTheirDistances) {
    for (const AudioEditorTimeUnit unit : {AudioEditorTimeUnit::seconds, AudioEditorTimeUnit::samples}) {
        if (state().timeUnit != unit) model.toggleTimeUnit();
        for (double framesPerPixel = 99; framesPerPixel > 0.02; framesPerPixel /= 1.7)
            for (const double scale : {1.0, 1.5, 2.0}) {
                show(123, framesPerPixel);
                const TimeAxis axis = viewAxis(state(), 1000 * scale);
                const auto ticks = timeTicks(state(), axis, int(1000 * scale), scale);
                std::vector<int> labelled;
                double last = -1e9;
                std::string text;
                for (const TimeTick &tick : ticks) {
                    if (tick.kind == TimeTick::Kind::labelled) labelled.push_back(tick.x);
                    if (tick.label.empty()) continue;
                    EXPECT_GE(tick.x - last, 92 * scale - 1) << framesPerPixel;
                    EXPECT_NE(tick.label, std::exchange(text, tick.label)) << "read the same " << framesPerPixel;
                    EXPECT_LE(tick.x + 5 * scale, (1000 - 30) * scale + 1e-6);
                    last = tick.x;
                }
                EXPECT_FALSE(text.empty()) << "no label at " << framesPerPixel;
                EXPECT_EQ(timeLines(state(), axis, int(1000 * scale), scale), labelled);
            }
    }
}

TEST_F(WaveformSceneTest, LabelsHaveAsManyDecimalsAsTellThemApart) {
    load(AudioEditorBuffer(std::vector<float>(500000), 1, 100000));
    struct Row {
        double first, framesPerPixel;
        std::string labels;  // of the first five labelled ticks
    };
    for (const Row &row : {Row{123400, 0.2, "1.2340 s|1.2342 s|1.2344 s|1.2346 s|1.2348 s"},
                           Row{123420, 0.02, "1.23420 s|1.23422 s|1.23424 s|1.23426 s|1.23428 s"},
                           Row{1230, 0.02, "12.30 ms|12.32 ms|12.34 ms|12.36 ms|12.38 ms"},
                           Row{99940, 0.2, "999.4 ms|999.6 ms|999.8 ms|1.0000 s|1.0002 s"},
                           Row{6012340, 0.2, "1:00.1234|1:00.1236|1:00.1238|1:00.1240|1:00.1242"}}) {
        if (row.first > 500000) load(AudioEditorBuffer(std::vector<float>(6100000), 1, 100000));
        show(row.first, row.framesPerPixel);
        std::string labels;
        int count = 0;
        for (const TimeTick &tick : timeTicks(state(), viewAxis(state(), 1000), 1000, 1))
            if (tick.kind == TimeTick::Kind::labelled && count++ < 5) labels += (count > 1 ? "|" : "") + tick.label;
        EXPECT_EQ(labels, row.labels) << row.first << " " << row.framesPerPixel;
    }
}

TEST_F(WaveformSceneTest, WithoutASoundThereIsOnlyItsBeginning) {
    load(AudioEditorBuffer(std::vector<float>(), 1, 44100));
    const auto ticks = timeTicks(state(), viewAxis(state(), 1000), 1000, 1);
    EXPECT_EQ(ticks, (std::vector<TimeTick>{{0, TimeTick::Kind::labelled, "0 s"}}));
    EXPECT_EQ(timeLines(state(), viewAxis(state(), 1000), 1000, 1), std::vector{0});
}

TEST_F(WaveformSceneTest, TicksBetweenLabelsAreTenPartsOrFive) {
    struct Row {
        double framesPerPixel;
        std::string first, second;
        int between, middles;
    };
    // At 44100 a second: half a second is 110.25 and 100 ms are 110.25 pixels; a fifth of a second is 96 pixels.
    for (const Row &row : {Row{200, "0 s", "500 ms", 9, 1}, Row{40, "0 s", "100 ms", 9, 1}}) {
        load(noise(500000, 1, 1));
        show(0, row.framesPerPixel);
        const auto ticks = timeTicks(state(), viewAxis(state(), 1000), 1000, 1);
        ASSERT_EQ(ticks[0].label, row.first);
        std::size_t next = 1;
        int middles = 0;
        for (; ticks[next].kind != TimeTick::Kind::labelled; ++next) middles += ticks[next].kind == TimeTick::Kind::middle;
        EXPECT_EQ(ticks[next].label, row.second);
        EXPECT_EQ(int(next) - 1, row.between);
        EXPECT_EQ(middles, row.middles);
    }
}

}  // namespace
}  // namespace kiv
