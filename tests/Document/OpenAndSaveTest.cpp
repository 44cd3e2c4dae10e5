#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Document/DocumentWorld.h"
#include "Platform/ForwardingFiles.h"
#include "Platform/ThreadJobs.h"

namespace kiv {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const std::string plainFile = Wav::file(Wav::ramp(1000));
const std::string fullFile = Wav::file(Wav::ramp(1000), Wav::cue({100, 900}) + Wav::smpl(200, 299) + Wav::chunk("abcd", "odd"),
                                       1, Wav::chunk("bext", "x"));

TEST(Opening, GivesTheModelWhatTheFileHolds) {
    DocumentWorld world;
    EXPECT_EQ(world.open(fullFile), "");
    const AudioEditorState &state = world.model.state();
    EXPECT_EQ(state.buffer.frames(), 1000);
    EXPECT_EQ(state.buffer.sample(999, 0), 1000 / 32768.0f);
    EXPECT_EQ(state.peaks, AudioEditorPeaks(state.buffer));
    EXPECT_THAT(state.markerFrames, ElementsAre(100, 900));
    EXPECT_EQ(state.loopPoints, (FrameRange{200, 300}));
    EXPECT_EQ(world.document->name(), "drum.wav");
    EXPECT_EQ(world.document->format()->typeName, "WAV");
    EXPECT_FALSE(world.document->isEdited());
    EXPECT_TRUE(world.document->contents()->buffer.isEmpty()) << "the samples would stay in memory after every edit";
}

TEST(Opening, TellsWhatIsWrongWithAFile) {
    const struct {
        std::string bytes, text;
    } cases[] = {
        {"", "The file could not be read: the file is empty."},
        {"RIFF", "This audio format is not supported (unknown kind of file)."},
        {"Dear diary, nothing happened.", "This audio format is not supported (unknown kind of file)."},
        {"fLaC and more of it", "This audio format is not supported (FLAC)."},
        {"ID3 and more of it", "This audio format is not supported (MP3)."},
        {"\xFF\xFB\x90 and more of it", "This audio format is not supported (MP3)."},
        {std::string("\0\0\0\x20", 4) + "ftypM4A ", "This audio format is not supported (MPEG-4)."},
        {"RIFF\x04" + std::string(3, '\0') + "WAVE", "The file could not be read: no format chunk."},
        {Wav::file({}).replace(20, 1, "\x02"), "This audio format is not supported (WAV format 2 (Microsoft ADPCM), 16 bits)."},
    };
    for (const auto &[bytes, text] : cases) {
        DocumentWorld world;
        EXPECT_EQ(world.open(bytes), text);
        EXPECT_EQ(world.document->contents(), nullptr);
        EXPECT_FALSE(world.document->isBusy());
    }
    DocumentWorld world;
    EXPECT_THAT(world.read(*world.document, "/nowhere/a.wav"), HasSubstr("No such file"));
}

TEST(Opening, KnowsTheChannelsBeforeItHasReadTheSamples) {
    DocumentWorld world;
    world.put(Wav::file(Wav::ramp(100), "", 2));
    world.document->open(world.path, [](const std::string &) {});
    world.jobs.work();
    world.jobs.report();
    EXPECT_TRUE(world.document->isBusy());
    EXPECT_EQ(world.model.state().buffer, AudioEditorBuffer(2, 8000));
    EXPECT_EQ(world.model.state().generation, 0);
    world.jobs.runAll();
    EXPECT_EQ(world.model.state().buffer.frames(), 50);
}

TEST(Opening, CanBeCancelledAndReportsToNobodyOnceTheDocumentIsGone) {
    DocumentWorld world;
    world.put(plainFile);
    std::string text = "not told";
    const auto told = [&](const std::string &error) { text = error; };
    world.document->open(world.path, told);
    EXPECT_EQ(world.document->work(), AudioDocument::Work::reading);
    world.document->cancelWork();
    EXPECT_EQ(text, "not told") << "whoever cancels is not called back in the midst of it";
    world.jobs.work(2);
    world.jobs.report();
    EXPECT_EQ(std::exchange(text, "not told"), AudioDocument::cancelledText) << "the disk has not answered yet";
    EXPECT_FALSE(world.document->isBusy());
    world.jobs.runAll();
    EXPECT_EQ(text, "not told") << "what it answers then is dropped";
    world.document->open(world.path, told);
    world.document.reset();
    world.jobs.runAll();
    EXPECT_EQ(text, "not told");
}

// Files of which one save was interrupted.
class RestoringFiles : public ForwardingFiles {
public:
    using ForwardingFiles::ForwardingFiles;
    Recovery recoverInterrupted(const std::string &) override { return Recovery::restored; }
};

TEST(Opening, TellsWhatHasBefallenAFileInOneNotice) {
    const std::string whole = Wav::file(Wav::ramp(8000)), cut = whole.substr(0, whole.size() - 8000);
    const std::string restored = "A save had been interrupted: “drum.wav” is as it was before",
                      endsEarly = "“drum.wav” ends early: 0.500 s of 1.000 s are there";
    const struct {
        bool isRestored;
        const std::string &bytes;
        std::vector<std::string> notices;
    } cases[] = {
        {false, whole, {}}, {true, whole, {restored}}, {false, cut, {endsEarly}}, {true, cut, {restored + ". " + endsEarly}}};
    for (const auto &[isRestored, bytes, notices] : cases) {
        DocumentWorld world;
        RestoringFiles restoring(*world.files);
        Files &files = isRestored ? restoring : *world.files;
        AudioDocument document({files, world.jobs, world.settings, world.clipboard}, world.ui);
        world.put(bytes);
        EXPECT_EQ(world.read(document), "");
        EXPECT_EQ(world.ui.notices, notices);
    }
}

TEST(Saving, WritesSamplesAndPositionsAsEdited) {
    DocumentWorld world;
    world.open(fullFile);
    EXPECT_TRUE(world.save() && world.onDisk() == fullFile);
    world.model.select({0, 50});
    AudioEditorEdits::deleteSelection(world.model);
    EXPECT_TRUE(world.document->isEdited());
    EXPECT_TRUE(world.save());
    EXPECT_FALSE(world.document->isEdited());
    std::vector<int> samples = Wav::ramp(1000);
    samples.erase(samples.begin(), samples.begin() + 50);
    EXPECT_TRUE(world.onDisk() == Wav::file(samples, Wav::cue({50, 850}) + Wav::smpl(150, 249) + Wav::chunk("abcd", "odd"), 1,
                                            Wav::chunk("bext", "x")));
    world.model.undo();
    EXPECT_TRUE(world.document->isEdited()) << "what was undone is in the file";
    EXPECT_TRUE(world.save());
    EXPECT_TRUE(world.onDisk() == fullFile);
    world.model.redo();
    EXPECT_TRUE(world.document->isEdited()) << "the stacks outlive a save";
}

TEST(Saving, BringsTheFilesLoopInLineWithTheModels) {
    DocumentWorld world;
    world.open(fullFile);
    world.model.commitLoop(std::nullopt);
    EXPECT_TRUE(world.document->isEdited());
    EXPECT_TRUE(world.save());
    EXPECT_EQ(world.document->contents()->loop, std::nullopt);

    DocumentWorld again;
    again.open(world.onDisk());
    EXPECT_EQ(again.model.state().loopPoints, std::nullopt);
    EXPECT_THAT(again.model.state().markerFrames, ElementsAre(100, 900));

    world.model.commitLoop(FrameRange{10, 20});
    EXPECT_TRUE(world.save());
    EXPECT_TRUE(world.save()) << "the loop just added must not be added twice";
    DocumentWorld third;
    third.open(world.onDisk());
    EXPECT_EQ(third.model.state().loopPoints, (FrameRange{10, 20}));
    EXPECT_THAT(third.model.state().markerFrames, ElementsAre(100, 900));
}

TEST(Saving, ForgetsChunksThatWereNotWritten) {
    DocumentWorld world;
    world.open(Wav::file(Wav::ramp(100), Wav::chunk("PEAK", "stale")));
    EXPECT_EQ(world.document->contents()->chunks.size(), 3u);
    EXPECT_TRUE(world.save());
    EXPECT_TRUE(world.onDisk() == Wav::file(Wav::ramp(100)));
    EXPECT_EQ(world.document->contents()->chunks.size(), 2u);
}

TEST(Saving, AFailureAtAnyStepLeavesTheFileAndTheEdits) {
    int failures = 0, step = 1;
    for (bool reachedEnd = false; !reachedEnd; ++step) {
        DocumentWorld world;
        world.open(fullFile);
        AudioEditorEdits::reverse(world.model);
        world.disk.failAt(step, std::errc::no_space_on_device);
        const bool saved = world.save();
        reachedEnd = world.disk.steps() < step;
        world.disk.heal();
        EXPECT_EQ(world.document->isEdited(), !saved) << "step " << step;
        EXPECT_EQ(world.onDisk() == fullFile, !saved) << "step " << step;
        EXPECT_FALSE(world.document->isBusy());
        if (saved) continue;
        ++failures;
        EXPECT_THAT(world.ui.errors, ElementsAre(HasSubstr("“drum.wav” could not be saved: "))) << "step " << step;
        EXPECT_TRUE(world.save()) << "after step " << step;
        EXPECT_FALSE(world.document->isEdited());
    }
    EXPECT_GT(failures, 4);
}

TEST(Saving, CountsTheVersionThatWasWritten) {
    DocumentWorld world;
    world.open(plainFile);
    AudioEditorEdits::reverse(world.model);
    world.document->save();
    EXPECT_EQ(world.document->work(), AudioDocument::Work::saving);
    world.jobs.work();
    AudioEditorEdits::silence(world.model);
    world.jobs.report();
    EXPECT_TRUE(world.document->isEdited());
    std::vector<int> reversed = Wav::ramp(1000);
    std::reverse(reversed.begin(), reversed.end());
    EXPECT_TRUE(world.onDisk() == Wav::file(reversed));
    world.model.undo();
    EXPECT_FALSE(world.document->isEdited());
}

TEST(Saving, CancelledLeavesTheFileAndSaysNothing) {
    DocumentWorld world;
    world.open(plainFile);
    AudioEditorEdits::reverse(world.model);
    std::optional<bool> saved;
    world.document->save([&](bool ok) { saved = ok; });
    world.document->cancelWork();
    world.jobs.runAll();
    EXPECT_EQ(saved, false);
    EXPECT_THAT(world.ui.errors, IsEmpty());
    EXPECT_TRUE(world.document->isEdited());
    EXPECT_TRUE(world.onDisk() == plainFile);
}

// It may be very much.
TEST(Saving, CopiesNothingOfTheFileOnTheMainThread) {
    DocumentWorld world;
    world.open(plainFile);
    world.model.select({0, 10});
    const std::function<void()> rows[] = {
        [&] { world.document->save(); },
        [&] { world.document->saveSelection("/music/part.wav", nullptr); },
        [&] {
            world.put(plainFile);
            world.document->checkDisk();
            world.jobs.work(), world.jobs.report();
        },
    };
    for (const auto &begin : rows) {
        const auto before = world.document->contents().use_count();
        begin();
        EXPECT_GT(world.document->contents().use_count(), before) << "the job shares it";
        world.jobs.runAll();
    }
    EXPECT_TRUE(world.onDisk("/music/part.wav") == Wav::file(Wav::ramp(10)));
}

TEST(Saving, HappensOneAtATimeAndNeedsSomethingToSave) {
    DocumentWorld world;
    EXPECT_FALSE(world.save());
    EXPECT_THAT(world.ui.errors, ElementsAre(HasSubstr("The file could not be read: nothing to save.")));
    world.open(plainFile);
    bool first = false, second = true;
    world.document->save([&](bool ok) { first = ok; });
    world.document->save([&](bool ok) { second = ok; });
    world.jobs.runAll();
    EXPECT_TRUE(first && !second);
}

TEST(Saving, AsksBeforeItReplacesWhatAnotherProgramHasWrittenOrBringsBackWhatItHasRemoved) {
    const std::string foreign = Wav::file({7});
    const struct {
        bool removes;
        const char *answer, *message;
    } cases[] = {{false, "Save Anyway", "“drum.wav” has been changed by another program"},
                 {false, "Cancel", "“drum.wav” has been changed by another program"},
                 {true, "Save Anyway", "“drum.wav” is no longer where it was"},
                 {true, "Cancel", "“drum.wav” is no longer where it was"}};
    for (const auto &[removes, answer, message] : cases) {
        DocumentWorld world;
        world.open(plainFile);
        EXPECT_TRUE(world.save());
        EXPECT_THAT(world.ui.asked, IsEmpty()) << "its own save is no change by others";
        removes ? world.disk.vanish(world.path) : world.put(foreign);
        world.ui.answers = {answer};
        const bool saves = answer == std::string("Save Anyway");
        EXPECT_EQ(world.save(), saves);
        ASSERT_EQ(world.ui.asked.size(), 1u);
        EXPECT_EQ(world.ui.asked[0].message, message);
        EXPECT_EQ(world.ui.asked[0].buttons.front(), "Cancel") << "Enter replaces nobody's work";
        EXPECT_EQ(world.disk.identity(world.path).has_value(), saves || !removes);
        EXPECT_TRUE((!saves && removes) || world.onDisk() == (saves ? plainFile : foreign));
    }
}

TEST(Saving, SaysThatTheFolderIsGoneAndAsksNothingThatCannotBeDone) {
    DocumentWorld world;
    world.open(plainFile);
    AudioEditorEdits::reverse(world.model);
    world.disk.vanish("/music");
    EXPECT_FALSE(world.save());
    EXPECT_THAT(world.ui.asked, IsEmpty());
    EXPECT_THAT(world.ui.errors,
                ElementsAre("“drum.wav” could not be saved: The folder “/music” is not there: choose another one"));
    EXPECT_TRUE(world.document->isEdited());
}

TEST(Saving, RunsOnAThreadWhileEditsGoOn) {
    DocumentWorld world;
    world.put(plainFile);
    ThreadJobs jobs(world.loop);
    AudioDocument document({*world.files, jobs, world.settings, world.clipboard}, world.ui);
    const auto wait = [&] {
        while (document.isBusy()) ASSERT_TRUE(world.loop.waitForPosts());
    };
    document.open(world.path, [](const std::string &error) { EXPECT_EQ(error, ""); });
    wait();
    AudioEditorEdits::silence(document.model());
    document.save([](bool saved) { EXPECT_TRUE(saved); });
    for (int i = 0; i < 20; ++i) document.model().commitLoop(FrameRange{i, i + 5});
    wait();
    EXPECT_TRUE(document.isEdited());
    EXPECT_TRUE(world.onDisk() == Wav::file(std::vector<int>(1000, 0)));
}

TEST(Observers, AreToldWhenEditedBeginsAndEnds) {
    DocumentWorld world;
    world.open(plainFile);
    std::vector<bool> told;
    const auto subscription = world.document->observers.add([&](const AudioDocument &d) { told.push_back(d.isEdited()); });
    AudioEditorEdits::reverse(world.model);
    AudioEditorEdits::silence(world.model);
    world.model.undo();
    world.model.undo();
    EXPECT_THAT(told, ElementsAre(true, false));
}

}  // namespace
}  // namespace kiv
