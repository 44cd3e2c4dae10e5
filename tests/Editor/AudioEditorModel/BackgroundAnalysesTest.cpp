#include "Editor/AudioEditorModel/BackgroundAnalyses.h"

#include "Editor/AudioEditorModel/AudioEditorLoops.h"
#include "Editor/AudioEditorModel/AudioEditorSlices.h"
#include "Editor/AudioEditorModel/AudioEditorSpectralPainting.h"
#include "Editor/AudioEditorModel/ModelFixture.h"
#include "Platform/Fake/FakeJobs.h"

namespace kiv {
namespace {

using BackgroundAnalysesTest = ModelFixture;

// Each search with what has been done before it.
const struct {
    const char *name;
    void (*enter)(AudioEditorModel &);
    void (*search)(AudioEditorModel &);
} searches[] = {
    {"loops, after a search that found none", AudioEditorLoops::findLoop, AudioEditorLoops::findLoop},
    {"slices by other settings",
     [](AudioEditorModel &model) { AudioEditorSlices::detect(model, AudioEditorSlicer::Mode::grid); },
     [](AudioEditorModel &model) {
         AudioEditorSlices::detect(model, AudioEditorSlicer::Mode::transients);
         AudioEditorSlices::setSetting(model, SliceSetting::sensitivity, 90);
     }},
    {"the first slices", [](AudioEditorModel &model) { model.setSlicerEnabled(true); },
     [](AudioEditorModel &model) { AudioEditorSlices::setSlicerEnabled(model, true); }},
    {"a picture of the spectrum", [](AudioEditorModel &) {},
     [](AudioEditorModel &model) {
         model.setSpectralEnabled(true);
         AudioEditorSpectralPainting::requestPicture(model);
     }},
};

TEST_F(BackgroundAnalysesTest, CancelledBeforeOrAfterItsWorkASearchLeavesNoTraceAndMayBeginAnew) {
    for (const auto &row : searches)
        for (const bool afterItsWork : {false, true}) {
            SCOPED_TRACE(row.name);
            load(AudioEditorBuffer(std::vector<float>(3'000'000, 0.0f), 1, 44'100));
            FakeJobs jobs;
            BackgroundAnalyses analyses(model, jobs);
            row.enter(model);
            jobs.runAll();
            AudioEditorState before = state();
            row.search(model);
            EXPECT_TRUE(analyses.isRunning());
            if (afterItsWork) jobs.work();
            const bool isThrough = afterItsWork && &row != searches;  // silence is given up at once
            EXPECT_EQ(analyses.fraction() > 0.9, isThrough);
            analyses.cancel();
            jobs.runAll();
            before.spectral = state().spectral;  // which is kept for coming back
            before.spectralRevision = state().spectralRevision;
            EXPECT_TRUE(AudioEditorLoopState(state()) == before);
            EXPECT_TRUE(AudioEditorSlicerState(state()) == before);
            EXPECT_TRUE(AudioEditorSpectralState(state()) == before);
            EXPECT_FALSE(analyses.isRunning());
            row.search(model);
            jobs.runAll();
            EXPECT_FALSE(analyses.isRunning() || state().loopAnalyzing || state().sliceAnalyzing || state().spectralAnalyzing);
            EXPECT_TRUE(state().loopFindNotice || state().slicerEnabled || state().spectralAnalysis);
            model.setSpectralEnabled(false);
            model.setSlicerEnabled(false);
        }
}

}  // namespace
}  // namespace kiv
