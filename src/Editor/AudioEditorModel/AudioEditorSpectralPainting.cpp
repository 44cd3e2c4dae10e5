#include "Editor/AudioEditorModel/AudioEditorSpectralPainting.h"

#include <algorithm>
#include <functional>

#include "Editor/AudioEditorSpectral/Render.h"

namespace kiv::AudioEditorSpectralPainting {
namespace {

using AudioEditorSpectral::Mask;
using AudioEditorSpectral::State;
using AudioEditorSpectral::Stroke;

// A transform of one channel, there and back, counted in samples multiplied by a gain.
constexpr double transformCost = 2000;
// Transforms up to which a preview may hold up a drag: a few milliseconds.
constexpr std::int64_t previewTransforms = 1500;

template <class Change>
void change(AudioEditorModel &model, Change make) {
    AudioEditorSpectralState next = model.state();
    make(next);
    model.setSpectralState(std::move(next));
}

double renderingCost(const State &state, const Mask &mask, ColumnRange columns) {
    if (mask.uniform()) return double(state.original.frames() * state.original.channels());
    const double size = state.geometry.fftSize / 2048.0;
    return double(AudioEditorSpectral::renderCost(state, columns)) * transformCost * size;
}

using Rendering = std::function<AudioEditorBuffer(const State &next, Progress &progress)>;

// Makes another mask and what it makes of the original the sound.
void commitMask(AudioEditorModel &model, Mask mask, double cost, Rendering rendering) {
    const auto next = std::make_shared<State>(*model.state().spectral);
    next->mask = std::move(mask);
    const auto carryOut = [next, rendering = std::move(rendering)](Progress &progress) {
        EditOutcome outcome{.buffer = rendering(*next, progress)};
        outcome.spectral = next;
        return std::optional(std::move(outcome));
    };
    model.apply({cost, {1}, carryOut});
}

// The same with the columns rendered anew.
void commitMask(AudioEditorModel &model, Mask mask, ColumnRange columns) {
    mask.updateUniform();
    const double cost = renderingCost(*model.state().spectral, mask, columns);
    commitMask(model, std::move(mask), cost, [columns, buffer = model.state().buffer](const State &next, Progress &progress) {
        return render(next, next.mask, columns, buffer, &progress);
    });
}

void commitUniform(AudioEditorModel &model, float gain) {
    const AudioEditorState &state = model.state();
    if (!state.spectralEnabled || state.spectralStroke || state.spectral->mask.uniform() == gain) return;
    const std::int64_t columns = state.spectral->geometry.columns;
    commitMask(model, Mask(columns, gain), {0, columns});
}

void dab(AudioEditorModel &model, Point point, Radius radius) {
    const auto stroke = model.state().spectralStroke;
    stroke->to(point, radius);
    change(model, [&](AudioEditorSpectralState &s) {
        s.spectralPreviewScheduled = !stroke->pending().isEmpty();
        s.spectralRevision += s.spectralPreviewScheduled;
    });
    previewIfDue(model);
}

void drop(AudioEditorSpectralState &s) {
    s.spectralStroke = nullptr;
    s.spectralPreview.reset();
    s.spectralPreviewScheduled = false;
    ++s.spectralRevision;
}

}  // namespace

void setBrush(AudioEditorModel &model, Brush brush) {
    change(model, [&](AudioEditorSpectralState &s) { s.spectralBrush = brush; });
}

void swapBrush(AudioEditorModel &model) { setBrush(model, otherBrush(model.state().spectralBrush)); }

void setBrushSize(AudioEditorModel &model, int points) {
    const NumberSetting &row = Setting::spectralBrushSize;
    change(model, [&](AudioEditorSpectralState &s) { s.spectralBrushSize = std::clamp(points, int(row.lo), int(row.hi)); });
}

void setIntensity(AudioEditorModel &model, int percent) {
    change(model, [&](AudioEditorSpectralState &s) { s.spectralIntensity = std::clamp(percent, 0, 100); });
}

void setBrushPoint(AudioEditorModel &model, std::optional<Point> point) {
    change(model, [&](AudioEditorSpectralState &s) { s.spectralBrushPoint = point; });
}

void requestPicture(AudioEditorModel &model) {
    const AudioEditorState &state = model.state();
    const bool isThere = state.spectral && state.spectralAnalysis && state.spectralAnalysis->stateID == state.spectral->id;
    if (!state.spectralEnabled || isThere || state.spectralAnalyzing) return;
    change(model, [](AudioEditorSpectralState &s) { s.spectralAnalyzing = true; });
    const auto made = std::make_shared<AudioEditorSpectral::Analysis>();
    // The sound may be another by then: whoever shows it asks again. Without a picture there is nothing to paint on.
    model.analyse({[made, of = state.spectral](Progress &progress) { *made = analyze(*of, &progress); },
                   [&model, made](std::exception_ptr failure) {
                       const AudioEditorModel::Batch batch(model);
                       change(model, [&](AudioEditorSpectralState &s) {
                           s.spectralAnalyzing = false;
                           if (!failure) s.spectralAnalysis = made;
                       });
                       if (failure) model.setSpectralEnabled(false);
                   }});
}

void beginStroke(AudioEditorModel &model, Brush brush, Point point, Radius radius) {
    const AudioEditorState &state = model.state();
    if (!state.spectralEnabled || state.spectralStroke) return;
    const auto stroke = std::make_shared<Stroke>(state.spectral->mask, brush, passFactor(brush, state.spectralIntensity));
    change(model, [&](AudioEditorSpectralState &s) { s.spectralStroke = stroke; });
    dab(model, point, radius);
}

void strokeTo(AudioEditorModel &model, Point point, Radius radius) {
    if (model.state().spectralStroke) dab(model, point, radius);
}

// The stroke stays, to be shown, until it has become part of the sound.
void endStroke(AudioEditorModel &model) {
    const AudioEditorState &state = model.state();
    const auto stroke = state.spectralStroke;
    if (!stroke) return;
    if (stroke->dirty().isEmpty()) return cancelStroke(model);
    const bool isRendered = state.spectralPreview && stroke->pending().isEmpty();
    if (!isRendered) return commitMask(model, stroke->mask(), stroke->dirty());
    commitMask(model, stroke->mask(), 0, [preview = *state.spectralPreview](const State &, Progress &) { return preview; });
}

void cancelStroke(AudioEditorModel &model) {
    if (!model.state().spectralStroke) return;
    const bool wasHeard = model.state().spectralPreview.has_value();
    change(model, drop);
    if (wasHeard && model.onSpectralPreview) model.onSpectralPreview(model.state().buffer);
}

void previewIfDue(AudioEditorModel &model) {
    const AudioEditorState &state = model.state();
    const auto stroke = state.spectralStroke;
    if (!stroke || !state.spectralPreviewScheduled || !state.playing || !model.onSpectralPreview) return;
    const double now = model.clock();
    const bool isDue = now - state.spectralPreviewTime >= AudioEditorSpectralState::spectralPreviewInterval;
    if (!isDue || renderCost(*state.spectral, stroke->pending()) > previewTransforms) return;
    const AudioEditorBuffer &before = state.spectralPreview ? *state.spectralPreview : state.buffer;
    AudioEditorBuffer preview = render(*state.spectral, stroke->mask(), stroke->takePending(), before);
    change(model, [&](AudioEditorSpectralState &s) {
        s.spectralPreview = std::move(preview);
        s.spectralPreviewTime = now;
        s.spectralPreviewScheduled = false;
    });
    model.onSpectralPreview(*model.state().spectralPreview);
}

void clear(AudioEditorModel &model) { commitUniform(model, AudioEditorSpectral::floorGain); }

void reset(AudioEditorModel &model) { commitUniform(model, 1); }

void multiply(AudioEditorModel &model, ColumnRange columns, ColumnRange bands, double gainDb) {
    const AudioEditorState &state = model.state();
    if (!state.spectralEnabled || state.spectralStroke) return;
    columns = state.spectral->geometry.clamped(columns);
    Mask mask = AudioEditorSpectral::multiplied(state.spectral->mask, columns, bands, gainDb);
    if (!(mask == state.spectral->mask)) commitMask(model, std::move(mask), columns);
}

}  // namespace kiv::AudioEditorSpectralPainting
