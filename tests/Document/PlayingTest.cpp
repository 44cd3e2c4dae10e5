#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Document/CommandActions.h"
#include "Document/DocumentWorld.h"

namespace kiv {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct PlayingWorld : DocumentWorld {
    PlayingWorld() { open(Wav::file(Wav::ramp(100))); }

    // The numbers of the next frames heard, 0 for silence.
    std::vector<int> heard(int frames) {
        std::vector<int> numbers;
        for (const float sample : output.render(frames)) numbers.push_back(int(sample * 32768));
        loop.advance(std::chrono::milliseconds(50));
        return numbers;
    }
    bool playing() const { return document->player().isPlaying() && model.state().playing; }
};

TEST(Playing, BeginsAtTheSelectionOrTheCursor) {
    const struct {
        const char *what;
        std::int64_t cursor;
        std::optional<FrameRange> selection;
        bool loops;
        std::vector<int> heard;
    } cases[] = {
        {"from the cursor to the end", 97, {}, false, {98, 99, 100, 0}},
        {"from the cursor, then all again", 98, {}, true, {99, 100, 1, 2}},
        {"at the end: from the start", 100, {}, false, {1, 2, 3, 4}},
        {"the selection once", 0, FrameRange{10, 12}, false, {11, 12, 0, 0}},
        {"the selection again and again", 0, FrameRange{10, 12}, true, {11, 12, 11, 12}},
    };
    for (const auto &c : cases) {
        PlayingWorld world;
        world.model.setCursorAndSelection(c.cursor, c.selection);
        world.model.setLoopEnabled(c.loops);
        world.document->player().togglePlay();
        EXPECT_TRUE(world.playing()) << c.what;
        EXPECT_EQ(world.heard(4), c.heard) << c.what;
    }
}

TEST(Playing, TheSameKeyStopsAndTheCursorStays) {
    PlayingWorld world;
    world.model.placeCursor(20);
    world.document->player().togglePlay();
    world.heard(8);
    ASSERT_EQ(world.model.state().playheads.size(), 1u);
    EXPECT_EQ(world.model.state().playheads[0].frame, 28);
    world.document->player().togglePlay();
    EXPECT_FALSE(world.playing());
    EXPECT_THAT(world.model.state().playheads, IsEmpty());
    EXPECT_EQ(world.model.state().cursorFrame, 20);
}

TEST(Playing, EndsByItselfAtTheEnd) {
    PlayingWorld world;
    world.document->player().togglePlay();
    world.heard(200);
    EXPECT_FALSE(world.playing());
    EXPECT_FALSE(world.model.state().playing);
    EXPECT_THAT(world.model.state().playheads, IsEmpty());
}

TEST(Playing, LoopCanBeSwitchedOnWhileItPlays) {
    PlayingWorld world;
    world.model.placeCursor(98);
    world.document->player().togglePlay();
    perform(EditorCommand::loop, *world.document);
    EXPECT_THAT(world.heard(3), ElementsAre(99, 100, 1));
}

TEST(Playing, FollowsEdits) {
    PlayingWorld world;
    world.document->player().togglePlay();
    EXPECT_THAT(world.heard(2), ElementsAre(1, 2));
    world.model.select({3, 97});
    AudioEditorEdits::deleteSelection(world.model);
    EXPECT_THAT(world.heard(5), ElementsAre(3, 98, 99, 100, 0));
}

TEST(Playing, MovesWithTheAudioThatAnEditBeforeItMoves) {
    PlayingWorld world;
    world.model.placeCursor(50);
    world.document->player().togglePlay();
    EXPECT_THAT(world.heard(2), ElementsAre(51, 52));
    world.model.select({10, 30});
    AudioEditorEdits::cut(world.model);
    EXPECT_THAT(world.heard(2), ElementsAre(53, 54));
    world.model.placeCursor(0);
    AudioEditorEdits::paste(world.model);
    EXPECT_THAT(world.heard(2), ElementsAre(55, 56));
    world.model.select({57, 98});
    AudioEditorEdits::deleteSelection(world.model);
    EXPECT_THAT(world.heard(4), ElementsAre(57, 99, 100, 0)) << "to the end of the sound";
}

TEST(Playing, StopsWhenTheFileIsReadAgain) {
    PlayingWorld world;
    world.document->player().togglePlay();
    world.document->revert();
    world.jobs.runAll();
    EXPECT_FALSE(world.playing());
}

TEST(Playing, GoToStartGoesOnFromThereAndGoToEndStops) {
    PlayingWorld world;
    world.model.select({50, 60});
    world.document->player().togglePlay();
    world.heard(2);
    perform(EditorCommand::goToStart, *world.document);
    EXPECT_TRUE(world.playing());
    EXPECT_EQ(world.model.state().selection, std::nullopt);
    EXPECT_THAT(world.heard(2), ElementsAre(1, 2));
    perform(EditorCommand::goToEnd, *world.document);
    EXPECT_FALSE(world.playing());
    EXPECT_EQ(world.model.state().cursorFrame, 100);
    perform(EditorCommand::goToStart, *world.document);
    EXPECT_FALSE(world.playing()) << "it was not playing";
}

TEST(Playing, KeepsTheHighestLevel) {
    PlayingWorld world;
    EXPECT_EQ(world.model.state().maxLevel, std::nullopt);
    world.model.placeCursor(90);
    world.document->player().togglePlay();
    world.heard(4);
    EXPECT_EQ(world.model.state().maxLevel, 94 / 32768.0f);
    world.document->player().togglePlay();
    world.model.placeCursor(0);
    world.document->player().togglePlay();
    world.heard(4);
    EXPECT_EQ(world.model.state().maxLevel, 94 / 32768.0f);
}

TEST(Playing, AnOutputThatFailsEndsAtOnce) {
    PlayingWorld world;
    world.output.failure = "no device";
    world.document->player().togglePlay();
    EXPECT_FALSE(world.playing());
    EXPECT_FALSE(world.model.state().playing);
}

TEST(Playing, AnotherDocumentTakesOver) {
    PlayingWorld world;
    AudioDocument other({*world.files, world.jobs, world.settings, world.clipboard, &world.playback}, world.ui);
    world.read(other);
    world.document->player().togglePlay();
    other.player().togglePlay();
    EXPECT_FALSE(world.document->player().isPlaying());
    EXPECT_FALSE(world.model.state().playing);
    EXPECT_TRUE(other.player().isPlaying());
    world.document->player().stop();
    EXPECT_TRUE(other.player().isPlaying()) << "only what it plays itself";
}

TEST(Following, KeepsThePlayheadInViewUntilTheUserLooksElsewhere) {
    DocumentWorld world;
    world.open(Wav::file(Wav::ramp(10000)));
    world.model.setFollowPlayhead(true);
    world.model.setView(zoomedToRange({5000, 6000}, 10000));
    world.document->player().togglePlay();
    const auto first = [&] { return firstVisibleFrame(world.model.state().view, 10000); };
    const auto moveTo = [&](double frame) { world.document->player().playbackMoved(frame); };
    moveTo(100);
    EXPECT_DOUBLE_EQ(first(), 0) << "turned to the playhead";
    moveTo(1500);
    EXPECT_DOUBLE_EQ(first(), 1400) << "turned on";
    world.model.setView(zoomedToRange({5000, 6000}, 10000));
    moveTo(1600);
    moveTo(4999);
    EXPECT_DOUBLE_EQ(first(), 5000) << "left where the user has put it";
    moveTo(5500);
    EXPECT_DOUBLE_EQ(first(), 5000);
    moveTo(6100);
    EXPECT_DOUBLE_EQ(first(), 6000) << "followed again once it came into view";
}

}  // namespace
}  // namespace kiv
