#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Document/DocumentWorld.h"
#include "Editor/AudioEditorModel/AudioEditorSlices.h"

namespace kiv {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

const std::string file = Wav::file(Wav::ramp(1000));

TEST(Revert, ReadsAgainAndAsksOnlyWhenThereAreEdits) {
    const struct {
        bool edits;
        const char *answer;
        bool reads;
    } cases[] = {{false, nullptr, true}, {true, "Revert", true}, {true, "Cancel", false}};
    for (const auto &[edits, answer, reads] : cases) {
        DocumentWorld world;
        world.open(file);
        if (edits) AudioEditorEdits::reverse(world.model);
        if (answer) world.ui.answers = {answer};
        world.put(Wav::file({7, 8}));
        world.document->revert();
        world.jobs.runAll();
        EXPECT_EQ(world.ui.asked.size(), edits ? 1u : 0u);
        EXPECT_EQ(world.model.state().buffer.frames(), reads ? 2 : 1000);
        EXPECT_EQ(world.document->isEdited(), !reads);
        EXPECT_EQ(world.model.canUndo(), !reads);
    }
}

TEST(Revert, FailsWithAnErrorAndKeepsTheSound) {
    DocumentWorld world;
    world.open(file);
    AudioEditorEdits::reverse(world.model);
    world.ui.answers = {"Revert"};
    world.disk.vanish(world.path);
    world.document->revert();
    world.jobs.runAll();
    EXPECT_THAT(world.ui.errors, ElementsAre(HasSubstr("“drum.wav” could not be read: ")));
    EXPECT_EQ(world.model.state().buffer.frames(), 1000);
    EXPECT_TRUE(world.document->isEdited());
}

TEST(Revert, KeepsWhatIsEditedWhileItReads) {
    DocumentWorld world;
    world.open(file);
    world.document->revert();
    AudioEditorEdits::reverse(world.model);
    world.jobs.runAll();
    EXPECT_TRUE(world.document->isEdited() && world.model.canUndo() && !world.document->isBusy());
    EXPECT_THAT(world.ui.notices, ElementsAre("“drum.wav” was edited meanwhile and not read again"));
}

TEST(Revert, LeavesNothingOfADragUnderWay) {
    DocumentWorld world;
    world.open(file);
    world.model.commitSlices({{0, 500}, {500, 1000}});
    EXPECT_TRUE(world.save());
    world.put(Wav::file({7, 8}));
    world.document->revert();
    AudioEditorSlices::moveSliceEdge(world.model, {0, false}, 400);
    world.jobs.runAll();
    AudioEditorSlices::endSliceMove(world.model);
    EXPECT_FALSE(world.document->isEdited() || world.model.canUndo());
}

TEST(Closing, AsksOnlyWhenThereAreEdits) {
    const struct {
        const char *answer;  // null: no edits
        bool closes, saves;
    } cases[] = {{nullptr, true, false}, {"Save", true, true}, {"Don’t Save", true, false}, {"Cancel", false, false}};
    for (const auto &[answer, closes, saves] : cases) {
        DocumentWorld world;
        world.open(file);
        if (answer) {
            AudioEditorEdits::reverse(world.model);
            world.ui.answers = {answer};
        }
        int closed = 0;
        int kept = 0;
        world.document->confirmClose([&](bool mayGo) { ++(mayGo ? closed : kept); });
        world.jobs.runAll();
        EXPECT_EQ(closed, closes);
        EXPECT_EQ(kept, !closes);
        EXPECT_EQ(world.ui.asked.size(), answer ? 1u : 0u);
        EXPECT_EQ(world.onDisk() != file, saves);
    }
}

// With the file the sound would be gone for good; one that cannot be looked for holds nobody up.
TEST(Closing, AsksAboutASoundWhoseFileHasGone) {
    const struct {
        const char *answer;  // null: the look hangs, and closing is asked for again
        bool isNoticed, closes, saves;
    } cases[] = {{"Save", false, true, true},
                 {"Save", true, true, true},
                 {"Don’t Save", true, true, false},
                 {"Cancel", false, false, false},
                 {nullptr, false, true, false}};
    for (const auto &[answer, isNoticed, closes, saves] : cases) {
        DocumentWorld world;
        world.open(file);
        world.disk.vanish(world.path);
        if (isNoticed) world.document->checkDisk(), world.jobs.runAll();
        EXPECT_EQ(world.document->isEdited(), isNoticed);
        if (answer) world.ui.answers = {answer};
        int closed = 0;
        for (int i = answer ? 1 : 0; i < 2; ++i) world.document->confirmClose([&](bool mayGo) { closed += mayGo; });
        EXPECT_TRUE(answer || closed == 2);
        world.jobs.runAll();
        EXPECT_EQ(closed > 0, closes);
        EXPECT_EQ(world.ui.asked.size(), answer ? 1u : 0u);
        EXPECT_EQ(world.disk.exists(world.path), saves);
        EXPECT_EQ(world.document->isEdited(), answer && !saves);
    }
}

TEST(Closing, IsCalledOffWhenTheSaveFails) {
    DocumentWorld world;
    world.open(file);
    AudioEditorEdits::reverse(world.model);
    world.ui.answers = {"Save"};
    world.disk.failAt(1, std::errc::io_error, FakeFileSystem::Lasting::on);
    int closed = 0, kept = 0;
    world.document->confirmClose([&](bool mayGo) { ++(mayGo ? closed : kept); });
    world.jobs.runAll();
    EXPECT_EQ(closed, 0);
    EXPECT_EQ(kept, 1);
    EXPECT_EQ(world.ui.errors.size(), 1u);
    EXPECT_EQ(world.ui.asked.size(), 1u);
    world.disk.heal();
    EXPECT_TRUE(world.save());
    EXPECT_EQ(closed, 0) << "a later save is no answer to the question";
}

TEST(Closing, WaitsForASaveAndAsksAboutLaterEdits) {
    DocumentWorld world;
    world.open(file);
    AudioEditorEdits::reverse(world.model);
    world.document->save();
    int closed = 0;
    world.document->confirmClose([&](bool mayGo) { closed += mayGo; });
    EXPECT_THAT(world.ui.asked, IsEmpty());
    AudioEditorEdits::silence(world.model);
    world.ui.answers = {"Save"};
    world.jobs.runAll();
    EXPECT_EQ(world.ui.asked.size(), 1u);
    EXPECT_EQ(closed, 1);
    EXPECT_TRUE(world.onDisk() == Wav::file(std::vector<int>(1000, 0)));
}

TEST(Closing, AsksAgainAboutEditsMadeWhileItsOwnSaveRan) {
    DocumentWorld world;
    world.open(file);
    AudioEditorEdits::reverse(world.model);
    world.ui.answers = {"Save", "Don’t Save"};
    int closed = 0;
    world.document->confirmClose([&](bool mayGo) { closed += mayGo; });
    AudioEditorEdits::silence(world.model);
    world.jobs.runAll();
    EXPECT_EQ(world.ui.asked.size(), 2u);
    EXPECT_EQ(closed, 1);
}

TEST(Closing, AskedForTwiceIsOneQuestionForBoth) {
    DocumentWorld world;
    world.open(file);
    AudioEditorEdits::reverse(world.model);
    int closed = 0;
    world.document->confirmClose([&](bool mayGo) {
        closed += mayGo;
        world.document.reset();
    });
    world.document->confirmClose([&](bool mayGo) { closed += mayGo; });
    EXPECT_EQ(world.ui.asked.size(), 1u);
    world.ui.press("Save");
    world.jobs.runAll();
    EXPECT_EQ(closed, 2);
}

// With a journal, and an edit in it.
struct JournalledWorld : DocumentWorld {
    const JournalFolder journals{disk, "/home/journals"};

    JournalledWorld() {
        put(file);
        begin();
        AudioEditorEdits::reverse(document->model());
        jobs.runAll();
        EXPECT_THAT(disk.list(journals.path), Not(IsEmpty()));
    }
    void begin() {
        document = std::make_unique<AudioDocument>(
            DocumentServices{*files, jobs, settings, clipboard, nullptr, nullptr, Peaks::kept, &journals}, ui);
        EXPECT_EQ(read(*document), "");
    }
};

TEST(Closing, LeavesNothingBehindOfWhatWasGivenUp) {
    JournalledWorld world;
    world.document->letGo();
    world.document->model().setVerticalZoomDb(3);
    world.document->flushJournal([] {});
    world.jobs.runAll();
    EXPECT_THAT(world.disk.list(world.journals.path), IsEmpty());
}

TEST(Restoring, KeepsWhatIsEditedWhileItReadsAndIsQuietWhenCancelled) {
    for (const bool edits : {true, false}) {
        JournalledWorld world;
        world.document.reset();
        world.begin();
        auto found = findAbandonedJournals(world.journals);
        std::string told;
        world.document->restore(std::make_shared<AbandonedJournal>(std::move(found.at(0))), [&](auto &error) { told = error; });
        if (edits)
            AudioEditorEdits::silence(world.document->model());
        else
            world.document->cancelWork();
        world.jobs.runAll();
        EXPECT_EQ(told, edits ? "It was edited meanwhile." : AudioDocument::cancelledText);
        EXPECT_EQ(world.document->isEdited(), edits);
        EXPECT_EQ(world.document->model().state().buffer.sample(0, 0), edits ? 0 : 1 / 32768.0f);
    }
}

TEST(Closing, AnAnswerAfterTheDocumentIsGoneIsIgnored) {
    DocumentWorld world;
    world.open(file);
    AudioEditorEdits::reverse(world.model);
    int closed = 0;
    world.document->confirmClose([&](bool mayGo) { closed += mayGo; });
    world.document.reset();
    world.ui.press("Don’t Save");
    EXPECT_EQ(closed, 0);
}

}  // namespace
}  // namespace kiv
