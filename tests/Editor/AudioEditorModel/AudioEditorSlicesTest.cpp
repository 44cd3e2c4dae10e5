#include "Editor/AudioEditorModel/AudioEditorSlices.h"

#include "Editor/AudioEditorModel/BackgroundAnalyses.h"
#include "Editor/AudioEditorModel/BackgroundEdits.h"
#include "Editor/AudioEditorModel/ModelFixture.h"
#include "Platform/Fake/FakeJobs.h"

namespace kiv {
namespace {

using namespace AudioEditorSlices;
using Mode = AudioEditorSlicer::Mode;
using Slices = std::vector<FrameRange>;

struct SlicesTest : ModelFixture {
    // Hits of noise in silence, one every 20,000 frames from 10,000 on.
    void loadHits(std::int64_t frames) {
        std::vector<float> samples = noiseSamples(frames, 1);
        for (std::int64_t i = 0; i < frames; ++i) {
            const std::int64_t at = (i + 10'000) % 20'000;
            samples[std::size_t(i)] *= at < 4000 ? 0.5f * (1 - float(at) / 4000) : 0;
        }
        load(AudioEditorBuffer(samples, 1, 44'100));
    }
    std::size_t undoDepth() const { return model.history().undoDepth(); }
};

TEST_F(SlicesTest, areDetectedOnEnteringAndAfterEachChangeButNotByAnEdit) {
    setSetting(model, SliceSetting::divisions, 4);
    EXPECT_TRUE(state().slices.empty()) << "not outside the slicer";
    detect(model, Mode::grid);
    EXPECT_TRUE(state().slicerEnabled);
    EXPECT_EQ(state().slices, (Slices{{0, 250}, {250, 500}, {500, 750}, {750, 1000}}));
    setSetting(model, SliceSetting::gridLengthPercent, 50);
    EXPECT_EQ(state().slices[1], (FrameRange{250, 375}));
    EXPECT_EQ(undoDepth(), 0u) << "detecting is no step";
    model.select({100, 300});
    AudioEditorEdits::deleteSelection(model);
    EXPECT_EQ(state().slices, (Slices{{0, 100}, {100, 175}, {300, 425}, {550, 675}}));
    model.select({50, 200});
    AudioEditorEdits::deleteSelection(model);
    EXPECT_EQ(state().slices, (Slices{{0, 50}, {150, 275}, {400, 525}})) << "what has become empty is gone";
    model.undo();
    EXPECT_EQ(state().slices.size(), 4u);
    setSetting(model, SliceSetting::fadeInSamples, 20);
    EXPECT_EQ(state().slices.size(), 4u) << "a fade detects nothing";
    setSlicerEnabled(model, false);
    setSlicerEnabled(model, true);
    EXPECT_EQ(state().slices, (Slices{{0, 100}, {100, 175}, {300, 425}, {550, 675}})) << "they were there";
    detect(model, Mode::stripSilence);
    EXPECT_EQ(state().slices, (Slices{{0, 800}}));
    model.load(noise(400, 1, 1), {}, std::nullopt);
    EXPECT_EQ(state().slices, (Slices{{0, 400}})) << "those of the new sound";
}

TEST_F(SlicesTest, settingsAreStoredAndKeptInTheirRange) {
    for (const SliceSettingRow &row : sliceSettings()) {
        setSetting(model, row.setting, 1e9);
        const int most = state().*row.value;
        EXPECT_EQ(most, row.setting == SliceSetting::divisions ? 16 : int(std::min(row.stored.hi, 1e9))) << row.field;
        setSetting(model, row.setting, -1e9);
        EXPECT_EQ(state().*row.value, row.setting == SliceSetting::divisions ? 16 : int(std::max(row.stored.lo, -1e9)));
        EXPECT_EQ(sliceSettingFromField(row.field), &row);
    }
    setSetting(model, SliceSetting::sensitivity, 71);
    setSetting(model, SliceSetting::divisions, 64);
    setSetting(model, SliceSetting::gridOffset, 5);
    detect(model, Mode::grid);
    const AudioEditorModel next(settings, clipboard);
    EXPECT_EQ(next.state().sliceSensitivity, 71);
    EXPECT_EQ(next.state().sliceTailDb, -120);
    EXPECT_EQ(next.state().sliceDivisions, 64);
    EXPECT_EQ(next.state().sliceGridOffset, 0) << "the grid's own place is not stored";
    EXPECT_EQ(next.state().sliceMode, Mode::grid);
    for (const char *stored : {"10", "128", "1", "16.2", "x"}) {
        defaults.setText("audio_editor_slice_divisions", stored);
        EXPECT_EQ(AudioEditorModel(settings, clipboard).state().sliceDivisions, 16) << stored;
    }
}

TEST_F(SlicesTest, anEdgeIsDraggedBetweenItsNeighboursAsOneStep) {
    setSetting(model, SliceSetting::gridLengthPercent, 50);
    setSetting(model, SliceSetting::divisions, 4);
    detect(model, Mode::grid);
    const Slices before = state().slices;  // 0–125, 250–375, 500–625, 750–875
    moveSliceEdge(model, {1, true}, 200);
    moveSliceEdge(model, {1, true}, 50);
    EXPECT_EQ(state().slices[1], (FrameRange{125, 375}));
    moveSliceEdge(model, {1, true}, 999);
    EXPECT_EQ(state().slices[1], (FrameRange{374, 375}));
    moveSliceEdge(model, {2, false}, 0);
    EXPECT_EQ(state().slices[2], (FrameRange{500, 501}));
    moveSliceEdge(model, {3, false}, 9999);
    EXPECT_EQ(state().slices[3].hi, 1000);
    EXPECT_EQ(undoDepth(), 0u);
    cancelSliceMove(model);
    EXPECT_EQ(state().slices, before);
    moveSliceEdge(model, {2, false}, 700);
    endSliceMove(model);
    endSliceMove(model);
    EXPECT_EQ(undoDepth(), 1u);
    EXPECT_FALSE(state().pressSlices);
    EXPECT_EQ(sliceAt(state(), 699), 2u);
    EXPECT_FALSE(sliceAt(state(), 700));
    model.undo();
    EXPECT_EQ(state().slices, before);
    model.redo();
    EXPECT_EQ(state().slices[2], (FrameRange{500, 700}));
    moveSliceEdge(model, {4, true}, 5);
    EXPECT_FALSE(state().pressSlices) << "there is no such slice";
    moveSliceEdge(model, {2, false}, 650);
    AudioEditorEdits::reverse(model);
    EXPECT_EQ(undoDepth(), 3u) << "an edit ends the drag first";
    EXPECT_EQ(state().slices[2].hi, 650);
}

TEST_F(SlicesTest, aLongSoundIsLookedAtAsAJobAndWithTheLatestSettings) {
    FakeJobs jobs;
    const BackgroundAnalyses analyses(model, jobs);
    loadHits(3'000'000);
    setSlicerEnabled(model, true);
    EXPECT_TRUE(state().sliceAnalyzing && state().slices.empty());
    setSetting(model, SliceSetting::preRollMs, 0);
    EXPECT_EQ(jobs.waiting(), 1) << "one at a time";
    jobs.runAll();
    EXPECT_FALSE(state().sliceAnalyzing);
    ASSERT_EQ(state().slices.size(), 150u);
    EXPECT_NEAR(double(state().slices[0].lo), 10'000, 8) << "as was asked for last";
    setSetting(model, SliceSetting::preRollMs, 10);
    EXPECT_EQ(jobs.waiting(), 0) << "with the energies known it takes no time";
    EXPECT_NEAR(double(state().slices[0].lo), 9559, 8);

    model.select({0, 5000});
    AudioEditorEdits::deleteSelection(model);
    setSetting(model, SliceSetting::preRollMs, 0);
    EXPECT_EQ(jobs.waiting(), 1);
    jobs.work();
    model.undo();
    jobs.runAll();
    EXPECT_NEAR(double(state().slices[0].lo), 10'000, 8) << "of the sound as it is";
}

TEST_F(SlicesTest, withoutKeptPeaksAreTheSameAndOnlyTheyMeasureThem) {
    FakeJobs jobs;
    AudioEditorModel bare(settings, clipboard, Peaks::none);
    const BackgroundEdits edits(bare, jobs);
    loadHits(5'000'000);
    bare.load(buffer(), {}, std::nullopt);
    for (AudioEditorModel *each : {&model, &bare}) {
        AudioEditorEdits::gain(*each, -3);
        jobs.runAll();
        each->select({0, 12'345});
        AudioEditorEdits::deleteSelection(*each);
        each->undo();
        each->redo();
        detect(*each, Mode::stripSilence);
    }
    EXPECT_EQ(bare.state().buffer, buffer());
    EXPECT_EQ(bare.state().slices, state().slices);
    EXPECT_EQ(state().slices.size(), 250u);
    EXPECT_EQ(bare.state().peaks, AudioEditorPeaks());
}

}  // namespace
}  // namespace kiv
