#include <algorithm>
#include <random>

#include "Editor/AudioEditorModel/ModelFixture.h"

namespace kiv {
namespace {

using HistoryTest = ModelFixture;
namespace Edits = AudioEditorEdits;

TEST_F(HistoryTest, aCommitMovesMarkersAndLoopWithTheAudio) {
    load(noise(1000, 1, 1), {100, 150, 200, 999, 1000}, FrameRange{150, 400});
    model.select({100, 200});
    // The cursor stands at the selection's start already.
    EXPECT_EQ(notices([&] { Edits::cut(model); }),
              bits({Change::audio, Change::markers, Change::selection, Change::loopPoints, Change::history, Change::view}));
    EXPECT_EQ(state().markerFrames, (std::vector<std::int64_t>{100, 100, 100, 899, 900}));
    EXPECT_EQ(state().loopPoints, (FrameRange{100, 300}));
    model.undo();
    EXPECT_EQ(state().markerFrames, (std::vector<std::int64_t>{100, 150, 200, 999, 1000}));
    EXPECT_EQ(state().loopPoints, (FrameRange{150, 400}));
}

TEST_F(HistoryTest, aLoopThatDoesNotMoveIsNotTold) {
    load(noise(1000, 1, 1), {10}, FrameRange{20, 30});
    model.select({100, 200});
    EXPECT_FALSE(Changes{notices([&] { Edits::cut(model); })}.containsAny({Change::loopPoints, Change::markers}));
    load(noise(1000, 1, 1), {}, FrameRange{0, 10});
    model.select({0, 50});
    Edits::deleteSelection(model);
    EXPECT_EQ(state().loopPoints, (FrameRange{0, 1}));
}

TEST_F(HistoryTest, cursorAndSelectionGivenToACommitAreClamped) {
    model.select({700, 900});
    model.commit(noise(500, 2, 3), 800, FrameRange{400, 900}, AudioEditorLengthChange::none());
    EXPECT_EQ(state().cursorFrame, 500);
    EXPECT_EQ(state().selection, (FrameRange{400, 500}));
    EXPECT_FALSE(state().lastSelection) << "what lies outside the sound is no selection";
    model.selectNone();
    model.commit(noise(300, 2, 3), 0, std::nullopt, AudioEditorLengthChange::none());
    EXPECT_FALSE(state().lastSelection);
}

TEST_F(HistoryTest, theViewStaysInsideTheSoundAfterEachStep) {
    load(noise(100'000, 1, 1));
    model.setView({1000, 90'000});
    model.select({1000, 99'000});
    Edits::deleteSelection(model);
    EXPECT_EQ(state().view, (AudioEditorZoom{125, 1992}));
    model.undo();
    EXPECT_EQ(state().view, (AudioEditorZoom{125, 1992}));
    Edits::trim(model);
    model.setView({1, 0});
    model.redo();
    EXPECT_EQ(state().view, zoomedToFit(buffer().frames()));
}

TEST_F(HistoryTest, aLoopStepHasNoBufferAndItsUndoLeavesTheRestAlone) {
    load(noise(1000, 2, 1), {10});
    const auto version = state().contentVersion, generation = state().generation;
    model.onAudioChanged = [](const AudioEditorBuffer &, const AudioEditorBuffer &) {
        ADD_FAILURE() << "the audio is the same";
    };
    model.commitLoop(FrameRange{100, 200});
    EXPECT_GT(state().contentVersion, version);
    model.select({300, 400});
    EXPECT_EQ(notices([&] { model.undo(); }), bits({Change::loopPoints, Change::history}));
    EXPECT_FALSE(state().loopPoints);
    EXPECT_EQ(state().selection, (FrameRange{300, 400}));
    EXPECT_EQ(state().cursorFrame, 300);
    EXPECT_EQ(state().contentVersion, version);
    EXPECT_EQ(state().generation, generation);
    model.redo();
    EXPECT_EQ(state().loopPoints, (FrameRange{100, 200}));
    model.commitLoop(std::nullopt);
    EXPECT_FALSE(state().loopPoints);
    EXPECT_EQ(model.history().undoDepth(), 2u);
}

TEST_F(HistoryTest, aLoopIsClampedToAtLeastOneFrame) {
    const std::pair<FrameRange, FrameRange> cases[] = {
        {{10, 20}, {10, 20}}, {{-10, 20}, {0, 20}},        {{10, 2000}, {10, 1000}}, {{50, 40}, {50, 51}},
        {{7, 7}, {7, 8}},     {{1000, 1000}, {999, 1000}}, {{5000, 1}, {999, 1000}}, {{-9, -5}, {0, 1}}};
    for (const auto &[given, clamped] : cases) {
        model.commitLoop(given);
        EXPECT_EQ(state().loopPoints, clamped) << given.lo << " … " << given.hi;
        EXPECT_EQ(notices([&, again = given] { model.commitLoop(again); }), 0u) << given.lo << " … " << given.hi;
    }
}

TEST_F(HistoryTest, aDragOfTheLoopIsOneStep) {
    model.commitLoop(FrameRange{100, 200});
    const auto version = state().contentVersion;
    for (const std::int64_t end : {300, 500, 400}) model.moveLoop({100, end});
    EXPECT_EQ(state().loopPoints, (FrameRange{100, 400}));
    EXPECT_EQ(model.history().undoDepth(), 1u);
    EXPECT_EQ(notices([&] { model.endLoopMove(); }), bits({Change::loopPoints, Change::history}));
    EXPECT_EQ(model.history().undoDepth(), 2u);
    EXPECT_GT(state().contentVersion, version);
    model.undo();
    EXPECT_EQ(state().loopPoints, (FrameRange{100, 200}));
    EXPECT_EQ(state().contentVersion, version);

    model.moveLoop({50, 60});
    model.cancelLoopMove();
    EXPECT_EQ(state().loopPoints, (FrameRange{100, 200}));
    EXPECT_TRUE(model.canRedo());
    model.moveLoop({50, 60});
    model.moveLoop({100, 200});  // there and back: no step
    model.endLoopMove();
    EXPECT_TRUE(model.canRedo());
    model.moveLoop({50, 60});
    model.undo();  // ends the drag, then takes it back
    EXPECT_EQ(state().loopPoints, (FrameRange{100, 200}));
    EXPECT_FALSE(state().pressLoop);
    model.moveLoop({50, 60});
    model.reload(buffer(), {}, FrameRange{1, 2});
    model.endLoopMove();
    EXPECT_EQ(state().loopPoints, (FrameRange{1, 2})) << "the drag was of a sound that is no more";
    EXPECT_FALSE(model.canUndo());
}

// The same rules once more, on whole copies.
struct PlainState {
    std::vector<float> samples;
    std::int64_t channels = 2;
    std::int64_t cursor = 0;
    std::optional<FrameRange> selection;
    std::vector<std::int64_t> markers;
    std::optional<FrameRange> loop;
    std::int64_t version = 0;
    bool operator==(const PlainState &) const = default;
};

struct Step {
    PlainState state;
    bool changedSound;
};

PlainState plain(const AudioEditorState &state) {
    return {state.buffer.samples(), state.buffer.channels(), state.cursorFrame,   state.selection,
            state.markerFrames,     state.loopPoints,        state.contentVersion};
}

struct HistoryWalkTest : ModelFixture {
    std::mt19937 random{11};
    std::vector<Step> undos, redos;
    std::int64_t newest = 0;

    std::int64_t below(std::int64_t count) { return std::int64_t(random()) % std::max<std::int64_t>(count, 1); }
    FrameRange someRange() {
        const std::int64_t lo = below(buffer().frames());
        return {lo, lo + 1 + below(300)};
    }
    void randomEdit() {
        switch (below(12)) {
            case 0:
                return Edits::cut(model);
            case 1:
                return Edits::paste(model);
            case 2:
                return below(4) == 0 ? Edits::trim(model) : Edits::copy(model);
            case 3:
                return Edits::reverse(model);
            case 4:
                return Edits::silence(model);
            case 5:
                return Edits::gain(model, double(below(5)) - 2);
            case 6:
                return below(4) == 0 ? Edits::mono(model, AudioEditorMonoSource::left) : Edits::stereo(model);
            case 7:
                return model.commitLoop(below(3) ? std::optional(someRange()) : std::nullopt);
            case 8:
                return model.placeCursor(below(buffer().frames() + 1));
            default:
                return model.select(someRange());
        }
    }
    void edit() {
        const PlainState before = plain(state());
        const auto generation = state().generation;
        notices([&] { randomEdit(); });
        if (state().contentVersion == before.version) return;
        EXPECT_GT(state().contentVersion, newest) << "a version is never handed out twice";
        newest = state().contentVersion;
        undos.push_back({before, state().generation != generation});
        redos.clear();
    }
    void step(void (AudioEditorModel::*act)(), std::vector<Step> &from, std::vector<Step> &to) {
        PlainState expected = plain(state());
        const bool isStep = !from.empty();
        if (isStep) {
            const Step taken = from.back();
            from.pop_back();
            to.push_back({expected, taken.changedSound});
            if (taken.changedSound)
                expected = taken.state;
            else
                expected.loop = taken.state.loop, expected.version = taken.state.version;
        }
        EXPECT_EQ(Changes{notices([&] { (model.*act)(); })}.contains(Change::history), isStep);
        EXPECT_TRUE(plain(state()) == expected);
    }
    void undo() { step(&AudioEditorModel::undo, undos, redos); }
    void redo() { step(&AudioEditorModel::redo, redos, undos); }
};

TEST_F(HistoryWalkTest, followsAPlainHistoryOfWholeCopies) {
    load(noise(3000, 2, 1), {0, 700, 1500, 3000}, FrameRange{100, 2000});
    for (int i = 0; i < 2000 && undos.size() < 190 && !HasFailure(); ++i) {
        const auto choice = below(10);
        choice < 6 ? edit() : choice < 8 ? undo() : redo();
        EXPECT_EQ(model.history().undoDepth(), undos.size());
        EXPECT_EQ(model.history().redoDepth(), redos.size());
        EXPECT_TRUE(state().peaks == AudioEditorPeaks(buffer()));
        EXPECT_LE(state().cursorFrame, buffer().frames());
        EXPECT_GT(buffer().frames(), 0);
    }
    EXPECT_GT(undos.size() + redos.size(), 20u);
}

}  // namespace
}  // namespace kiv
