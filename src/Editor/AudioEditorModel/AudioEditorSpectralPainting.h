#pragma once

#include "Editor/AudioEditorModel/AudioEditorModel.h"

// What is done in Spectral mode. Each change of the mask is one undoable step, rendered at once or, where it is long, away from
// the main thread. Outside the mode, and while such a rendering is under way, painting does nothing.
namespace kiv::AudioEditorSpectralPainting {

using AudioEditorSpectral::Brush;
using AudioEditorSpectral::ColumnRange;
using AudioEditorSpectral::Point;
using AudioEditorSpectral::Radius;

// Settings: clamped, and stored.
void setBrush(AudioEditorModel &model, Brush brush);
void swapBrush(AudioEditorModel &model);
void setBrushSize(AudioEditorModel &model, int points);
void setIntensity(AudioEditorModel &model, int percent);
void setBrushPoint(AudioEditorModel &model, std::optional<Point> point);

// Has the picture made where there is none of the present sound yet, away from the main thread. For whoever shows it. If that
// is cancelled the mode is left.
void requestPicture(AudioEditorModel &model);

// A drag. Ending it makes the step, unless nothing was changed; cancelling leaves no trace. Any change of the sound by
// something else ends it without one.
void beginStroke(AudioEditorModel &model, Brush brush, Point point, Radius radius);
void strokeTo(AudioEditorModel &model, Point point, Radius radius);
void endStroke(AudioEditorModel &model);
void cancelStroke(AudioEditorModel &model);
// Hands a preview to the model's owner while something plays: of as much as was painted since the last one, where the time for
// it has come. To be called now and then while playing, for the end of a drag that rests.
void previewIfDue(AudioEditorModel &model);

// Every frequency out; back to the sound as the mode found it; a block of columns and bands by a gain. What changes no value
// makes no step.
void clear(AudioEditorModel &model);
void reset(AudioEditorModel &model);
void multiply(AudioEditorModel &model, ColumnRange columns, ColumnRange bands, double gainDb);

}  // namespace kiv::AudioEditorSpectralPainting
