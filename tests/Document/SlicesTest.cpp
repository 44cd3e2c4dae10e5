#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Document/CommandActions.h"
#include "Document/DocumentWorld.h"
#include "Document/SlicesFolder.h"
#include "Editor/AudioEditorModel/AudioEditorLoops.h"
#include "Editor/AudioEditorModel/AudioEditorSlices.h"

namespace kiv {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string folder = "/music/drum.slices";

struct SlicesWorld : DocumentWorld {
    // Two slices of a ramp of 20 frames.
    explicit SlicesWorld(const std::string &file = Wav::file(Wav::ramp(20), Wav::cue({5}))) {
        open(file);
        AudioEditorSlices::setSetting(model, SliceSetting::divisions, 2);
        AudioEditorSlices::detect(model, AudioEditorSlicer::Mode::grid);
    }
    bool save(const std::string &name = "", AudioDocument::IfHeld ifHeld = AudioDocument::IfHeld::ask) {
        bool saved = false;
        document->saveSlices(name, ifHeld, [&](bool ok) { saved = ok; });
        jobs.runAll();
        return saved;
    }
    void hold(const std::string &name) { disk.put(folder + "/" + name, {}); }
};

std::vector<int> rampFrom(int first, int count) {
    std::vector<int> samples;
    for (int i = 0; i < count; ++i) samples.push_back(first + i);
    return samples;
}

TEST(SavingSlices, NumbersTheFiles) {
    const std::tuple<const char *, std::size_t, std::size_t, const char *> cases[] = {
        {"Drums", 0, 1, "Drums-01"},    {"Drums", 8, 9, "Drums-09"},      {"Drums", 98, 99, "Drums-99"},
        {"Drums", 0, 100, "Drums-001"}, {"Drums", 119, 120, "Drums-120"}, {"a/b:c", 0, 2, "a-b-c-01"},
    };
    for (const auto &[name, index, count, expected] : cases) EXPECT_EQ(sliceFileStem(name, index, count), expected);
    EXPECT_EQ(slicesFolderName("/music/a.b/Drums.take 2.wav"), "Drums.take 2.slices");
    EXPECT_EQ(slicesFolderName(".hidden"), ".hidden.slices");
}

TEST(SavingSlices, WritesAFileEachWithNothingButTheSound) {
    SlicesWorld world;
    AudioEditorSlices::setSetting(world.model, SliceSetting::fadeInSamples, 2);
    EXPECT_TRUE(world.save());
    EXPECT_THAT(world.disk.names(folder), ElementsAre("drum-01.wav", "drum-02.wav"));
    std::vector<int> first = rampFrom(1, 10), second = rampFrom(11, 10);
    first[0] = second[0] = 0;
    first[1] = 1;
    second[1] = 6;
    EXPECT_EQ(world.onDisk(folder + "/drum-01.wav"), Wav::file(first));
    EXPECT_EQ(world.onDisk(folder + "/drum-02.wav"), Wav::file(second));
    EXPECT_EQ(world.model.state().slicerNotice, "2 slices saved in “drum.slices”");
    EXPECT_FALSE(world.document->isEdited());
    EXPECT_THAT(world.ui.asked, IsEmpty());
}

TEST(SavingSlices, AsksBeforeTheOldOnesGoToTheTrash) {
    SlicesWorld world;
    world.hold("old.AIF");
    world.hold("notes.txt");
    world.disk.makeFolder(folder + "/more.wav");
    world.ui.answers = {"Cancel"};
    EXPECT_FALSE(world.save());
    ASSERT_EQ(world.ui.asked.size(), 1u);
    EXPECT_EQ(world.ui.asked[0].message, "Replace the slices in “drum.slices”");
    EXPECT_EQ(world.ui.asked[0].informative, "The folder already holds 1 audio file. They will be moved to the Trash.");
    EXPECT_THAT(world.ui.asked[0].buttons, ElementsAre("Replace", "Cancel"));
    EXPECT_THAT(world.disk.names(folder), ElementsAre("more.wav", "notes.txt", "old.AIF"));
    EXPECT_FALSE(world.save("x", AudioDocument::IfHeld::refuse));
    EXPECT_THAT(world.ui.errors, ElementsAre("The slices could not be saved: The folder already holds 1 audio file."));

    world.hold("older.flac");
    world.ui.answers = {"Replace"};
    perform(EditorCommand::saveSlices, *world.document);
    world.jobs.runAll();
    EXPECT_EQ(world.ui.asked.back().informative, "The folder already holds 2 audio files. They will be moved to the Trash.");
    EXPECT_THAT(world.disk.names(folder), ElementsAre("drum-01.wav", "drum-02.wav", "more.wav", "notes.txt"));
    EXPECT_THAT(world.disk.names(FakeFileSystem::trashFolder), ElementsAre("old.AIF", "older.flac"));
    EXPECT_TRUE(world.save("a:b", AudioDocument::IfHeld::replace));
    EXPECT_THAT(world.disk.names(folder), ElementsAre("a-b-01.wav", "a-b-02.wav", "more.wav", "notes.txt"));
}

TEST(SavingSlices, AFolderOfOtherFilesIsWrittenIntoWithoutAQuestion) {
    SlicesWorld world;
    world.hold("notes.txt");
    EXPECT_TRUE(world.save());
    EXPECT_THAT(world.ui.asked, IsEmpty());
}

TEST(SavingSlices, AFailureAtAnyStepIsToldAndTakesNothingAway) {
    int failures = 0;
    for (int step = 1;; ++step) {
        SlicesWorld world;
        world.hold("old.wav");
        world.disk.failAt(step, std::errc::io_error);
        const bool saved = world.save("", AudioDocument::IfHeld::replace);
        if (saved && world.disk.steps() < step) break;
        world.disk.heal();
        // The first step looks whether the folder may be written: failing that, the user is asked for one, who refuses.
        EXPECT_EQ(world.ui.errors.size(), saved || step == 1 ? 0u : 1u) << step;
        failures += !saved;
        const bool isThere = world.disk.exists(folder + "/old.wav");
        EXPECT_NE(isThere, world.disk.exists(std::string(FakeFileSystem::trashFolder) + "/old.wav")) << step;
    }
    EXPECT_GT(failures, 5);
}

TEST(PlayingASlice, IsHeardOnceWithItsFades) {
    SlicesWorld world(Wav::file(std::vector<int>(1000, 16'384)));
    AudioEditorSlices::setSetting(world.model, SliceSetting::fadeInSamples, 100);
    AudioEditorSlices::setSetting(world.model, SliceSetting::fadeOutSamples, 200);
    world.model.setLoopEnabled(true);
    world.document->player().playSlice(2);
    EXPECT_FALSE(world.document->player().isPlaying()) << "there is no such slice";
    world.document->player().playSlice(1);
    EXPECT_TRUE(world.model.state().previewPlaying);
    const std::vector<float> heard = world.output.render(600);
    const auto level = [&](std::size_t frame) { return heard[frame * heard.size() / 600]; };
    EXPECT_NEAR(level(0), 0, 0.01);
    EXPECT_NEAR(level(50), 0.25, 0.01);
    EXPECT_NEAR(level(200), 0.5, 1e-6);
    EXPECT_NEAR(level(400), 0.25, 0.01);
    EXPECT_EQ(level(550), 0) << "it is over";
}

// Answers where to write.
struct ChoosingUi : ScriptedUi {
    void chooseFolder(const FolderChoice &choice, std::function<void(const std::optional<std::string> &)> answer) override {
        choices.push_back(choice);
        answer(chosen);
    }
    std::vector<FolderChoice> choices;
    std::optional<std::string> chosen;
};

TEST(SavingSlices, AsksForAFolderThatMayNotBeWrittenAndRemembersIt) {
    DocumentWorld world;
    ChoosingUi ui;
    AudioDocument document({*world.files, world.jobs, world.settings, world.clipboard}, ui);
    world.put(Wav::file(Wav::ramp(20)));
    world.read(document);
    AudioEditorSlices::detect(document.model(), AudioEditorSlicer::Mode::grid);
    world.disk.protect("/music");
    world.disk.makeFolder("/mine");
    const auto save = [&] {
        document.saveSlices("", AudioDocument::IfHeld::replace);
        world.jobs.runAll();
    };
    save();
    ASSERT_EQ(ui.choices.size(), 1u);
    EXPECT_EQ(ui.choices[0].folder, "/music");
    EXPECT_EQ(ui.choices[0].prompt, "Allow");
    EXPECT_EQ(ui.choices[0].message,
              "Saving slices writes the folder “drum.slices”. Click Allow to let Kiv Audio Editor write in this folder.");
    EXPECT_THAT(ui.errors, IsEmpty()) << "refused is refused";
    ui.chosen = "/mine";
    save();
    EXPECT_EQ(world.disk.names("/mine/drum.slices").size(), 16u);
    ui.chosen = "/";
    world.disk.heal();
    document.saveSlices("", AudioDocument::IfHeld::replace);
    EXPECT_EQ(world.disk.steps(), 0) << "the disk is asked off the main thread";
    EXPECT_EQ(document.work(), AudioDocument::Work::looking);
    document.cancelWork();
    world.jobs.work(1);
    world.jobs.report();
    EXPECT_FALSE(document.isBusy()) << "cancelled, whenever it may answer";
    world.jobs.runAll();
    EXPECT_EQ(ui.choices.size(), 2u) << "it is too late to ask";
    save();
    EXPECT_EQ(ui.choices.size(), 3u) << "another folder does not cover this one";
    EXPECT_EQ(ui.errors.size(), 1u) << "what was allowed does not make it writable";
    world.disk.unprotect("/music");
    save();
    world.disk.protect("/music");
    save();
    EXPECT_EQ(ui.choices.size(), 3u) << "it is remembered";
    EXPECT_EQ(world.settings.get(Setting::folderBookmarks), "/mine\n/");
    world.disk.vanish("/mine");
    save();
    EXPECT_EQ(world.settings.get(Setting::folderBookmarks), "/") << "what is gone is forgotten";
}

TEST(LoopJoint, PlaysFromASecondBeforeTheEndWithTheCrossfadeThatIsSet) {
    DocumentWorld world;
    world.open(Wav::file(Wav::ramp(30'000)));  // at 8000 Hz
    EXPECT_FALSE(isEnabled(EditorCommand::playLoopJoint, *world.document));
    AudioEditorLoops::setLoop(world.model, 4000, 20'000);
    AudioEditorLoops::setLoopCrossfadeStep(world.model, 7);
    perform(EditorCommand::playLoopJoint, *world.document);
    EXPECT_TRUE(world.document->player().isPlaying() && world.model.state().previewPlaying);
    const std::vector<float> heard = world.output.render(8200);
    const auto frame = [&](std::int64_t i) { return heard[std::size_t(i) * heard.size() / 8200] * 32768; };
    EXPECT_NEAR(frame(0), 12'001, 1);
    EXPECT_NEAR(frame(7000), 19'001, 1);
    EXPECT_NEAR(frame(7999), 4000, 1) << "faded into what stands before the start";
    EXPECT_NEAR(frame(8000), 4001, 1) << "and on from there";
    world.model.setLoopEnabled(!world.model.state().loopEnabled);
    EXPECT_TRUE(world.document->player().isPlaying()) << "the joint loops whatever Loop says";
    world.model.commitLoop(std::nullopt);
    EXPECT_FALSE(world.document->player().isPlaying() || world.model.state().previewPlaying);
}

}  // namespace
}  // namespace kiv
