#include <gtest/gtest.h>

#include "Document/DocumentWorld.h"
#include "Document/Journal/JournalRecovery.h"

namespace kiv {
namespace {

struct TouchedWorld : DocumentWorld {
    const std::string file = Wav::file(std::vector<int>(100'000, 3));
    JournalFolder journals{disk, "/home/journals"};

    TouchedWorld() {
        journals.longestCopy = 0;
        start();
        open(file);
    }
    void start() {
        document = std::make_unique<AudioDocument>(
            DocumentServices{*files, jobs, settings, clipboard, nullptr, nullptr, Peaks::kept, &journals}, ui);
    }
    void fade(FrameRange range) {
        document->model().select(range);
        AudioEditorEdits::fadeIn(document->model());
        jobs.runAll();
    }
    void touch() {
        put(file);
        document->checkDisk();
        jobs.runAll();
    }
};

// Its sound stands in the file as before.
TEST(Journal, OfAFileThatWasOnlyTouchedHoldsTheEditsAlone) {
    for (const bool editsBefore : {false, true}) {
        TouchedWorld world;
        if (editsBefore) world.fade({0, 10});
        world.touch();
        world.fade({20, 30});
        EXPECT_LT(world.disk.bytes(world.journals.path + "/1.journal").size(), 2000u) << editsBefore;
        const AudioEditorBuffer edited = world.document->model().state().buffer;
        world.document.reset();
        world.start();
        auto found = findAbandonedJournals(world.journals);
        ASSERT_EQ(found.size(), 1u);
        world.document->restore(std::make_shared<AbandonedJournal>(std::move(found[0])),
                                [](const std::string &error) { EXPECT_EQ(error, ""); });
        world.jobs.runAll();
        EXPECT_EQ(world.document->model().state().buffer, edited) << editsBefore;
        EXPECT_TRUE(world.document->model().canUndo()) << "back to the file";
    }
}

}  // namespace
}  // namespace kiv
