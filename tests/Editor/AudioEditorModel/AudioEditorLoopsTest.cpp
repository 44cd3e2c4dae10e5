#include "Editor/AudioEditorModel/AudioEditorLoops.h"

#include <cmath>
#include <numbers>

#include "Editor/AudioEditorModel/BackgroundAnalyses.h"
#include "Editor/AudioEditorModel/ModelFixture.h"
#include "Platform/Fake/FakeJobs.h"

namespace kiv {
namespace {

using namespace AudioEditorLoops;

struct LoopsTest : ModelFixture {
    // A second of a tone with a period of 100 frames, which is full of loops.
    void loadTone() {
        std::vector<float> samples;
        for (int i = 0; i < 44'100; ++i) samples.push_back(0.5f * float(std::sin(2 * std::numbers::pi * i / 100 + 0.01)));
        load(AudioEditorBuffer(samples, 1, 44'100));
    }
    std::size_t undoDepth() const { return model.history().undoDepth(); }
};

TEST_F(LoopsTest, aSearchTakesTheBestAndThenGoesRound) {
    loadTone();
    model.setSlicerEnabled(true);
    findLoop(model);
    EXPECT_TRUE(state().editLoopEnabled && !state().slicerEnabled) << "only one mode at a time";
    const auto candidates = loopCandidates(state());
    ASSERT_GT(candidates.size(), 1u);
    EXPECT_EQ(state().loopPoints, candidates[0].loop);
    EXPECT_EQ(undoDepth(), 1u);
    EXPECT_EQ(loopFindStatus(state()), "Candidate 1 of " + std::to_string(candidates.size()) + " · match 100 %");
    findLoop(model);
    EXPECT_EQ(loopCandidateIndex(state()), 1u);
    stepLoopCandidate(model, -2);
    EXPECT_EQ(loopCandidateIndex(state()), candidates.size() - 1) << "round the other way";
    stepLoopCandidate(model, 1);
    EXPECT_EQ(loopCandidateIndex(state()), 0u);
    nudgeLoop(model, LoopPoint::end, 1);
    EXPECT_FALSE(loopCandidateIndex(state()));
    EXPECT_EQ(loopFindStatus(state()), std::to_string(candidates.size()) + " loop candidates");
    stepLoopCandidate(model, -1);
    EXPECT_EQ(loopCandidateIndex(state()), candidates.size() - 1);
    model.setEditLoopEnabled(false);
    stepLoopCandidate(model, 1);
    EXPECT_EQ(loopCandidateIndex(state()), candidates.size() - 1) << "only in Edit Loop";
    AudioEditorEdits::gain(model, 1);
    EXPECT_TRUE(loopCandidates(state()).empty()) << "of a sound that is no more";
    model.undo();
    setLoopZeroCrossing(model, true);
    EXPECT_TRUE(loopCandidates(state()).empty());
    EXPECT_TRUE(settings.get(Setting::loopZeroCrossing));
}

TEST_F(LoopsTest, aSearchThatFindsNothingSaysSo) {
    load(AudioEditorBuffer(std::vector<float>(1000, 0.0f), 1, 44'100));
    findLoop(model);
    EXPECT_EQ(loopFindStatus(state()), "No loop found: the sound is too short or too quiet");
    EXPECT_FALSE(state().loopPoints);
    setLoop(model, 10, 20);
    nudgeLoop(model, LoopPoint::start, 1);
    EXPECT_EQ(loopFindStatus(state()), "");
}

TEST_F(LoopsTest, aResultThatComesTooLateIsDropped) {
    FakeJobs jobs;
    const auto search = [&](auto meanwhile) {
        loadTone();
        findLoop(model);
        EXPECT_TRUE(state().loopAnalyzing);
        EXPECT_EQ(loopFindStatus(state()), "Analyzing the sound, please wait…");
        findLoop(model);
        EXPECT_EQ(jobs.waiting(), 1) << "one at a time";
        jobs.work();
        meanwhile();
        jobs.report();
        EXPECT_FALSE(state().loopAnalyzing);
        return state().loopPoints.has_value();
    };
    {
        const BackgroundAnalyses analyses(model, jobs);
        EXPECT_TRUE(search([] {}));
        EXPECT_FALSE(search([&] { AudioEditorEdits::gain(model, 1); }));
        EXPECT_FALSE(search([&] { setLoopZeroCrossing(model, !state().loopZeroCrossing); }));
        EXPECT_FALSE(search([&] { model.setEditLoopEnabled(false); }));
        EXPECT_FALSE(state().loopFindNotice);
        loadTone();
        findLoop(model);
    }
    jobs.runAll();
    EXPECT_FALSE(state().loopPoints) << "nobody is there any more";
}

TEST_F(LoopsTest, nudgesBySamplesAndByCrossings) {
    loadTone();  // crosses zero at 50, 100, 150 …
    struct Case {
        FrameRange from;
        LoopPoint point;
        int by;
        bool crossings;
        FrameRange to;
    };
    const Case cases[] = {
        {{500, 900}, LoopPoint::start, 1, false, {501, 900}}, {{500, 900}, LoopPoint::end, -10, false, {500, 890}},
        {{500, 501}, LoopPoint::end, -1, false, {500, 501}},  {{500, 900}, LoopPoint::start, 9999, false, {899, 900}},
        {{5, 900}, LoopPoint::start, -10, false, {0, 900}},   {{500, 44'095}, LoopPoint::end, 10, false, {500, 44'100}},
        {{510, 900}, LoopPoint::start, 1, true, {550, 900}},  {{510, 920}, LoopPoint::end, -2, true, {510, 850}},
        {{510, 920}, LoopPoint::start, 0, true, {510, 920}},  {{20, 920}, LoopPoint::start, -1, true, {20, 920}},
        {{510, 520}, LoopPoint::start, 10, true, {519, 520}},
    };
    for (const Case &c : cases) {
        setLoop(model, c.from.lo, c.from.hi);
        setLoopZeroCrossing(model, c.crossings);
        const std::size_t steps = undoDepth();
        nudgeLoop(model, c.point, c.by);
        EXPECT_EQ(state().loopPoints, c.to) << c.from.lo << " " << c.by;
        EXPECT_EQ(undoDepth(), steps + (c.from != c.to));
    }
    model.commitLoop(std::nullopt);
    nudgeLoop(model, LoopPoint::end, 1);
    EXPECT_FALSE(state().loopPoints);
}

TEST_F(LoopsTest, theCrossfadeIsNoLongerThanTheLoopOrWhatStandsBeforeIt) {
    struct Case {
        FrameRange loop;
        int step;
        std::int64_t frames;
        bool limited;
    };
    load(noise(200'000, 1, 1));
    const Case cases[] = {
        {{10'000, 60'000}, 0, 0, false},      {{10'000, 60'000}, 7, 661, false},
        {{10'000, 60'000}, 23, 10'000, true}, {{150'000, 194'100}, 23, 44'100, true},
        {{0, 60'000}, 10, 0, true},           {{100'000, 100'001}, 1, 1, true},
        {{10'000, 60'000}, -5, 0, false},     {{140'000, 199'000}, 99, 59'000, true},
    };
    for (const Case &c : cases) {
        setLoop(model, c.loop.lo, c.loop.hi);
        setLoopCrossfadeStep(model, c.step);
        EXPECT_EQ(loopCrossfadeFrames(state()), c.frames) << c.loop.lo << " " << c.step;
        EXPECT_EQ(loopCrossfadeLimited(state()), c.limited);
        EXPECT_EQ(joint(state())->fade, c.frames);
    }
    model.commitLoop(std::nullopt);
    EXPECT_EQ(loopCrossfadeFrames(state()), 0);
    EXPECT_FALSE(joint(state()));
}

TEST_F(LoopsTest, applyingTheCrossfadeIsOneStepThatTurnsThePreviewOff) {
    load(noise(100'000, 2, 1), {5}, FrameRange{20'000, 60'000});
    const AudioEditorBuffer before = buffer();
    setLoopCrossfadeStep(model, 10);
    setLoopCrossfadeEqualPower(model, true);
    EXPECT_TRUE(settings.get(Setting::loopCrossfadeEqualPower));
    applyLoopCrossfade(model);
    EXPECT_EQ(undoDepth(), 0u) << "not outside Edit Loop";
    model.setEditLoopEnabled(true);
    const AudioEditorBuffer expected = crossfaded(before, {{20'000, 60'000}, 1764, LoopCrossfade::Curve::equalPower});
    EXPECT_TRUE(Changes{notices([&] { applyLoopCrossfade(model); })}.contains(Change::audio));
    EXPECT_EQ(buffer(), expected);
    EXPECT_EQ(state().loopCrossfadeStep, 0);
    EXPECT_EQ(state().loopPoints, (FrameRange{20'000, 60'000}));
    applyLoopCrossfade(model);
    EXPECT_EQ(undoDepth(), 1u) << "a fade of no frames is none";
    model.undo();
    EXPECT_EQ(buffer(), before);
    EXPECT_EQ(state().loopPoints, (FrameRange{20'000, 60'000}));
}

TEST_F(LoopsTest, theOwnerIsToldOfTheModeTheLoopAndTheJoint) {
    std::string said;
    model.onEditLoopChanged = [&](bool on) { said += on ? "on " : "off "; };
    model.onLoopPointsChanged = [&] { said += "loop "; };
    model.onPlayJoint = [&] { said += "joint "; };
    playLoopJoint(model);
    model.setEditLoopEnabled(true);
    model.setEditLoopEnabled(true);
    setLoop(model, 10, 20);
    playLoopJoint(model);
    setJointHalfSeconds(model, 9);
    EXPECT_EQ(state().jointHalfSeconds, 1);
    model.setSlicerEnabled(true);
    EXPECT_EQ(said, "on loop joint off ");
}

}  // namespace
}  // namespace kiv
