#include "Editor/AudioEditorModel/ModelFixture.h"
#include "Editor/Surfaces/EditorWindowLayout.h"
#include "Editor/Surfaces/InfoLineScene.h"
#include "Editor/Surfaces/TopBarLayout.h"
#include "Editor/Surfaces/TopBarScene.h"

namespace kiv {
namespace {

using Item = TopBarItem;

TEST(TopBarLayout, StandsAsDrawnAtFullWidth) {
    const TopBarLayout layout(1280, TopBarMeasures());
    EXPECT_EQ(layout[Item::goToStart], (Box{12, 8, 32, 28}));
    EXPECT_EQ(layout[Item::playStop], (Box{48, 8, 44, 28}));
    EXPECT_EQ(layout[Item::loop], (Box{136, 8, 32, 28}));
    EXPECT_EQ(layout[Item::position], (Box{184, 8, 104, 28}));
    EXPECT_EQ(layout.separator, (Box{300, 8, 1, 28}));
    EXPECT_EQ(layout[Item::slicer]->x, 317);
    EXPECT_EQ(layout[Item::maxLevel], (Box{843, 8, 106, 28}));
    EXPECT_EQ(layout[Item::verticalZoomOut], (Box{965, 8, 32, 28}));
    EXPECT_EQ(layout[Item::verticalZoomValue], (Box{996, 8, 60, 28}));
    EXPECT_EQ(layout[Item::zoomOut], (Box{1103, 8, 32, 28}));
    EXPECT_EQ(layout[Item::zoomSelection], (Box{1196, 8, 32, 28}));
    EXPECT_EQ(layout[Item::followPlayhead], (Box{1236, 8, 32, 28}));
}

TEST(TopBarLayout, LosesItsPartsOneByOne) {
    struct Row {
        int width;
        bool words, vertical, max, position;
    };
    for (const Row &row :
         {Row{1120, true, true, true, true}, Row{1119, false, true, true, true}, Row{960, false, true, true, true},
          Row{959, false, false, true, true}, Row{800, false, false, true, true}, Row{799, false, false, false, true},
          Row{660, false, false, false, true}, Row{659, false, false, false, false}, Row{640, false, false, false, false}}) {
        const TopBarLayout layout(row.width, TopBarMeasures());
        EXPECT_EQ(layout.showsWords, row.words) << row.width;
        EXPECT_EQ(layout[Item::verticalZoomValue].has_value(), row.vertical) << row.width;
        EXPECT_EQ(layout[Item::maxLevel].has_value(), row.max) << row.width;
        EXPECT_EQ(layout[Item::position].has_value(), row.position) << row.width;
        EXPECT_TRUE(layout[Item::slicer] && layout[Item::followPlayhead]) << row.width;
    }
}

TEST(TopBarLayout, PartsNeverRunIntoEachOther) {
    TopBarMeasures large;  // as with a desktop font of 16 points
    large.wordedWidths = {110, 150, 140, 82};
    large.positionWidth = 240;
    large.maxLevelWidth = 160;
    for (const TopBarMeasures &measures : {TopBarMeasures(), large})
        for (int width = 640; width <= 1600; width += 7) {
            const TopBarLayout layout(width, measures);
            int right = 0;
            for (const auto &box : layout.boxes) {
                if (!box) continue;
                EXPECT_GE(box->x, right - 1) << width;  // grouped buttons share a line
                right = box->right();
            }
            EXPECT_LE(right, width - 12);
        }
}

struct TopBarSceneTest : ModelFixture {};

TEST_F(TopBarSceneTest, ShowsThePlayheadWhileThereIsOneElseTheCursor) {
    load(AudioEditorBuffer(std::vector<float>(88200), 1, 44100));
    model.placeCursor(22050);
    EXPECT_EQ(topBarScene(state()).position, "0.500 s");
    model.setPlayheads({{1, 44100}});
    EXPECT_EQ(topBarScene(state()).position, "1.000 s");
    model.toggleTimeUnit();
    EXPECT_EQ(topBarScene(state()).position, "44100");
}

TEST_F(TopBarSceneTest, WarnsOfLevelsAboveFullScale) {
    EXPECT_EQ(topBarScene(state()).maxLevel, "–");
    model.setMaxLevel(1.0f);
    EXPECT_EQ(topBarScene(state()).maxLevel, "0.0 dB");
    EXPECT_FALSE(topBarScene(state()).isOver);
    model.setMaxLevel(1.1482f);
    EXPECT_EQ(topBarScene(state()).maxLevel, "+1.2 dB");
    EXPECT_TRUE(topBarScene(state()).isOver);
}

struct InfoLineTest : ModelFixture {
    const FileFacts facts{"WAV", "24-bit", 48000};
    InfoLineTest() { load(AudioEditorBuffer(std::vector<float>(96000), 2, 48000)); }

    std::string shown(int width, std::optional<WaveformHover> pointer = {}) const {
        const InfoLineScene scene = infoLineScene(state(), pointer, facts);
        std::string text;
        for (const PlacedInfoText &placed : placedInfoTexts(scene, width, measure)) text += placed.text.text + "|";
        return text;
    }
    static int measure(const InfoText &text) { return 7 * int(text.text.size()); }
};

TEST_F(InfoLineTest, TellsCursorOrSelectionAndWhatTheFileIs) {
    model.placeCursor(24000);
    EXPECT_EQ(shown(2000), "Cursor|0.500 s|WAV · 24-bit · 48 kHz · Stereo|1.000 s|");
    model.select({12000, 36000});
    EXPECT_EQ(shown(2000), "Selection|0.250 s|–|0.750 s|Length|0.500 s|WAV · 24-bit · 48 kHz · Stereo|1.000 s|");
    EXPECT_EQ(spokenPlaces(infoLineScene(state(), {}, facts)), "Selection 0.250 s – 0.750 s, Length 0.500 s");
    EXPECT_TRUE(infoLineScene(state(), {}, {}).right.empty()) << "of a file that is still being read";
}

TEST_F(InfoLineTest, DropsThePointerFirstAndThenTheFormat) {
    const WaveformHover pointer{4800, -11.6};
    EXPECT_EQ(shown(700, pointer), "Cursor|0.000 s|Pointer|0.100 s|·|−11.6 dB|WAV · 24-bit · 48 kHz · Stereo|1.000 s|");
    EXPECT_EQ(shown(500, pointer), "Cursor|0.000 s|WAV · 24-bit · 48 kHz · Stereo|1.000 s|");
    EXPECT_EQ(shown(300, pointer), "Cursor|0.000 s|1.000 s|");
    EXPECT_EQ(shown(150, pointer), "Cursor|0.000 s|") << "in a line too short even for this, the length goes last";
}

TEST_F(InfoLineTest, NothingOverlapsAndTheRightEndsAtThePadding) {
    model.select({1, 47999});
    for (int width = 640; width < 1400; width += 13) {
        const auto placed = placedInfoTexts(infoLineScene(state(), WaveformHover{9, -60}, facts), width, measure);
        for (std::size_t i = 1; i < placed.size(); ++i) EXPECT_GE(placed[i].x, placed[i - 1].x + placed[i - 1].width);
        EXPECT_EQ(placed.back().x + placed.back().width, width - 12);
    }
}

TEST_F(InfoLineTest, FieldsSetCursorSelectionAndLength) {
    setInfoField(model, InfoField::cursor, 100);
    EXPECT_EQ(state().cursorFrame, 100);
    model.select({1000, 2000});
    setInfoField(model, InfoField::selectionStart, 500);
    EXPECT_EQ(state().selection, (FrameRange{500, 2000}));
    setInfoField(model, InfoField::selectionEnd, 3000);
    EXPECT_EQ(state().selection, (FrameRange{500, 3000}));
    setInfoField(model, InfoField::selectionLength, 100);
    EXPECT_EQ(state().selection, (FrameRange{500, 600}));
    setInfoField(model, InfoField::selectionStart, 900);
    EXPECT_EQ(state().selection, (FrameRange{600, 900})) << "an edge moved past the other";
    setInfoField(model, InfoField::selectionEnd, 9'000'000);
    EXPECT_EQ(state().selection, (FrameRange{600, 48000})) << "clamped";
}

TEST(FileFacts, RatesAndChannelsInWords) {
    EXPECT_EQ(rateText(44100), "44.1 kHz");
    EXPECT_EQ(rateText(11025), "11.025 kHz");
    EXPECT_EQ(rateText(800), "800 Hz");
    EXPECT_EQ(channelsText(1) + channelsText(2) + channelsText(6), "MonoStereo6 channels");
}

TEST(EditorWindowLayout, PartsFillTheWindowFromTopToFoot) {
    const EditorWindowLayout layout(1280, 800, EditorWindowMeasures());
    EXPECT_EQ(layout.menuBar, (Box{0, 0, 1280, 28}));
    EXPECT_EQ(layout.topBar, (Box{0, 28, 1280, 44}));
    EXPECT_EQ(layout.overview, (Box{0, 72, 1280, 44}));
    EXPECT_EQ(layout.ruler, (Box{0, 116, 1280, 40}));
    EXPECT_EQ(layout.gutter, (Box{0, 156, 44, 616}));
    EXPECT_EQ(layout.waveform, (Box{44, 156, 1236, 616}));
    EXPECT_EQ(layout.infoLine, (Box{0, 772, 1280, 28}));
}

TEST(EditorWindowLayout, LowWindowsHaveLessOverview) {
    for (const auto &[height, overview] : {std::pair{560, 44}, {559, 28}, {440, 28}, {439, 0}, {400, 0}}) {
        const EditorWindowLayout layout(640, height, EditorWindowMeasures());
        EXPECT_EQ(layout.overview.height, overview) << height;
        EXPECT_EQ(layout.infoLine.bottom(), height);
    }
}

TEST(WindowFrame, OnlyFourWholeNumbersCount) {
    EXPECT_EQ(parseFrame("1 -2 300 400"), (Box{1, -2, 300, 400}));
    EXPECT_EQ(parseFrame(frameText({-5, 6, 7, 8})), (Box{-5, 6, 7, 8}));
    for (const char *text : {"", "1 2 3", "1 2 3 4 5", "1 2 3 x", "1  2 3 4", " 1 2 3 4", "1 2 3 4 ", "1.5 2 3 4", "a b c d"})
        EXPECT_EQ(parseFrame(text), std::nullopt) << text;
}

TEST(WindowFrame, OpensWhereItWasOrWhereItCanBeSeen) {
    const std::vector<Box> screens{{0, 0, 1920, 1050}, {1920, 200, 1280, 800}};
    EXPECT_EQ(openingFrame({}, screens), (Box{320, 125, 1280, 800}));
    EXPECT_EQ(openingFrame({}, {{0, 0, 1024, 700}}), (Box{0, 32, 1024, 668})) << "with room for the title bar";
    EXPECT_EQ(openingFrame(Box{100, 50, 900, 600}, screens), (Box{100, 50, 900, 600}));
    EXPECT_EQ(openingFrame(Box{100, 50, 300, 100}, screens), (Box{100, 50, 640, 400})) << "never below the smallest size";
    EXPECT_EQ(openingFrame(Box{5000, 300, 900, 600}, screens), (Box{2300, 300, 900, 600})) << "onto the nearest screen";
    EXPECT_EQ(openingFrame(Box{-2000, -2000, 900, 600}, screens), (Box{0, 32, 900, 600}));
    EXPECT_EQ(openingFrame(Box{-899, 300, 900, 600}, screens), (Box{0, 300, 900, 600}))
        << "a mere edge cannot be taken hold of";
    EXPECT_EQ(openingFrame(Box{2000, 100, 900, 600}, screens), (Box{2000, 232, 900, 600}));
    EXPECT_EQ(openingFrame(Box{1500, 300, 900, 600}, screens), (Box{1500, 300, 900, 600})) << "on two screens at once";
    EXPECT_EQ(openingFrame(Box{0, 0, 2560, 1400}, {{0, 0, 1366, 768}}), (Box{0, 32, 1366, 736}));
}

TEST(WindowFrame, NextWindowsStepAside) {
    const std::vector<Box> screens{{0, 20, 1100, 800}};
    const Box frame{100, 100, 900, 600};
    EXPECT_EQ(cascaded(frame, {}, screens), frame);
    EXPECT_EQ(cascaded(frame, {{100, 100, 1, 1}, {124, 124, 1, 1}, {500, 500, 1, 1}}, screens), (Box{148, 148, 900, 600}));
    EXPECT_EQ(cascaded({190, 100, 900, 600}, {{190, 100, 1, 1}}, screens), (Box{0, 52, 900, 600})) << "begins anew";
    const Box full{0, 52, 1100, 768};
    EXPECT_EQ(cascaded(full, {{0, 52, 1, 1}}, screens), full) << "there is no other place";
}

}  // namespace
}  // namespace kiv
