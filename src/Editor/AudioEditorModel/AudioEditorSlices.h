#pragma once

#include "Editor/AudioEditorModel/AudioEditorModel.h"
#include "Editor/AudioEditorModel/SliceSettings.h"

// What is done in the slicer. Slices follow edits as positions do; only a change of the mode or of a setting detects them anew,
// which is no undoable step.
namespace kiv::AudioEditorSlices {

// Enters the slicer, or leaves it. Entering it with no slices detects them.
void setSlicerEnabled(AudioEditorModel &model, bool enabled);
// Enters the slicer and detects by that mode.
void detect(AudioEditorModel &model, AudioEditorSlicer::Mode mode);
// Takes the nearest value of its range; where only some are offered, one of them or the default. The fades leave the slices as
// they are.
void setSetting(AudioEditorModel &model, SliceSetting setting, double value);
void setSlicesName(AudioEditorModel &model, std::string name);
void setSlicerNotice(AudioEditorModel &model, std::optional<std::string> notice);

// For drags: moves one edge, kept off its neighbours, without making a step. The end of the drag makes one of all that it
// moved, or puts the slices back as they were at the first move.
void moveSliceEdge(AudioEditorModel &model, SliceEdge edge, std::int64_t frame);
void endSliceMove(AudioEditorModel &model);
void cancelSliceMove(AudioEditorModel &model);

// The slice at a frame.
std::optional<std::size_t> sliceAt(const AudioEditorState &state, std::int64_t frame);
// Asks the owner to save the slices.
void saveSlices(AudioEditorModel &model);

}  // namespace kiv::AudioEditorSlices
