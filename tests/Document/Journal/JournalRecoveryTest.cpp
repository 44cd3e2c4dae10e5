#include <cstring>
#include <set>

#include "Document/Journal/JournalWorld.h"
#include "Editor/AudioEditorModel/AudioEditorSlices.h"
#include "Support/ByteDigest.h"

namespace kiv {
namespace {

using namespace mortal;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using enum FakeFileSystem::Survival;

// Cut off as by a crash, or with a bit changed: then it holds what was done up to there, says so where that is not known to be
// all, and is never done away with.
TEST(Journal, CountsUpToWhereItIsTornAndSaysWhereItIsDamaged) {
    MortalWorld world;
    world.open(file);
    std::vector<Done> done{world.reverse({0, 40}), world.reverse({20, 70}), world.reverse({10, 60})};
    world.kill();
    const auto name = std::string(folder) + "/1.journal";
    const auto whole = world.disk.bytes(name), base = world.disk.bytes(std::string(folder) + "/kept-1-1.wav");
    std::multiset<std::string> found;
    for (std::size_t i = 1; i < 2 * whole.size(); ++i) {
        MortalWorld torn;
        torn.put(file);
        auto bytes = whole;
        const bool isCut = i <= whole.size();
        isCut ? bytes.resize(i) : void(bytes[i - whole.size()] ^= std::byte(4));
        torn.disk.put(name, bytes);
        torn.disk.put(std::string(folder) + "/kept-1-1.wav", base);
        const std::string error = torn.restore();
        const auto which = std::ranges::find(done, Done(torn.model().state()));
        const bool isTold = !torn.ui.notices.empty();
        ASSERT_EQ(error.empty(), which != done.end()) << i << error;
        ASSERT_TRUE(!error.empty() || isTold == (!isCut && which != done.end() - 1)) << i;
        ASSERT_TRUE(error.empty() || torn.disk.exists(name)) << i << error;
        found.insert((isCut ? "cut " : "changed ") + (error.empty() ? std::to_string(which - done.begin()) : "damaged"));
    }
    for (const char *kind :
         {"cut damaged", "cut 0", "cut 1", "cut 2", "changed damaged", "changed 0", "changed 1", "changed 2"})
        EXPECT_GT(found.count(kind), 0u) << kind;
}

// A program whose records have other members leaves a journal alone, but can say whose it is.
TEST(Journal, OfAnotherVersionIsLeftAlone) {
    MortalWorld world;
    world.open(file);
    world.reverse({0, 40});
    world.kill();
    const auto name = std::string(folder) + "/1.journal";
    auto bytes = world.disk.bytes(name);
    bytes[8] ^= std::byte(1);  // of the layout that the first header names, and a check of the header before it
    const auto check = std::uint32_t(digestOf(std::span(bytes).subspan(8, 24)));
    std::memcpy(&bytes[4], &check, sizeof check);
    world.disk.put(name, bytes);
    for (int start = 0; start < 2; ++start) {
        const auto found = findAbandonedJournals(world.journals);
        ASSERT_THAT(found, SizeIs(1));
        EXPECT_EQ(found[0].condition, AbandonedJournal::Condition::foreign);
        EXPECT_EQ(found[0].document, path);
    }
    EXPECT_THAT(world.disk.names(folder), SizeIs(2));
}

// What another program does to the file after the edit, before or after the crash, and what the file system lets us keep.
TEST(Journal, BringsBackWhatOtherProgramsHaveDoneAwayWith) {
    using enum AbandonedJournal::Condition;
    struct Case {
        const char *name;
        bool copies, shares, links;
        AbandonedJournal::Condition replaced, writtenOver;
    };
    for (const auto &[name, copies, shares, links, replaced, writtenOver] :
         {Case{"copied", true, false, false, changed, changed}, Case{"shared", false, true, false, changed, changed},
          Case{"linked", false, false, true, changed, lost}, Case{"not kept", false, false, false, lost, lost}})
        for (const char *how : {"removed", "folder removed", "replaced", "written over", "left alone"}) {
            MortalWorld world;
            if (!copies) world.journals.longestCopy = 0;
            world.disk.setAbilities({.sharing = shares, .names = links});
            world.open(file);
            const Done done = world.reverse({5, 500});
            if (how == std::string("removed")) world.disk.remove(path);
            if (how == std::string("folder removed")) world.disk.vanish("/music");
            if (how == std::string("replaced")) world.put("another's");
            if (how == std::string("written over")) {
                world.put(file, "/music/drum.wav.other");
                const std::string other = "another's";
                world.disk.overwrite(path)->write(std::as_bytes(std::span(other)));
            }
            world.kill();
            const auto expected = how == std::string("left alone")     ? asItWas
                                  : how == std::string("written over") ? writtenOver
                                                                       : replaced;
            {
                const auto found = findAbandonedJournals(world.journals);
                ASSERT_THAT(found, SizeIs(1)) << name << " " << how;
                EXPECT_EQ(int(found[0].condition), int(expected)) << name << " " << how;
            }
            if (expected == lost) {
                EXPECT_THAT(world.restore(), HasSubstr("not there any more")) << name << " " << how;
                continue;
            }
            ASSERT_EQ(world.restore(), "") << name << " " << how;
            EXPECT_TRUE(Done(world.model().state()) == done) << name << " " << how;
            if (expected == asItWas || how == std::string("folder removed")) continue;
            world.ui.answers = {"Save Anyway"};
            world.save();
            EXPECT_THAT(world.ui.asked, SizeIs(1)) << "the other program's file is not written over unasked: " << how;
        }
}

TEST(Journal, TakesAllOfTheSoundWhenTheFileIsChangedWhileItIsEdited) {
    MortalWorld world;
    world.journals.longestCopy = 0;
    world.open(file);
    world.reverse({5, 500});
    world.put("another's");
    const Done done = world.reverse({50, 90});
    world.kill();
    ASSERT_EQ(world.restore(), "");
    EXPECT_TRUE(Done(world.model().state()).buffer == done.buffer);
    EXPECT_TRUE(world.document->isEdited());
    EXPECT_EQ(world.document->contents()->positions.size(), 4u);
}

// How many steps there were.
int saveFailingAt(MortalWorld &world, int step) {
    world.disk.failAt(step, std::errc::io_error);
    world.save();
    const int steps = world.disk.steps();
    world.disk.heal();
    return steps;
}

// Killed before any step of a save: either the file is as it was and the edit comes back, or the edit is in the file and
// nothing is asked. What is edited while it is saved comes back once it has been journalled. Saving what has come back asks
// nothing.
struct KilledSave {
    const char *name;
    bool isSavedBefore = false;  // and the journal does not know yet that this has ended
    bool isEditedMeanwhile = false, isKept = false;
    const char *to = path;
    bool looksAlike = false;  // by size, by a coarse time and at the places that are looked at
    bool failsBefore = false;

    struct Outcome {
        bool isOver, wasWritten;
        std::size_t asked;
        std::string error;
        AudioEditorBuffer now, first, last;
    };
    void edit(MortalWorld &world) const {
        if (!looksAlike) return void(world.reverse({5, 500}));
        world.model().select({3000, 3200});
        AudioEditorEdits::cut(world.model());
        world.model().setCursorAndSelection(4000, std::nullopt);
        AudioEditorEdits::paste(world.model());
        world.jobs.runAll();
    }
    static void saveAndEditMeanwhile(MortalWorld &world) {
        world.document->save();
        AudioEditorEdits::fadeIn(world.model());
        for (int job = 0; job < 2; ++job) world.jobs.work();
        world.jobs.report();
    }
    // At all steps once, with another sound each time.
    static void saveInVain(MortalWorld &world) {
        for (int step = 1, isOver = 0; !isOver; ++step) {
            world.reverse({step, 600});
            isOver = saveFailingAt(world, step) < step;
        }
        world.reverse({5, 700});
    }
    Outcome at(int step) const {
        MortalWorld world;
        if (!isKept) world.journals.longestCopy = 0;
        world.open(looksAlike ? Wav::file(Wav::ramp(400'000)) : file);
        edit(world);
        if (isSavedBefore) saveAndEditMeanwhile(world);
        if (failsBefore) saveInVain(world);
        const AudioEditorBuffer first = world.model().state().buffer;
        const AudioSaveFormat wav{AudioSaveFormat::Container::wav, 16};
        to == path ? world.document->save() : world.document->saveAs(to, wav, {});
        world.model().select({2000, 2500});
        if (isEditedMeanwhile) AudioEditorEdits::silence(world.model());
        const AudioEditorBuffer last = world.model().state().buffer;
        const auto inode = world.disk.identity(path)->inode;
        world.disk.losePowerAt(step);
        world.jobs.runAll();
        const bool isOver = world.disk.steps() < step;
        world.kill();
        world.disk.restart(everything);
        const bool wasWritten = to == path ? world.disk.identity(path)->inode != inode : world.disk.exists(to);
        const std::string error = world.restore();
        const AudioEditorBuffer now = world.model().state().buffer;
        world.save();
        return Outcome{isOver, wasWritten, world.ui.asked.size(), error, now, first, last};
    }
};

TEST(Journal, KnowsASaveOfItsOwn) {
    const KilledSave cases[] = {{"plain"},
                                {.name = "again", .isSavedBefore = true, .isKept = true},
                                {.name = "kept", .isKept = true},
                                {.name = "meanwhile", .isEditedMeanwhile = true},
                                {.name = "meanwhile and kept", .isEditedMeanwhile = true, .isKept = true},
                                {.name = "elsewhere", .to = "/music/other.wav"},
                                {.name = "elsewhere, meanwhile", .isEditedMeanwhile = true, .to = "/music/other.wav"},
                                {.name = "alike", .looksAlike = true},
                                {.name = "failed before", .failsBefore = true}};
    for (const KilledSave &killed : cases) {
        int restored = 0, saved = 0;
        for (int step = 1, isOver = 0; !isOver; ++step) {
            const auto outcome = killed.at(step);
            isOver = outcome.isOver;
            const bool isNothingLeft = outcome.error == "0 found";
            ++(isNothingLeft ? saved : restored);
            ASSERT_TRUE(!isNothingLeft || outcome.wasWritten) << killed.name << step;
            if (isNothingLeft) continue;
            ASSERT_EQ(outcome.error, "") << killed.name << step;
            ASSERT_EQ(outcome.asked, 0u) << killed.name << step;
            ASSERT_TRUE(!outcome.wasWritten || killed.isEditedMeanwhile) << killed.name << step;
            ASSERT_TRUE(outcome.now == outcome.last || (!isOver && outcome.now == outcome.first)) << killed.name << step;
        }
        EXPECT_GT(restored, 2) << killed.name;
        EXPECT_GT(saved, 0) << killed.name;
    }
}

// What has been undone for good goes from memory, at whatever step it could not be saved.
TEST(Journal, KeepsNoSoundOfAFailedSave) {
    for (int step = 1, isOver = 0; !isOver; ++step) {
        MortalWorld world;
        world.open(file);
        world.reverse({0, 10});
        world.reverse({0, 30'000});
        std::weak_ptr<const void> reversed;
        world.model().state().buffer.forEachBlock([&](const auto &block, auto...) { reversed = block; });
        isOver = saveFailingAt(world, step) < step;
        world.model().undo();
        world.reverse({0, 20});
        EXPECT_TRUE(reversed.expired()) << step;
    }
}

// In a folder that takes no other file, killed at any step of a save, and the file opened before the journal is asked about.
TEST(Journal, KnowsTheFileThatWasPutBack) {
    int restored = 0;
    for (int step = 1, isOver = 0; !isOver; ++step) {
        MortalWorld world;
        world.journals.longestCopy = 0;
        world.disk.setAbilities({.names = true});
        world.open(file);
        world.disk.protect("/music");
        const Done done = world.reverse({5, 500});
        world.disk.passTime(10'000'000'000);
        world.disk.losePowerAt(step);
        world.save();
        isOver = world.disk.steps() < step;
        world.kill();
        world.disk.restart(everything);
        world.document->open(path, [](const std::string &error) { ASSERT_EQ(error, ""); });
        world.jobs.runAll();
        const bool isSaved = world.model().state().buffer == done.buffer;
        ASSERT_EQ(world.restore(), isSaved ? "0 found" : "") << step;
        EXPECT_TRUE(world.model().state().buffer == done.buffer) << step;
        restored += !isSaved;
    }
    EXPECT_GT(restored, 20);
}

// The file as it was before the save is what the document is then.
TEST(Journal, BringsBackWhatWasUndoneWhileItWasSaved) {
    for (const bool isKept : {false, true}) {
        MortalWorld world;
        if (!isKept) world.journals.longestCopy = 0;
        world.open(file);
        const Done asRead(world.model().state());
        world.reverse({5, 500});
        world.document->save();
        world.model().undo();
        while (world.jobs.work()) continue;
        world.kill();
        EXPECT_FALSE(world.onDisk() == file);
        ASSERT_EQ(world.restore(), "") << isKept;
        EXPECT_TRUE(world.model().state().buffer == asRead.buffer) << isKept;
    }
}

TEST(Journal, IsFoundByOneProgramAtATimeUntilItIsDiscarded) {
    MortalWorld world;
    world.open(file);
    world.reverse({5, 500});
    EXPECT_THAT(findAbandonedJournals(world.journals), IsEmpty()) << "its program lives";
    world.kill();
    for (int later = 0; later < 2; ++later) {
        const auto mine = findAbandonedJournals(world.journals);
        ASSERT_THAT(mine, SizeIs(1));
        EXPECT_EQ(mine[0].document, path);
        EXPECT_THAT(findAbandonedJournals(world.journals), IsEmpty()) << "another program asks about it already";
        if (later) discardJournal(world.journals, mine[0]);
    }
    EXPECT_THAT(world.disk.names(folder), IsEmpty());
}

TEST(Journal, ClearsAwayWhatItsOwnDeathHasLeft) {
    MortalWorld world;
    for (const char *name : {"1.new", "kept-7-1.wav", "3.journal"}) world.disk.put(std::string(folder) + "/" + name, {});
    EXPECT_THAT(findAbandonedJournals(world.journals), IsEmpty());
    EXPECT_THAT(world.disk.names(folder), IsEmpty());
}

}  // namespace
}  // namespace kiv
