#include <cmath>
#include <numbers>

#include "Editor/AudioEditorModel/ModelFixture.h"
#include "Editor/Surfaces/LevelSheetScene.h"
#include "Editor/Surfaces/MonoSheetScene.h"
#include "Editor/Surfaces/StretchSheetGeometry.h"

namespace kiv {
namespace {

TEST(LevelSlider, ValuesAndPixelsAgree) {
    const LevelSlider gain{.left = 16, .width = 320};
    EXPECT_EQ(gain.x(-24), 16);
    EXPECT_EQ(gain.x(0), 176);
    EXPECT_EQ(gain.x(24), 336);
    EXPECT_EQ(gain.value(-100), -24);
    EXPECT_EQ(gain.value(1000), 24);
    for (double db = -24; db <= 24; db += 1.5) EXPECT_NEAR(gain.value(gain.x(db)), db, 1e-9);
}

TEST(LevelSlider, StopsAtZeroAndGivesTenths) {
    const LevelSlider gain{.left = 16, .width = 320};
    for (double x = 172; x <= 180; ++x) EXPECT_EQ(gain.value(x), 0);
    EXPECT_NE(gain.value(171), 0);
    for (double x = 0; x < 360; x += 0.7) EXPECT_NEAR(gain.value(x) * 10, std::round(gain.value(x) * 10), 1e-9);
}

TEST(LevelSlider, LabelsItsTicks) {
    const auto labels = [](const LevelSlider &slider) {
        std::string all;
        for (int tick = 0; tick < slider.ticks; ++tick) all += slider.tickLabel(tick) + " ";
        return all;
    };
    EXPECT_EQ(labels(levelSlider(Dialog::gain)), "−24 −12 0 +12 +24 ");
    EXPECT_EQ(labels(levelSlider(Dialog::normalize)), "−24 −18 −12 −6 0 ");
}

TEST(PeakOfRange, IsThatOfTheSamplesWhereverTheRangeLies) {
    const AudioEditorBuffer buffer = inPieces(noise(2000, 2, 3));
    const AudioEditorPeaks peaks(buffer);
    const std::vector<float> samples = buffer.samples();
    for (const FrameRange range : {FrameRange{0, 2000},
                                   {0, 256},
                                   {1, 255},
                                   {255, 257},
                                   {256, 512},
                                   {300, 1999},
                                   {1792, 2000},
                                   {1900, 2000},
                                   {700, 700},
                                   {5, 6}}) {
        float expected = 0;
        for (std::int64_t i = range.lo * 2; i < range.hi * 2; ++i)
            expected = std::max(expected, std::fabs(samples[std::size_t(i)]));
        EXPECT_EQ(peakOfRange(buffer, peaks, range), expected) << range.lo << " " << range.hi;
    }
}

struct LevelSheetSceneTest : ModelFixture {
    LevelSheetSceneTest() { load(AudioEditorBuffer(std::vector<float>(88200, 0.5f), 1, 44100)); }
};

TEST_F(LevelSheetSceneTest, GainMovesThePeak) {
    model.setGainDb(-4.5);
    const LevelSheetScene scene = levelSheetScene(state(), Dialog::gain, 0.5f);
    EXPECT_EQ(scene.title, "Gain");
    EXPECT_EQ(scene.target, "Whole file · 2.000 s");
    EXPECT_EQ(scene.peakBefore, "−6.0 dB");
    EXPECT_EQ(scene.peakAfter, "−10.5 dB");
    EXPECT_EQ(scene.note, "");
    EXPECT_FALSE(scene.isOver);
}

TEST_F(LevelSheetSceneTest, SaysWhenTheOutcomePassesFullScale) {
    model.select({0, 44100});
    model.setGainDb(8);
    const LevelSheetScene scene = levelSheetScene(state(), Dialog::gain, 0.5f);
    EXPECT_EQ(scene.target, "Selection · 1.000 s");
    EXPECT_EQ(scene.peakAfter, "+2.0 dB");
    EXPECT_EQ(scene.note, "over full scale");
    EXPECT_TRUE(scene.isOver);
    model.setGainDb(6.02);
    EXPECT_FALSE(levelSheetScene(state(), Dialog::gain, 0.5f).isOver) << "what reads 0.0 dB is not over";
}

TEST_F(LevelSheetSceneTest, NormalizeTellsItsGainAndLeavesSilenceAlone) {
    model.setNormalizeDb(-1);
    const LevelSheetScene scene = levelSheetScene(state(), Dialog::normalize, 0.5f);
    EXPECT_EQ(scene.peakBefore + " " + scene.peakAfter + " " + scene.note, "−6.0 dB −1.0 dB gain +5.0 dB");
    const LevelSheetScene silence = levelSheetScene(state(), Dialog::normalize, 0);
    EXPECT_EQ(silence.peakBefore + " " + silence.peakAfter + silence.note, "−∞ dB −∞ dB");
}

TEST_F(LevelSheetSceneTest, TypingIsInForceAtOnceUnlessUnreadable) {
    model.openDialog(Dialog::gain);
    typeDialogLevel(model, Dialog::gain, "3,5", true);
    EXPECT_EQ(state().gainDb, 3.5);
    EXPECT_EQ(state().dialogText, "3,5");
    EXPECT_TRUE(state().dialogTypedAhead);
    typeDialogLevel(model, Dialog::gain, "3,5x", false);
    EXPECT_EQ(state().gainDb, 3.5);
    EXPECT_FALSE(levelSheetScene(state(), Dialog::gain, 1).isReadable);
    stepDialogLevel(model, Dialog::gain, levelStepDb);
    EXPECT_EQ(state().gainDb, 4);
    EXPECT_EQ(state().dialogText, "") << "a step takes the place of what was typed";
    EXPECT_TRUE(levelSheetScene(state(), Dialog::gain, 1).isReadable);
    for (int i = 0; i < 300; ++i) stepDialogLevel(model, Dialog::gain, levelSmallStepDb);
    EXPECT_EQ(state().gainDb, 24) << "clamped, and no rounding piles up";
}

TEST(MonoSheetScene, KeysAndArrowsChoose) {
    using enum AudioEditorMonoSource;
    EXPECT_EQ(sourceForKey('l'), left);
    EXPECT_EQ(sourceForKey('R'), right);
    EXPECT_EQ(sourceForKey('m'), mix);
    EXPECT_EQ(sourceForKey('x'), std::nullopt);
    EXPECT_EQ(neighbour(left, 1), right);
    EXPECT_EQ(neighbour(mix, 1), mix);
    EXPECT_EQ(neighbour(left, -1), left);
}

TEST(OutcomeColumns, ShowEachOutcome) {
    std::vector<float> samples;
    for (int i = 0; i < 100; ++i) samples.insert(samples.end(), {0.5f, i < 50 ? -0.5f : 1.5f});
    const AudioEditorBuffer buffer(samples, 2, 44100);
    using enum AudioEditorMonoSource;
    EXPECT_EQ(outcomeColumns(buffer, left, 2), (std::vector<float>{0.5f, 0.5f}));
    EXPECT_EQ(outcomeColumns(buffer, right, 2), (std::vector<float>{0.5f, 1.0f})) << "no higher than full scale";
    EXPECT_EQ(outcomeColumns(buffer, mix, 2), (std::vector<float>{0.0f, 1.0f}));
    EXPECT_EQ(outcomeColumns(AudioEditorBuffer(2, 44100), mix, 3), std::vector<float>(3));
}

TEST(OutcomeColumns, LongSoundsAreSampledEvenly) {
    std::vector<float> sine;
    for (int i = 0; i < 400'000; ++i)
        sine.push_back(float(std::sin(2 * std::numbers::pi * i / 50)) * (i < 200'000 ? 1.0f : 0.25f));
    const auto columns = outcomeColumns(AudioEditorBuffer(sine, 1, 44100), AudioEditorMonoSource::mix, 4);
    EXPECT_NEAR(columns[0], 1, 0.01);
    EXPECT_NEAR(columns[3], 0.25, 0.01);
}

struct StretchSheetTest : ModelFixture {
    StretchSheetTest() {
        load(AudioEditorBuffer(std::vector<float>(88200, 0.5f), 1, 44100));
        model.openDialog(Dialog::timeStretch);
    }
    const StretchSettings &settings() const { return state().stretch; }
};

TEST_F(StretchSheetTest, ShowsTheNumbersAndBothLengths) {
    model.setStretch({StretchMode::s950, 125, 3, -12, 1012});
    model.select({0, 44100});
    const StretchSheetScene scene = stretchSheetScene(state());
    EXPECT_EQ(scene.target, "Selection · 1.000 s");
    EXPECT_TRUE(scene.isCyclic);
    EXPECT_EQ(scene.numbers, (decltype(scene.numbers){"125", "+3", "−12", "1012"}));
    EXPECT_EQ(scene.lengthBefore + " " + scene.lengthAfter, "1.000 s 1.250 s");
}

TEST_F(StretchSheetTest, TypedNumbersAreInForceAtOnceWithinTheirRange) {
    const struct {
        StretchField field;
        const char *typed;
        int value;
        bool isReadable;
    } cases[] = {
        {StretchField::time, "125", 125, true},    {StretchField::time, "9999 %", 400, true},
        {StretchField::time, "1x", 400, false},    {StretchField::time, "", 400, true},
        {StretchField::semitones, "−3", -3, true}, {StretchField::semitones, "+2,6 st", 3, true},
        {StretchField::semitones, "-", 3, false},  {StretchField::cents, "-12ct", -12, true},
        {StretchField::cycle, "20", 50, true},     {StretchField::cycle, "1e3", 50, false},
    };
    for (const auto &[field, typed, value, isReadable] : cases) {
        typeStretchNumber(model, field, typed, false);
        EXPECT_EQ(settings().*row(field).value, value) << typed;
        EXPECT_EQ(stretchSheetScene(state()).isReadable, isReadable) << typed;
        EXPECT_EQ(AudioEditorEdits::confirmDialog(model), isReadable) << typed;
        model.openDialog(Dialog::timeStretch);
        model.select({0, 1});  // nothing to stretch
    }
}

TEST_F(StretchSheetTest, StepsAndFindsTheCycle) {
    stepStretchNumber(model, StretchField::time, 2, false);
    stepStretchNumber(model, StretchField::time, -1, true);
    stepStretchNumber(model, StretchField::semitones, 20, false);
    EXPECT_EQ(settings().timePercent, 109);
    EXPECT_EQ(settings().semitones, 12);
    typeStretchNumber(model, StretchField::cycle, "x", false);
    std::vector<float> tone(44100);
    for (std::size_t i = 0; i < tone.size(); ++i) tone[i] = float(std::sin(2 * std::numbers::pi * double(i) / 300));
    load(AudioEditorBuffer(tone, 1, 44100));
    findStretchCycle(model);
    EXPECT_EQ(settings().cycle, 900);
    EXPECT_TRUE(stretchSheetScene(state()).isReadable);
}

TEST_F(StretchSheetTest, ConfirmingStretchesAndKeepsTheNumbersForTheNextTime) {
    model.setStretch({StretchMode::s950, 50, 0, 0, 1000});
    EXPECT_TRUE(AudioEditorEdits::confirmDialog(model));
    EXPECT_FALSE(state().dialog);
    EXPECT_EQ(buffer().frames(), 44100);
    model.openDialog(Dialog::timeStretch);
    EXPECT_EQ(settings().timePercent, 50);
}

TEST(StretchSheetGeometry, PutsAllInARowAndWrapsWhereThatFindsNoRoom) {
    const StretchSheetMeasures measures{.segmentsWidth = 141, .autoWidth = 55, .buttonsWidth = 176, .lengthWidth = 170};
    const auto overlap = [](const Box &a, const Box &b) {
        return a.x < b.right() && b.x < a.right() && a.y < b.bottom() && b.y < a.bottom();
    };
    for (const StretchMode mode : {StretchMode::clean, StretchMode::s950})
        for (const int most : {1200, 608, 400, 360}) {
            const StretchSheetGeometry geometry(mode, most, measures);
            std::vector<Box> boxes{geometry.title(), geometry.segments(), geometry.length()};
            for (const StretchNumber &number : stretchNumbers)
                if (const auto box = geometry.field(number.field)) boxes.push_back(*box);
            EXPECT_EQ(boxes.size(), mode == StretchMode::clean ? 6u : 7u);
            for (std::size_t i = 0; i < boxes.size(); ++i) {
                EXPECT_GE(boxes[i].x, 16);
                EXPECT_LE(boxes[i].right(), geometry.width() - 16) << most << " " << i;
                EXPECT_LE(boxes[i].bottom(), geometry.height() - 16);
                for (std::size_t j = 0; j < i; ++j) EXPECT_FALSE(overlap(boxes[i], boxes[j])) << most << " " << i << " " << j;
            }
        }
    const StretchSheetGeometry clean(StretchMode::clean, 1200, measures), cyclic(StretchMode::s950, 1200, measures);
    EXPECT_EQ(clean.width(), 480);
    EXPECT_EQ(clean.height(), 166);
    EXPECT_EQ(clean.segments(), (Box{16, 70, 141, 32}));
    EXPECT_EQ(clean.field(StretchField::cents), (Box{373, 70, 88, 32}));
    EXPECT_EQ(cyclic.width(), 640);
    EXPECT_EQ(cyclic.autoButton(), (Box{564, 70, 55, 32}));
}

}  // namespace
}  // namespace kiv
