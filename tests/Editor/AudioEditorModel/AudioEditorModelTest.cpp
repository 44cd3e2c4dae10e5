#include "Editor/AudioEditorModel/AudioEditorModel.h"

#include "Editor/AudioEditorModel/ModelFixture.h"

namespace kiv {
namespace {

using ModelTest = ModelFixture;

TEST_F(ModelTest, startsFromTheStoredSettings) {
    FakeDefaults stored({{"audio_editor_mono_source", "right"},
                         {"audio_editor_gain_db", "-30"},
                         {"audio_editor_normalize_db", "-1.5"},
                         {"audio_editor_loop", "true"},
                         {"time_unit", "samples"},
                         {"follow_playhead", "true"}});
    Settings storedSettings(stored);
    const AudioEditorModel fromStored(storedSettings, clipboard);
    EXPECT_EQ(fromStored.state().monoSource, AudioEditorMonoSource::right);
    EXPECT_EQ(fromStored.state().gainDb, -24);
    EXPECT_EQ(fromStored.state().normalizeDb, -1.5);
    EXPECT_TRUE(fromStored.state().loopEnabled);
    EXPECT_EQ(fromStored.state().timeUnit, AudioEditorTimeUnit::samples);
    EXPECT_TRUE(fromStored.state().followPlayhead);

    EXPECT_EQ(state().monoSource, AudioEditorMonoSource::mix);
    EXPECT_FALSE(state().loopEnabled || state().followPlayhead);
    EXPECT_EQ(state().timeUnit, AudioEditorTimeUnit::seconds);
}

TEST_F(ModelTest, isWholeWithoutASound) {
    AudioEditorModel empty(settings, clipboard);
    EXPECT_FALSE(empty.activeRange() || empty.canCut() || empty.canUndo() || empty.canRedo());
    empty.selectAll();
    empty.placeCursor(5);
    empty.zoomBy(2);
    empty.commitLoop(FrameRange{0, 10});
    empty.undo();
    empty.redo();
    EXPECT_EQ(empty.state().cursorFrame, 0);
    EXPECT_EQ(empty.state().view, (AudioEditorZoom{1, 0.5}));
    EXPECT_FALSE(empty.state().selection || empty.state().loopPoints || empty.canUndo());
}

TEST_F(ModelTest, aLoadedSoundStartsAfresh) {
    model.select({100, 200});
    model.commitLoop(FrameRange{1, 2});
    model.zoomBy(4);
    const auto version = state().contentVersion, generation = state().generation;
    const AudioEditorBuffer next = noise(500, 1, 2);
    EXPECT_NE(notices([&] { model.load(next, {7, 500}, FrameRange{10, 20}); }), 0u);
    EXPECT_EQ(buffer(), next);
    EXPECT_EQ(state().peaks, AudioEditorPeaks(next));
    EXPECT_EQ(state().markerFrames, (std::vector<std::int64_t>{7, 500}));
    EXPECT_EQ(state().loopPoints, (FrameRange{10, 20}));
    EXPECT_EQ(state().cursorFrame, 0);
    EXPECT_FALSE(state().selection || state().lastSelection || model.canUndo());
    EXPECT_EQ(state().view, zoomedToFit(500));
    EXPECT_GT(state().contentVersion, version);
    EXPECT_GT(state().generation, generation);
}

TEST_F(ModelTest, aReloadedSoundKeepsWhatLiesInside) {
    model.setView({10, 900});
    model.select({400, 800});
    AudioEditorEdits::reverse(model);
    EXPECT_NE(notices([&] { model.reload(noise(600, 2, 3), {}, {}); }), 0u);
    EXPECT_EQ(state().selection, (FrameRange{400, 600}));
    EXPECT_EQ(state().cursorFrame, 400);
    EXPECT_EQ(state().view, (AudioEditorZoom{10, 570}));
    EXPECT_FALSE(model.canUndo());
    model.reload(noise(300, 2, 4), {}, {});
    EXPECT_FALSE(state().selection);
    EXPECT_EQ(state().cursorFrame, 300);
}

TEST_F(ModelTest, takesPeaksThatWereBuiltBefore) {
    AudioEditorPeaks given;
    given.mins = {{-0.5f}};
    given.maxs = {{0.5f}};
    model.load(noise(100, 1, 2), {}, {}, given);
    EXPECT_EQ(state().peaks, given);
}

TEST_F(ModelTest, theOwnerIsCalledWhenAnEditIsComplete) {
    load(noise(1000, 2, 1), {500}, FrameRange{600, 700});
    const AudioEditorBuffer original = buffer();
    int calls = 0;
    model.onAudioChanged = [&](const AudioEditorBuffer &before, const AudioEditorBuffer &now) {
        ++calls;
        EXPECT_EQ(before, original);
        EXPECT_EQ(&now, &buffer());
        EXPECT_EQ(now.frames(), 900);
        EXPECT_EQ(state().cursorFrame, 100);
        EXPECT_FALSE(state().selection);
        EXPECT_EQ(state().markerFrames[0], 400);
        EXPECT_EQ(state().loopPoints, (FrameRange{500, 600}));
        EXPECT_TRUE(told.empty());
        model.setPlayheads({});
        model.setMaxLevel(0.5f);
    };
    model.select({100, 200});
    const auto changes = notices([&] { AudioEditorEdits::deleteSelection(model); });
    EXPECT_EQ(calls, 1);
    EXPECT_TRUE(Changes{changes}.contains(Change::maxLevel));
}

using Act = void (*)(AudioEditorModel &);

TEST_F(ModelTest, selectionsAndCursorAreClamped) {
    const struct {
        Act act;
        std::int64_t cursor;
        std::optional<FrameRange> selection;
    } cases[] = {
        // clang-format off
        {[](auto &m) { m.select({200, 300}); }, 200, FrameRange{200, 300}},
        {[](auto &m) { m.select({-5, 3000}); }, 0, FrameRange{0, 1000}},
        {[](auto &m) { m.select({40, 40}); }, 40, {}},
        {[](auto &m) { m.select({40, 30}); }, 40, {}},
        {[](auto &m) { m.select({1000, 2000}); }, 1000, {}},
        {[](auto &m) { m.placeCursor(70); }, 70, {}},
        {[](auto &m) { m.placeCursor(-70); }, 0, {}},
        {[](auto &m) { m.placeCursor(1001); }, 1000, {}},
        {[](auto &m) { m.selectAll(); }, 0, FrameRange{0, 1000}},
        {[](auto &m) { m.selectNone(); }, 500, {}},
        {[](auto &m) { m.setCursorAndSelection(90, FrameRange{80, 2000}); }, 90, FrameRange{80, 1000}},
        // clang-format on
    };
    for (const auto &each : cases) {
        const auto number = &each - cases;
        model.select({500, 600});
        notices([&] { each.act(model); });
        EXPECT_EQ(state().cursorFrame, each.cursor) << number;
        EXPECT_EQ(state().selection, each.selection) << number;
        EXPECT_EQ(state().lastSelection, (FrameRange{500, 600})) << number;
    }
}

TEST_F(ModelTest, theActiveRangeIsTheSelectionElseTheWholeSound) {
    EXPECT_EQ(model.activeRange(), (FrameRange{0, 1000}));
    model.select({10, 20});
    EXPECT_EQ(model.activeRange(), (FrameRange{10, 20}));
    EXPECT_TRUE(model.canCut());
    model.selectAll();
    EXPECT_FALSE(model.canCut());
    model.selectNone();
    EXPECT_FALSE(model.canCut());
}

TEST_F(ModelTest, eachSetterTellsItsChangeOnceAndTheSameValueNothing) {
    const struct {
        Act act;
        std::uint32_t expected;
    } cases[] = {
        // clang-format off
        {[](auto &m) { m.placeCursor(9); }, bits({Change::cursor})},
        {[](auto &m) { m.select({5, 8}); }, bits({Change::cursor, Change::selection})},
        {[](auto &m) { m.selectNone(); }, bits({Change::selection})},
        {[](auto &m) { m.setView({4, 300}); }, bits({Change::view})},
        {[](auto &m) { m.zoomToFit(); }, bits({Change::view})},
        {[](auto &m) { m.setVerticalZoomDb(6); }, bits({Change::verticalZoom})},
        {[](auto &m) { m.setFollowPlayhead(true); }, bits({Change::followPlayhead})},
        {[](auto &m) { m.setLoopEnabled(true); }, bits({Change::playback})},
        {[](auto &m) { m.setPlaying(true); }, bits({Change::playback})},
        {[](auto &m) { m.setPreviewPlaying(true); }, bits({Change::playback})},
        {[](auto &m) { m.setPlayheads({{1, 2.5}}); }, bits({Change::playheads})},
        {[](auto &m) { m.setMaxLevel(0.5f); }, bits({Change::maxLevel})},
        {[](auto &m) { m.openDialog(Dialog::gain); }, bits({Change::dialog})},
        {[](auto &m) { m.setDialogText("3", true); }, bits({Change::dialog})},
        {[](auto &m) { m.setGainDb(30); }, bits({Change::dialog})},
        {[](auto &m) { m.setNormalizeDb(-3); }, bits({Change::dialog})},
        {[](auto &m) { m.setMonoSource(AudioEditorMonoSource::left); }, bits({Change::dialog})},
        {[](auto &m) { m.closeDialog(); }, bits({Change::dialog})},
        {[](auto &m) { m.setPointerMode(EdgeDrag{7}); }, bits({Change::pointer})},
        {[](auto &m) { m.commitLoop(FrameRange{5, 9}); }, bits({Change::loopPoints, Change::history})},
        // clang-format on
    };
    for (const auto &each : cases) {
        EXPECT_EQ(notices([&] { each.act(model); }), each.expected) << &each - cases;
        EXPECT_EQ(notices([&] { each.act(model); }), 0u) << &each - cases;
        EXPECT_EQ(state().resizingEdge, state().pointerMode.has_value());
    }
    model.setPointerMode(CursorDrag{5, 3.5, false});
    EXPECT_FALSE(state().resizingEdge);
}

TEST_F(ModelTest, aBatchTellsAllItsChangesAsOne) {
    const auto changes = notices([&] {
        const AudioEditorModel::Batch outer(model);
        model.placeCursor(5);
        {
            const AudioEditorModel::Batch inner(model);
            model.setVerticalZoomDb(3);
        }
        EXPECT_TRUE(told.empty());
        model.setPlaying(true);
    });
    EXPECT_EQ(changes, bits({Change::cursor, Change::verticalZoom, Change::playback}));
    EXPECT_EQ(notices([&] { const AudioEditorModel::Batch idle(model); }), 0u);
}

TEST_F(ModelTest, zoomingKeepsTheCursorInPlaceWhileItIsInView) {
    load(noise(100'000, 1, 1));
    model.setView({10, 40'000});
    model.placeCursor(45'000);
    EXPECT_EQ(model.zoomAnchor(), 45'000);
    model.zoomBy(2);
    EXPECT_EQ(state().view, (AudioEditorZoom{20, 42'500}));
    model.placeCursor(100);
    EXPECT_EQ(model.zoomAnchor(), 42'500);
    model.zoomBy(0.5);
    EXPECT_EQ(state().view, (AudioEditorZoom{10, 42'500}));
    model.revealFrame(90'000);
    EXPECT_EQ(state().view, (AudioEditorZoom{10, 94'000}));
    model.zoomToSelection();
    EXPECT_EQ(state().view, (AudioEditorZoom{10, 94'000})) << "there is no selection";
    model.select({1000, 2000});
    model.zoomToSelection();
    EXPECT_EQ(state().view, (AudioEditorZoom{100, 1500}));
}

TEST_F(ModelTest, verticalZoomStepsByThreeDecibelsUpToItsEnds) {
    EXPECT_EQ(state().verticalZoomDb, 0);
    for (int db = 3; db <= 36; db += 3) {
        model.verticalZoomIn();
        EXPECT_EQ(state().verticalZoomDb, db);
    }
    EXPECT_EQ(notices([&] { model.verticalZoomIn(); }), 0u);
    model.setVerticalZoomDb(0);
    for (int db = -3; db >= -12; db -= 3) {
        model.verticalZoomOut();
        EXPECT_EQ(state().verticalZoomDb, db);
    }
    EXPECT_EQ(notices([&] { model.verticalZoomOut(); }), 0u);
}

TEST_F(ModelTest, dialogAndBarValuesAreStoredAsSoonAsTheyChange) {
    std::vector<bool> heard;
    model.onLoopChanged = [&](bool loop) { heard.push_back(loop); };
    model.setGainDb(100);
    model.setNormalizeDb(3);
    model.setNormalizeDb(-4.5);
    model.setMonoSource(AudioEditorMonoSource::left);
    model.setLoopEnabled(true);
    model.setLoopEnabled(true);
    model.toggleTimeUnit();
    model.setFollowPlayhead(true);
    EXPECT_EQ(heard, std::vector<bool>{true});
    // The unit and following the playhead are the window's own.
    EXPECT_EQ(defaults.values(), (std::map<std::string, std::string, std::less<>>{{"audio_editor_gain_db", "24"},
                                                                                  {"audio_editor_normalize_db", "-4.5"},
                                                                                  {"audio_editor_mono_source", "left"},
                                                                                  {"audio_editor_loop", "true"}}));
    EXPECT_EQ(notices([&] { model.setGainDb(std::nan("")); }), 0u);
}

TEST_F(ModelTest, aDialogOpensAndClosesWithoutAnOldText) {
    model.openDialog(Dialog::gain);
    model.setDialogText("12", true);
    model.closeDialog();
    EXPECT_FALSE(state().dialog);
    model.openDialog(Dialog::normalize);
    EXPECT_EQ(state().dialogText, "");
    EXPECT_FALSE(state().dialogTypedAhead);
    model.setDialogText("-3", true);
    model.openDialog(Dialog::gain);
    EXPECT_EQ(state().dialogText, "");
}

}  // namespace
}  // namespace kiv
