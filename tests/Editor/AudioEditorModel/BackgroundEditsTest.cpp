#include "Editor/AudioEditorModel/BackgroundEdits.h"
#include "Editor/AudioEditorModel/BackgroundPeaks.h"

#include <chrono>
#include <random>
#include <thread>

#include "Editor/AudioEditorModel/ModelFixture.h"
#include "Platform/Fake/FakeJobs.h"
#include "Platform/Fake/FakeMainLoop.h"
#include "Platform/ThreadJobs.h"

namespace kiv {
namespace {

// All of a model that an edit may touch.
struct Trace {
    AudioEditorBuffer buffer;
    AudioEditorPeaks peaks;
    std::int64_t generation, version, cursor;
    std::optional<FrameRange> selection, loop;
    std::vector<std::int64_t> markers;
    std::size_t undos, redos;

    explicit Trace(const AudioEditorModel &model)
        : buffer(model.state().buffer),
          peaks(model.state().peaks),
          generation(model.state().generation),
          version(model.state().contentVersion),
          cursor(model.state().cursorFrame),
          selection(model.state().selection),
          loop(model.state().loopPoints),
          markers(model.state().markerFrames),
          undos(model.history().undoDepth()),
          redos(model.history().redoDepth()) {}
    friend bool operator==(const Trace &, const Trace &) = default;
};

struct Edit {
    const char *name;
    void (*perform)(AudioEditorModel &);
};

void paste(AudioEditorModel &model) {
    model.clipboard().buffer = noise(400000, 1, 5).atRate(22050);
    AudioEditorEdits::paste(model);
}

// Every edit that is long on the sound of LongSound.
const Edit edits[] = {
    {"gain", [](AudioEditorModel &model) { AudioEditorEdits::gain(model, -3); }},
    {"normalize", [](AudioEditorModel &model) { AudioEditorEdits::normalize(model, -1); }},
    {"fade in", AudioEditorEdits::fadeIn},
    {"fade out", AudioEditorEdits::fadeOut},
    {"reverse", AudioEditorEdits::reverse},
    {"mono", [](AudioEditorModel &model) { AudioEditorEdits::mono(model, AudioEditorMonoSource::mix); }},
    {"paste from another rate", paste},
};

constexpr std::int64_t longFrames = 2500000;

AudioEditorBuffer longSound() {
    AudioEditorBuffer sound = noise(longFrames / 100, 2, 3);
    while (sound.frames() < longFrames) sound = sound.replacing({sound.frames(), sound.frames()}, sound);
    return sound.part({0, longFrames});
}

struct LongSound : ModelFixture {
    FakeJobs jobs;
    BackgroundEdits background{model, jobs};
    std::vector<bool> ended;

    LongSound() {
        load(longSound(), {10, 2000000}, FrameRange{100, 5000});
        AudioEditorEdits::gain(model, -1);
        jobs.runAll();
        model.undo();  // something to redo, which only a committed edit may take away
        background.onEnded = [this](bool committed) { ended.push_back(committed); };
        told.clear();
    }
};

TEST_F(LongSound, EditsRunAsJobsAndGiveWhatTheyGiveOnTheSpot) {
    for (const Edit &edit : edits) {
        const Trace before(model);
        edit.perform(model);
        EXPECT_TRUE(background.isRunning()) << edit.name;
        EXPECT_TRUE(jobs.work()) << edit.name;
        EXPECT_EQ(Trace(model), before) << edit.name << " has touched the model before its report";
        EXPECT_EQ(background.fraction(), 1) << edit.name;
        jobs.runAll();
        EXPECT_FALSE(background.isRunning());
        EXPECT_EQ(model.history().undoDepth(), before.undos + 1) << edit.name;
        EXPECT_EQ(state().peaks, AudioEditorPeaks(buffer())) << edit.name;
        const Trace done(model);
        model.undo();
        AudioEditorModel other(settings, clipboard);
        other.load(before.buffer, before.markers, before.loop);
        edit.perform(other);
        EXPECT_TRUE(other.state().buffer == done.buffer) << edit.name;
        EXPECT_EQ(other.state().selection, done.selection) << edit.name;
    }
}

TEST_F(LongSound, ShortEditsAndEditsThatCopyNothingHappenOnTheSpot) {
    model.select({1000000, 1480000});
    for (const auto edit : {AudioEditorEdits::fadeIn, AudioEditorEdits::reverse, AudioEditorEdits::silence}) edit(model);
    AudioEditorEdits::copy(model);
    AudioEditorEdits::paste(model);
    AudioEditorEdits::cut(model);
    EXPECT_EQ(jobs.waiting(), 0);
    EXPECT_EQ(model.history().undoDepth(), 5u);
}

TEST_F(LongSound, KeepsWhatTheUserHasDoneMeanwhile) {
    AudioEditorEdits::reverse(model);
    model.select({70, 90});
    model.zoomBy(4);
    const AudioEditorZoom view = state().view;
    model.commitLoop(FrameRange{5, 50});
    jobs.runAll();
    EXPECT_EQ(state().selection, (FrameRange{70, 90}));
    EXPECT_EQ(state().view.zoom, view.zoom);
    EXPECT_EQ(state().loopPoints, (FrameRange{5, 50}));
    EXPECT_EQ(model.history().undoDepth(), 2u);
}

TEST_F(LongSound, AnEditThatComesTooLateIsDropped) {
    const Edit races[] = {
        {"another edit", [](AudioEditorModel &m) { m.commit(noise(9, 1, 1), 0, {}, AudioEditorLengthChange::none()); }},
        {"a redo", [](AudioEditorModel &m) { m.redo(); }},
        {"a file read again", [](AudioEditorModel &m) { m.reload(m.state().buffer, {}, {}); }},
    };
    for (const Edit &race : races)
        for (const bool beforeItsWork : {true, false}) {
            load(longSound());
            AudioEditorEdits::silence(model);
            model.undo();
            ended.clear();
            AudioEditorEdits::reverse(model);
            if (!beforeItsWork) jobs.work();
            race.perform(model);
            const Trace raced(model);
            jobs.runAll();
            EXPECT_EQ(Trace(model), raced) << race.name;
            EXPECT_EQ(ended, std::vector<bool>{false}) << race.name;
        }
}

TEST_F(LongSound, WhatIsAskedForDuringAnEditIsNotDone) {
    std::vector<bool> heard;
    const Subscription listening =
        background.changed.add([&](const BackgroundEdits &now) { heard.push_back(now.isRunning()); });
    AudioEditorEdits::reverse(model);
    AudioEditorEdits::gain(model, 3);
    EXPECT_EQ(jobs.waiting(), 1);
    jobs.runAll();
    EXPECT_EQ(model.history().undoDepth(), 1u);
    EXPECT_EQ(heard, (std::vector<bool>{true, false}));
}

TEST_F(LongSound, SilenceIsNotNormalizedInTheBackgroundEither) {
    AudioEditorEdits::silence(model);
    const Trace before(model);
    AudioEditorEdits::normalize(model, -1);
    jobs.runAll();
    EXPECT_EQ(Trace(model), before);
    EXPECT_EQ(ended, std::vector<bool>{false});
}

TEST_F(LongSound, AFailureIsToldAndLeavesNoTrace) {
    int failures = 0;
    background.onFailed = [&](std::exception_ptr) { ++failures; };
    const Trace before(model);
    model.apply({1e9, {1}, [](Progress &) -> std::optional<EditOutcome> { throw std::bad_alloc(); }});
    jobs.runAll();
    EXPECT_EQ(failures, 1);
    EXPECT_FALSE(background.isRunning());
    EXPECT_EQ(Trace(model), before);
}

TEST_F(LongSound, TakingALongEditBackMeasuresNothing) {
    AudioEditorEdits::reverse(model);
    jobs.runAll();
    const auto values = [&] { return state().peaks.mins[0].data(); };
    const float *reversed = values();
    model.undo();
    EXPECT_EQ(state().peaks, AudioEditorPeaks(buffer()));
    const float *original = values();
    model.redo();
    EXPECT_EQ(values(), reversed) << "not the same values in the same place";
    EXPECT_EQ(state().peaks, AudioEditorPeaks(buffer()));
    model.undo();
    EXPECT_EQ(values(), original);
}

TEST_F(LongSound, WhatACutMovesIsMeasuredLaterAndOnce) {
    const BackgroundPeaks peaks(model, jobs);
    const std::int64_t cut = 1001;
    for (std::int64_t i = 1; i <= 3; ++i) {
        model.select({500, 500 + cut});
        AudioEditorEdits::deleteSelection(model);
        EXPECT_FALSE(state().peaks.isExact());
    }
    told.clear();
    jobs.runAll();
    EXPECT_EQ(told, std::vector{bits({Change::peaks})});
    EXPECT_EQ(state().peaks, AudioEditorPeaks(buffer()));
    model.undo();
    jobs.work();
    model.undo();
    jobs.runAll();
    EXPECT_EQ(state().peaks, AudioEditorPeaks(buffer()));
}

// Real threads from here on.
struct Racing : ModelFixture {
    FakeMainLoop loop;
    ThreadJobs jobs{loop};
    BackgroundEdits background{model, jobs};
    std::mt19937 random{20};

    Racing() { load(longSound(), {10, 2000000}, FrameRange{100, 5000}); }

    void wait(int mostMicroseconds) {
        const int time = int(random() % std::uint32_t(mostMicroseconds));
        std::this_thread::sleep_for(std::chrono::microseconds(time));
    }
    const Edit &anyEdit() { return edits[random() % std::size(edits)]; }
};

TEST_F(Racing, CancelledAtAnyMomentLeavesNoTrace) {
    int cancelled = 0;
    for (int i = 0; i < 200; ++i) {
        const Trace before(model);
        const Edit &edit = anyEdit();
        edit.perform(model);
        wait(8000);
        if (i % 2) loop.runPosts();
        if (background.isRunning()) {
            ++cancelled;
            background.cancel();
            EXPECT_EQ(Trace(model), before) << edit.name;
            wait(3000);
            loop.runPosts();
            ASSERT_EQ(Trace(model), before) << edit.name << " came in after it was cancelled";
        } else {
            EXPECT_EQ(model.history().undoDepth(), before.undos + 1);
            model.undo();
            load(longSound(), {10, 2000000}, FrameRange{100, 5000});
        }
    }
    EXPECT_GT(cancelled, 50);
}

TEST_F(Racing, CutsDoNotWaitForThePeaksOfTheOnesBefore) {
    const BackgroundPeaks peaks(model, jobs);
    for (int i = 0; i < 100; ++i) {
        const std::int64_t at = std::int64_t(random() % 1000000), count = 1 + std::int64_t(random() % 5000);
        model.select({at, at + count});
        AudioEditorEdits::deleteSelection(model);
        wait(2000);
        loop.runPosts();
    }
    while (!state().peaks.isExact()) ASSERT_TRUE(loop.waitForPosts());
    EXPECT_EQ(state().peaks, AudioEditorPeaks(buffer()));
}

TEST_F(Racing, AgainstShortEditsOneOfBothIsDone) {
    for (int i = 0; i < 60; ++i) {
        load(longSound());
        AudioEditorEdits::gain(model, 6);
        wait(30000);
        loop.runPosts();
        const bool wasFirst = !background.isRunning();
        model.select({100, 200});
        AudioEditorEdits::silence(model);
        while (background.isRunning()) loop.waitForPosts();
        EXPECT_EQ(model.history().undoDepth(), wasFirst ? 2u : 1u);
        EXPECT_EQ(buffer().sample(99, 0) == longSound().sample(99, 0), !wasFirst);
        EXPECT_EQ(buffer().sample(100, 0), 0);
        EXPECT_EQ(state().peaks, AudioEditorPeaks(buffer()));
    }
}

}  // namespace
}  // namespace kiv
