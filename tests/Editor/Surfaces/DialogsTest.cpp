#include <cmath>
#include <numbers>

#include "Editor/AudioEditorModel/ModelFixture.h"
#include "Editor/Surfaces/LevelSheetScene.h"
#include "Editor/Surfaces/MonoSheetScene.h"
#include "Editor/Surfaces/StretchSheetGeometry.h"

namespace kiv {
namespace {

TEST(LevelSlider, ValuesAndPixelsAgreeAndZeroHolds) {
    const LevelSlider gain{.left = 16, .width = 320};
    for (const auto &[db, x] : {std::pair{-24, 16}, {0, 176}, {24, 336}}) EXPECT_EQ(gain.x(db), x);
    for (const auto &[x, db] : {std::pair{-100, -24}, {1000, 24}, {172, 0}, {180, 0}}) EXPECT_EQ(gain.value(x), db);
    EXPECT_NE(gain.value(171), 0);
    for (double db = -24; db <= 24; db += 1.5) EXPECT_NEAR(gain.value(gain.x(db)), db, 1e-9);
    for (double x = 0; x < 360; x += 0.7) EXPECT_NEAR(gain.value(x) * 10, std::round(gain.value(x) * 10), 1e-9);
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

TEST_F(LevelSheetSceneTest, TellsThePeakBeforeAndAfter) {
    const struct {
        Dialog dialog;
        double db;
        float peak;
        const char *shown;
        bool isOver;
    } rows[] = {{Dialog::gain, -4.5, 0.5f, "−6.0 dB −10.5 dB ", false},
                {Dialog::gain, 8, 0.5f, "−6.0 dB +2.0 dB over full scale", true},
                {Dialog::gain, 6.02, 0.5f, "−6.0 dB 0.0 dB ", false},
                {Dialog::normalize, -1, 0.5f, "−6.0 dB −1.0 dB gain +5.0 dB", false},
                {Dialog::normalize, -1, 0, "−∞ dB −∞ dB ", false}};
    for (const auto &row : rows) {
        setDialogLevel(model, row.dialog, row.db);
        const LevelSheetScene scene = levelSheetScene(state(), row.dialog, row.peak);
        EXPECT_EQ(scene.peakBefore + " " + scene.peakAfter + " " + scene.note, row.shown);
        EXPECT_EQ(scene.isOver, row.isOver) << "what reads 0.0 dB is not over";
    }
    EXPECT_EQ(levelSheetScene(state(), Dialog::gain, 1).target, "Whole file · 2.000 s");
    model.select({0, 44100});
    EXPECT_EQ(levelSheetScene(state(), Dialog::gain, 1).target, "Selection · 1.000 s");
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
    for (const auto &[key, source] : {std::pair{'l', std::optional(left)}, {'R', right}, {'m', mix}, {'x', std::nullopt}})
        EXPECT_EQ(sourceForKey(key), source);
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
    EXPECT_EQ(buffer().frames(), 44100);
    model.openDialog(Dialog::timeStretch);
    EXPECT_EQ(settings().timePercent, 50);
}

TEST(StretchSheetGeometry, PutsAllInARowAndWrapsWhereThatFindsNoRoom) {
    const StretchSheetGeometry::Widths widths{141, 55};
    const auto controls = [&](StretchMode mode, int width) {
        return StretchSheetGeometry(mode, 50, width, widths, {}, roomyDistances);
    };
    EXPECT_EQ(StretchSheetGeometry::wishedWidth(StretchMode::clean, widths, {}), 480);
    EXPECT_EQ(StretchSheetGeometry::wishedWidth(StretchMode::s950, widths, {}), 640);
    const auto clean = controls(StretchMode::clean, 448), cyclic = controls(StretchMode::s950, 608),
               wrapped = controls(StretchMode::s950, 400);
    EXPECT_EQ(clean.segments(), (Box{16, 70, 141, 32}));
    EXPECT_EQ(clean.field(StretchField::cents), (Box{373, 70, 88, 32}));
    EXPECT_FALSE(clean.field(StretchField::cycle));
    EXPECT_EQ(cyclic.autoButton(), (Box{564, 70, 55, 32}));
    EXPECT_EQ(cyclic.bottom(), 102);
    EXPECT_EQ(wrapped.field(StretchField::cents), (Box{16, 130, 88, 32}));
    EXPECT_EQ(wrapped.bottom(), 162);
}

TEST(DialogSheetGeometry, TheButtonsGoUnderATextThatIsTooLong) {
    DialogSheetMeasures measures{.noteWidth = 200, .buttonsWidth = 176};
    const DialogSheetGeometry one(480, 52, measures, roomyDistances), low(480, 52, measures, closeDistances);
    EXPECT_EQ(one.body, (Box{16, 50, 448, 52}));
    EXPECT_EQ(std::pair(one.note.y, one.buttonsTop), std::pair(118, 118));
    EXPECT_EQ(one.height, 166);
    EXPECT_EQ(low.height, 142);
    measures.noteWidth = 270;
    const DialogSheetGeometry two(480, 52, measures, roomyDistances);
    EXPECT_EQ(std::pair(two.note.y, two.buttonsTop), std::pair(118, 142));
    EXPECT_EQ(two.height, 190);
}

}  // namespace
}  // namespace kiv
