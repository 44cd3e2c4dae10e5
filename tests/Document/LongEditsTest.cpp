#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Document/CommandActions.h"
#include "Document/DocumentWorld.h"
#include "Editor/AudioEditorModel/AudioEditorLoops.h"

namespace kiv {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// A document with a sound that is long to edit, a step to undo and one to redo, and a long edit under way.
struct LongEdit : DocumentWorld, testing::Test {
    static constexpr int frames = 5000000;
    std::string file = Wav::file(std::vector<int>(frames, 1000));

    LongEdit() {
        open(file);
        model.select({0, 100});
        AudioEditorEdits::copy(model);
        for (int i = 0; i < 2; ++i) AudioEditorEdits::silence(model);
        model.undo();
        model.undo();
        AudioEditorEdits::silence(model);
        model.undo();
        clipboard.buffer = model.state().buffer.part({0, 10});
        model.selectNone();
        AudioEditorEdits::gain(model, -6);
    }
    float firstSample() const { return model.state().buffer.sample(0, 0); }
    float firstOnDisk(const char *where = path) {
        DocumentWorld other;
        other.open(onDisk(where));
        return other.model.state().buffer.sample(0, 0);
    }
    const float original = 1000 / 32768.0f;
};

TEST_F(LongEdit, LetsListenLookAndCopyButNoOtherEditBegin) {
    using enum EditorCommand;
    EXPECT_EQ(document->work(), AudioDocument::Work::editing);
    model.select({0, 100});
    AudioEditorLoops::setLoop(model, 100, 200);
    AudioEditorLoops::setLoopCrossfadeStep(model, 1);
    model.setEditLoopEnabled(true);
    for (const EditorCommand command : {undo, redo, cut, paste, delete_, gain, normalize, fadeIn, fadeOut, silence, reverse,
                                        trim, stereo, revert, applyLoopCrossfade, spectral})
        EXPECT_FALSE(isEnabled(command, *document)) << row(command).raw;
    for (const EditorCommand command : {playStop, zoomIn, copy, selectAll, selectNone, goToStart, loop, toggleTimeUnit, save})
        EXPECT_TRUE(isEnabled(command, *document)) << row(command).raw;
    jobs.runAll();
    for (const EditorCommand command : {gain, undo, applyLoopCrossfade, spectral})
        EXPECT_TRUE(isEnabled(command, *document)) << row(command).raw;
    EXPECT_FALSE(document->isBusy());
}

TEST_F(LongEdit, TheDialogClosesAtOnceAndTheEditFollows) {
    jobs.runAll();
    model.openDialog(Dialog::normalize);
    EXPECT_TRUE(AudioEditorEdits::confirmDialog(model));
    EXPECT_FALSE(model.state().dialog);
    EXPECT_TRUE(document->isEditing());
    jobs.runAll();
    EXPECT_EQ(firstSample(), 1);
}

TEST_F(LongEdit, CanBeCancelledAndIsThenAsIfItHadNeverBeen) {
    document->cancelWork();
    EXPECT_FALSE(document->isBusy());
    jobs.runAll();
    EXPECT_EQ(firstSample(), original);
    EXPECT_FALSE(document->isEdited());
    EXPECT_THAT(ui.errors, IsEmpty());
}

TEST_F(LongEdit, ASearchShowsItsProgressHoldsUpNothingAndIsCancelledBeforeASave) {
    document->cancelWork();
    AudioEditorEdits::fadeIn(model);
    jobs.runAll();
    int told = 0;
    const auto subscription = document->observers.add([&](const AudioDocument &) { ++told; });
    AudioEditorLoops::findLoop(model);
    EXPECT_EQ(std::exchange(told, 0), 1);
    EXPECT_TRUE(document->progress() && !document->isBusy());
    document->save();
    document->cancelWork();
    EXPECT_FALSE(document->isSearching() || model.state().loopAnalyzing);
    EXPECT_EQ(document->work(), AudioDocument::Work::saving);
    jobs.runAll();
    EXPECT_FALSE(document->isEdited() || document->progress() || model.state().loopPoints);
    EXPECT_EQ(told, 3) << "the save has begun, the search has ended, the save has ended";
}

TEST_F(LongEdit, ASaveWaitsForItAndIsCalledOffWithIt) {
    for (const bool cancels : {true, false}) {
        if (!document->isEditing()) AudioEditorEdits::gain(model, -6);
        std::vector<bool> saved;
        document->save([&](bool ok) { saved.push_back(ok); });
        document->save([&](bool ok) { saved.push_back(ok); });  // one is enough
        EXPECT_THAT(saved, ElementsAre(false));
        if (cancels) document->cancelWork();
        jobs.runAll();
        EXPECT_THAT(saved, ElementsAre(false, !cancels));
        EXPECT_EQ(firstOnDisk() < original, !cancels);
        EXPECT_FALSE(document->isEdited());
    }
}

TEST_F(LongEdit, TheEqualizerIsAppliedBehindItBeforeASave) {
    EqSettings quieter;
    quieter.gainDb = -6;
    document->eq().setSettings(quieter);
    constexpr const char *part = "/music/part.wav";
    for (const char *where : {part, path}) {
        const float lowered = firstSample() * 0.2512f;
        if (!document->isEditing()) model.selectNone(), AudioEditorEdits::gain(model, -6);
        model.setEqEnabled(true);
        model.select({0, 10});
        std::vector<bool> saved;
        const auto done = [&](bool ok) { saved.push_back(ok); };
        ui.answers = {where == part ? "Apply EQ to Selection and Save" : "Apply EQ and Save"};
        where == part ? document->saveSelection(part, done) : document->save(done);
        jobs.runAll();
        EXPECT_THAT(saved, ElementsAre(true)) << where;
        EXPECT_NEAR(firstOnDisk(where), lowered, 1e-4) << where;
        EXPECT_FALSE(model.state().eqEnabled) << where;
    }
}

TEST_F(LongEdit, ASaveOverAnotherProgramsChangesWaitsForItToo) {
    jobs.runAll();
    put(Wav::file({7}));
    ui.answers = {"Save Anyway"};
    std::vector<bool> saved;
    document->save([&](bool ok) { saved.push_back(ok); });
    AudioEditorEdits::gain(model, -6);
    jobs.runAll();
    EXPECT_THAT(saved, ElementsAre(true));
    EXPECT_NEAR(firstOnDisk(), original * 0.2512f, 1e-4);
}

TEST_F(LongEdit, AnAnswerTakesNotThePlaceOfASaveThatWaits) {
    document->eq().setSettings({.gainDb = -6});
    model.setEqEnabled(true);
    std::vector<int> told;
    document->save([&](bool ok) { told.push_back(ok ? 1 : -1); });
    model.setEqEnabled(false);
    document->save([&](bool ok) { told.push_back(ok ? 2 : -2); });
    ui.press("Save Without EQ");
    jobs.runAll();
    EXPECT_THAT(told, ElementsAre(-1, 2));
    EXPECT_THAT(ui.errors, ElementsAre("“drum.wav” could not be saved: “drum.wav” is just being saved."));
}

TEST_F(LongEdit, HasNothingToSayAboutASaveThatWaitsForSomethingElse) {
    AudioEditorModel other(settings, clipboard);
    other.load(model.state().buffer, {}, std::nullopt);
    DocumentWork work(other, jobs);
    work.onChanged = work.onEnded = [] {};
    for (const bool editsLonger : {false, true}) {
        std::vector<bool> told;
        work.keep([&](bool go) { told.push_back(go); });
        AudioEditorEdits::gain(other, -6);
        if (editsLonger) work.goOn();
        EXPECT_TRUE(told.empty() && !work.takesSave());
        work.cancelEdit();
        if (!editsLonger) work.goOn();
        EXPECT_THAT(told, ElementsAre(true));
    }
}

TEST_F(LongEdit, MayBeginWhileAnEarlierStateIsSaved) {
    jobs.runAll();
    document->save();
    AudioEditorEdits::reverse(model);
    EXPECT_EQ(document->work(), AudioDocument::Work::saving);
    EXPECT_TRUE(document->isEditing());
    jobs.runAll();
    EXPECT_TRUE(document->isEdited());
    EXPECT_LT(firstOnDisk(), original);
}

TEST_F(LongEdit, ClosingAsksAsIfItWereDone) {
    const struct {
        const char *answer;
        bool closes, saves;
    } cases[] = {{"Save", true, true}, {"Don’t Save", true, false}, {"Cancel", false, false}};
    for (const auto &[answer, closes, saves] : cases) {
        DocumentWorld world;
        world.open(file);
        AudioEditorEdits::gain(world.model, -6);
        world.ui.answers = {answer};
        int closed = 0;
        world.document->confirmClose([&](bool mayGo) {
            closed += mayGo;
            if (mayGo) world.document->letGo();
        });
        world.jobs.runAll();
        EXPECT_EQ(world.ui.asked.size(), 1u) << answer;
        EXPECT_EQ(closed, closes) << answer;
        EXPECT_EQ(world.onDisk() != file, saves) << answer;
        EXPECT_EQ(world.document->isEdited(), !closes) << answer;
    }
}

// Another window may yet be against the end of the program.
TEST_F(LongEdit, GoesOnUntilTheDocumentDoesGoAndIsKnownByItsMark) {
    const auto asked = document->editMark();
    ui.answers = {"Don’t Save"};
    bool mayGo = false;
    document->confirmClose([&](bool may) { mayGo = may; });
    EXPECT_TRUE(mayGo && document->isEditing() && document->editMark() == asked);
    jobs.runAll();
    EXPECT_TRUE(document->isEdited());
    const auto ended = document->editMark();
    EXPECT_FALSE(ended == asked);
    AudioEditorEdits::gain(model, -6);
    EXPECT_TRUE(document->isEditing());
    EXPECT_FALSE(document->editMark() == ended) << "one that was begun after the answer is asked about";
}

TEST_F(LongEdit, ClosingWaitsForASaveThatWaitsForIt) {
    document->save();
    int closed = 0;
    document->confirmClose([&](bool mayGo) { closed += mayGo; });
    EXPECT_THAT(ui.asked, IsEmpty());
    jobs.runAll();
    EXPECT_EQ(closed, 1);
    EXPECT_LT(firstOnDisk(), original);
}

TEST_F(LongEdit, IsGoneWithItsDocument) {
    int told = 0;
    document->save([&](bool) { ++told; });
    document.reset();
    jobs.runAll();
    EXPECT_EQ(told, 0);
}

TEST_F(LongEdit, TellsWhyItCouldNotBeDone) {
    document->cancelWork();
    model.apply({1e9, {1}, [](Progress &) -> std::optional<EditOutcome> { throw std::bad_alloc(); }});
    jobs.runAll();
    EXPECT_THAT(ui.errors, ElementsAre(HasSubstr("“drum.wav” could not be edited: There is not enough memory.")));
}

}  // namespace
}  // namespace kiv
