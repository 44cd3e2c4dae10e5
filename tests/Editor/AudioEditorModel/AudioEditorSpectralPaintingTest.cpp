#include "Editor/AudioEditorModel/AudioEditorSpectralPainting.h"

#include <gmock/gmock.h>

#include <cmath>

#include "Editor/AudioEditorModel/EqModel.h"
#include "Editor/AudioEditorModel/ModelFixture.h"
#include "Editor/EqProcessor/EqProcessor.h"

namespace kiv {
namespace {

namespace Painting = AudioEditorSpectralPainting;
using AudioEditorSpectral::Brush;
using AudioEditorSpectral::floorGain;
using AudioEditorSpectral::Mask;

constexpr AudioEditorSpectral::Radius brush{4, 30};

struct SpectralPainting : ModelFixture {
    AudioEditorBuffer sound = noise(40000, 2, 7);
    std::vector<AudioEditorBuffer> previews;
    double now = 0;

    SpectralPainting() {
        load(sound);
        model.clock = [this] { return now; };
        model.onSpectralPreview = [this](const AudioEditorBuffer &preview) { previews.push_back(preview); };
        model.setSpectralEnabled(true);
    }
    void stroke(double from, double to, Brush with = Brush::attenuate) {
        Painting::beginStroke(model, with, {from, 128}, brush);
        Painting::strokeTo(model, {to, 128}, brush);
        Painting::endStroke(model);
    }
    bool isOriginal() const { return buffer().sharedPrefix(sound) == sound.frames(); }
    const Mask &mask() const { return *state().spectralMask(); }
};

TEST_F(SpectralPainting, AStrokeIsOneStepThatUndoTakesBackWithItsMask) {
    EXPECT_TRUE(isOriginal());
    stroke(30, 40);
    EXPECT_FALSE(isOriginal());
    EXPECT_GT(buffer().sharedPrefix(sound), 20 * 512);
    EXPECT_EQ(model.history().undoDepth(), 1u);
    EXPECT_EQ(state().spectralStroke, nullptr);
    EXPECT_EQ(state().spectral->generation, state().generation);
    const AudioEditorBuffer painted = buffer();
    const Mask paintedMask = mask();
    model.undo();
    EXPECT_TRUE(isOriginal());
    EXPECT_EQ(mask().uniform(), 1);
    model.redo();
    EXPECT_EQ(buffer(), painted);
    EXPECT_TRUE(mask() == paintedMask);
    stroke(30, 40, Brush::accentuate);
    EXPECT_TRUE(state().spectral->original == sound) << "every rendering starts from the original";
}

TEST_F(SpectralPainting, ClearAndResetAndBlocksAreSteps) {
    Painting::clear(model);
    EXPECT_EQ(mask().uniform(), floorGain);
    EXPECT_EQ(buffer().sample(1234, 1), float(double(sound.sample(1234, 1)) * double(floorGain)));
    Painting::clear(model);
    EXPECT_EQ(model.history().undoDepth(), 1u) << "clearing what is clear is no step";
    stroke(30, 40, Brush::accentuate);
    EXPECT_NEAR(mask().column(35)[128], 1, 0);
    Painting::reset(model);
    EXPECT_TRUE(isOriginal());
    Painting::multiply(model, {-4, 10}, {0, 300}, -6);
    EXPECT_EQ(model.history().undoDepth(), 4u);
    EXPECT_NEAR(mask().column(3)[255], 0.5012f, 1e-4f);
    Painting::multiply(model, {10, 10}, {0, 256}, -6);
    Painting::multiply(model, {0, 10}, {0, 256}, 0);
    EXPECT_EQ(model.history().undoDepth(), 4u);
    for (int i = 0; i < 4; ++i) model.undo();
    EXPECT_TRUE(isOriginal());
}

TEST_F(SpectralPainting, TheStateLastsUntilSomethingElseChangesTheSound) {
    stroke(30, 40);
    const auto id = state().spectral->id;
    model.setSpectralEnabled(false);
    Painting::clear(model);
    EXPECT_EQ(model.history().undoDepth(), 1u) << "outside the mode nothing is painted";
    model.setSpectralEnabled(true);
    EXPECT_EQ(state().spectral->id, id);
    model.setEditLoopEnabled(true);
    EXPECT_FALSE(state().spectralEnabled) << "one mode at a time";
    AudioEditorEdits::reverse(model);
    EXPECT_EQ(state().spectral, nullptr);
    model.setSpectralEnabled(true);
    EXPECT_TRUE(state().spectral->original == buffer()) << "made anew from what there is now";
    AudioEditorEdits::reverse(model);
    EXPECT_TRUE(state().spectral->original == buffer());
    model.undo();
    model.undo();
    EXPECT_EQ(state().spectral->id, id) << "with the stroke's sound its mask is back";
    EXPECT_FALSE(mask().uniform());
    model.undo();
    EXPECT_TRUE(isOriginal());
}

TEST_F(SpectralPainting, PreviewsWhilePlayingAreSpacedAndBecomeTheSound) {
    Painting::beginStroke(model, Brush::attenuate, {20, 100}, brush);
    EXPECT_TRUE(previews.empty()) << "nothing plays";
    model.setPlaying(true);
    now = 10;
    Painting::strokeTo(model, {25, 100}, brush);
    ASSERT_EQ(previews.size(), 1u);
    now = 10.03;
    Painting::strokeTo(model, {30, 100}, brush);
    EXPECT_EQ(previews.size(), 1u);
    now = 10.05;
    Painting::previewIfDue(model);
    Painting::previewIfDue(model);
    EXPECT_EQ(previews.size(), 2u);
    Painting::endStroke(model);
    EXPECT_EQ(buffer().sharedPrefix(previews.back()), sound.frames()) << "rendered once";
    model.undo();
    stroke(20, 30);
    Painting::beginStroke(model, Brush::attenuate, {20, 100}, brush);
    now = 11;
    Painting::strokeTo(model, {40, 100}, brush);
    const AudioEditorBuffer before = buffer();
    Painting::cancelStroke(model);
    EXPECT_EQ(previews.back().sharedPrefix(before), sound.frames()) << "what is heard is the sound again";
    EXPECT_EQ(model.history().undoDepth(), 1u);
}

TEST_F(SpectralPainting, AStrokeThatChangesNothingOrIsOvertakenMakesNoStep) {
    Painting::setIntensity(model, 0);
    stroke(30, 40);
    EXPECT_EQ(model.history().undoDepth(), 0u);
    EXPECT_EQ(state().spectralStroke, nullptr);
    Painting::setIntensity(model, 50);
    Painting::beginStroke(model, Brush::attenuate, {30, 100}, brush);
    AudioEditorEdits::reverse(model);
    Painting::endStroke(model);
    EXPECT_EQ(model.history().undoDepth(), 1u);
}

TEST_F(SpectralPainting, BrushSettingsAreClampedStoredAndReadBack) {
    Painting::setBrushSize(model, 1000);
    Painting::setIntensity(model, -3);
    Painting::swapBrush(model);
    const AudioEditorModel other(settings, clipboard);
    EXPECT_EQ(other.state().spectralBrushSize, 400);
    EXPECT_EQ(other.state().spectralIntensity, 0);
    EXPECT_EQ(other.state().spectralBrush, Brush::accentuate);
    EXPECT_EQ(notices([&] { Painting::setBrushSize(model, 400); }), 0u);
    EXPECT_EQ(notices([&] { Painting::swapBrush(model); }), bits({Change::spectral}));
    defaults.setText("audio_editor_spectral_brush", "Accentuate");
    EXPECT_EQ(AudioEditorModel(settings, clipboard).state().spectralBrush, Brush::attenuate);
}

TEST_F(SpectralPainting, ThePictureIsMadeOnceForEachOriginal) {
    Painting::requestPicture(model);
    const auto picture = state().spectralAnalysis;
    ASSERT_TRUE(picture);
    stroke(30, 40);
    Painting::requestPicture(model);
    EXPECT_EQ(state().spectralAnalysis, picture);
    AudioEditorEdits::reverse(model);
    Painting::requestPicture(model);
    EXPECT_NE(state().spectralAnalysis, picture);
}

struct EqTest : ModelFixture {
    EqSettings loud;
    EqTest() { loud.gainDb = 6; }
};

TEST_F(EqTest, IsWrittenIntoTheRangeAsOneStepAndClosed) {
    std::vector<bool> toldOn;
    model.onEqChanged = [&](bool on) { toldOn.push_back(on); };
    const AudioEditorBuffer before = buffer();
    model.setEqEnabled(true);
    model.setEqEnabled(true);
    applyEq(model, loud, FrameRange{100, 200});
    EXPECT_FALSE(state().eqEnabled);
    EXPECT_THAT(toldOn, testing::ElementsAre(true, false));
    EXPECT_EQ(buffer(), EqProcessor::applied({100, 200}, loud, before));
    EXPECT_EQ(model.history().undoDepth(), 1u);
    model.setEqEnabled(true);
    applyEq(model, {}, FrameRange{100, 200});
    applyEq(model, loud, std::nullopt);
    EXPECT_FALSE(state().eqEnabled);
    EXPECT_EQ(model.history().undoDepth(), 1u);
}

TEST_F(EqTest, ModelClampsAndTellsOfChangesOnly) {
    EqModel eq;
    std::vector<EqModel::Change> changes;
    const Subscription watching = eq.observers.add([&](EqModel::Change change) { changes.push_back(change); });
    loud.gainDb = 99;
    eq.setSettings(loud);
    EXPECT_EQ(eq.settings().gainDb, 12);
    eq.setSettings(loud);
    eq.stepDbRange();
    EXPECT_EQ(eq.dbRange(), 30);
    eq.resetAnalyzer();
    eq.reset();
    EXPECT_TRUE(eq.settings().isTransparent());
    EXPECT_EQ(changes, (std::vector{EqModel::Change::settings, EqModel::Change::dbRange, EqModel::Change::settings}));
}

}  // namespace
}  // namespace kiv
