#include "Document/CommandActions.h"

#include <algorithm>

#include "Editor/AudioEditorModel/AudioEditorEdits.h"
#include "Editor/AudioEditorModel/AudioEditorLoops.h"
#include "Editor/AudioEditorModel/AudioEditorSlices.h"
#include "Editor/AudioEditorModel/AudioEditorSpectralPainting.h"

namespace kiv {

namespace {

using Document = const AudioDocument &;

const AudioEditorState &state(Document document) { return document.model().state(); }

bool isOpen(Document document) { return document.contents() != nullptr; }
bool hasSound(Document document) { return isOpen(document) && !state(document).buffer.isEmpty(); }

// Nothing else is going on that would have to end first: no reading, and no dialog waiting for its answer.
bool isFree(Document document) {
    return isOpen(document) && document.work() != AudioDocument::Work::reading && !state(document).dialog;
}
bool isFreeAndIdle(Document document) { return isFree(document) && !document.isBusy(); }
// A save waits for a long edit, but not for another save.
bool canSave(Document document) { return isFree(document) && document.work() != AudioDocument::Work::saving; }
bool hasRange(Document document) { return isFree(document) && document.model().activeRange(); }

// Edits wait for a long one under way.
bool isEditable(Document document) { return isFree(document) && !document.isEditing(); }
bool canEdit(Document document) { return isEditable(document) && document.model().activeRange(); }
bool canCut(Document document) { return isEditable(document) && document.model().canCut(); }

bool canPaste(Document document) {
    const auto &clip = document.model().clipboard().buffer;
    return isEditable(document) && clip && !clip->isEmpty();
}
bool hasSeveralFrames(Document document) { return canEdit(document) && document.model().activeRange()->count() > 1; }
bool hasChannels(Document document) { return isEditable(document) && state(document).buffer.channels() >= 2; }
bool isNotStereo(Document document) { return isEditable(document) && state(document).buffer.channels() != 2; }
bool hasSelection(Document document) { return isFree(document) && state(document).selection; }
bool canPlay(Document document) {
    return isOpen(document) && document.work() != AudioDocument::Work::reading && document.player().canPlay();
}

bool canZoomIn(Document document) {
    return hasSound(document) && state(document).view.zoom < maximumZoom(state(document).buffer.frames());
}
bool isZoomed(Document document) { return hasSound(document) && state(document).view.zoom > 1; }

bool canFindLoop(Document document) { return canEdit(document) && !state(document).loopAnalyzing; }
bool canApplyLoopCrossfade(Document document) {
    return isEditable(document) && state(document).editLoopEnabled &&
           AudioEditorLoops::loopCrossfadeFrames(state(document)) > 0;
}
bool canSaveSelection(Document document) { return isFreeAndIdle(document) && state(document).selection; }
bool canSaveSlices(Document document) {
    return isFreeAndIdle(document) && state(document).slicerEnabled && !state(document).slices.empty();
}

bool isSpectral(Document document) { return isFree(document) && state(document).spectralEnabled; }
// Whether making all of the mask that gain would change any of it.
bool canMakeMask(Document document, float gain) {
    return isSpectral(document) && isEditable(document) && state(document).spectral->mask.uniform() != gain;
}
bool canClearSpectrum(Document document) { return canMakeMask(document, AudioEditorSpectral::floorGain); }
bool canResetSpectrum(Document document) { return canMakeMask(document, 1); }

using Command = EditorCommand;
namespace Edits = AudioEditorEdits;
namespace Painting = AudioEditorSpectralPainting;

// clang-format off
constexpr CommandAction actions[] = {
    {Command::save, canSave, [](AudioDocument &d) { d.save(); }},
    {Command::saveAs, canSave, [](AudioDocument &d) { d.saveAs(); }},
    {Command::saveSelection, canSaveSelection, [](AudioDocument &d) { d.saveSelection(); }},
    {Command::saveSlices, canSaveSlices, [](AudioDocument &d) { AudioEditorSlices::saveSlices(d.model()); }},
    {Command::revert, isFreeAndIdle, [](AudioDocument &d) { d.revert(); }},

    {Command::undo, [](Document d) { return isEditable(d) && d.model().canUndo(); }, [](AudioDocument &d) { d.model().undo(); }},
    {Command::redo, [](Document d) { return isEditable(d) && d.model().canRedo(); }, [](AudioDocument &d) { d.model().redo(); }},
    {Command::cut, canCut, [](AudioDocument &d) { Edits::cut(d.model()); }},
    {Command::copy, hasSelection, [](AudioDocument &d) { Edits::copy(d.model()); }},
    {Command::paste, canPaste, [](AudioDocument &d) { Edits::paste(d.model()); }},
    {Command::delete_, canCut, [](AudioDocument &d) { Edits::deleteSelection(d.model()); }},
    {Command::selectAll, hasRange, [](AudioDocument &d) { d.model().selectAll(); }},
    {Command::selectNone, hasSelection, [](AudioDocument &d) { d.model().selectNone(); }},

    {Command::playStop, canPlay, [](AudioDocument &d) { d.player().togglePlay(); }},
    {Command::loop, isFree, [](AudioDocument &d) { d.model().setLoopEnabled(!state(d).loopEnabled); },
     [](Document d) { return state(d).loopEnabled; }},
    {Command::goToStart, isFree, [](AudioDocument &d) { d.player().goToStart(); }},
    {Command::goToEnd, isFree, [](AudioDocument &d) { d.player().goToEnd(); }},

    {Command::gain, canEdit, [](AudioDocument &d) { d.model().openDialog(Dialog::gain); }},
    {Command::normalize, canEdit, [](AudioDocument &d) { d.model().openDialog(Dialog::normalize); }},
    {Command::fadeIn, canEdit, [](AudioDocument &d) { Edits::fadeIn(d.model()); }},
    {Command::fadeOut, canEdit, [](AudioDocument &d) { Edits::fadeOut(d.model()); }},
    {Command::silence, canEdit, [](AudioDocument &d) { Edits::silence(d.model()); }},
    {Command::reverse, hasSeveralFrames, [](AudioDocument &d) { Edits::reverse(d.model()); }},
    {Command::trim, canCut, [](AudioDocument &d) { Edits::trim(d.model()); }},
    {Command::mono, hasChannels, [](AudioDocument &d) { d.model().openDialog(Dialog::mono); }},
    {Command::timeStretch, hasSeveralFrames, [](AudioDocument &d) { d.model().openDialog(Dialog::timeStretch); }},
    {Command::stereo, isNotStereo, [](AudioDocument &d) { Edits::stereo(d.model()); }},

    {Command::zoomIn, canZoomIn, [](AudioDocument &d) { d.model().zoomBy(zoomStep); }},
    {Command::zoomOut, isZoomed, [](AudioDocument &d) { d.model().zoomBy(1 / zoomStep); }},
    {Command::zoomFit, isZoomed, [](AudioDocument &d) { d.model().zoomToFit(); }},
    {Command::zoomSelection, [](Document d) { return hasSound(d) && state(d).selection; },
     [](AudioDocument &d) { d.model().zoomToSelection(); }},
    {Command::verticalZoomIn, [](Document d) { return isOpen(d) && state(d).verticalZoomDb < verticalZoomMaxDb; },
     [](AudioDocument &d) { d.model().verticalZoomIn(); }},
    {Command::verticalZoomOut, [](Document d) { return isOpen(d) && state(d).verticalZoomDb > verticalZoomMinDb; },
     [](AudioDocument &d) { d.model().verticalZoomOut(); }},
    {Command::verticalZoomReset, [](Document d) { return isOpen(d) && state(d).verticalZoomDb != 0; },
     [](AudioDocument &d) { d.model().setVerticalZoomDb(0); }},
    {Command::toggleTimeUnit, isFree, [](AudioDocument &d) { d.model().toggleTimeUnit(); }},
    {Command::followPlayhead, isFree, [](AudioDocument &d) { d.model().setFollowPlayhead(!state(d).followPlayhead); },
     [](Document d) { return state(d).followPlayhead; }},
    {Command::slicer, canEdit, [](AudioDocument &d) { AudioEditorSlices::setSlicerEnabled(d.model(), !state(d).slicerEnabled); },
     [](Document d) { return state(d).slicerEnabled; }},
    {Command::eq, hasRange, [](AudioDocument &d) { d.model().setEqEnabled(!state(d).eqEnabled); },
     [](Document d) { return state(d).eqEnabled; }},

    {Command::editLoop, canEdit, [](AudioDocument &d) { d.model().setEditLoopEnabled(!state(d).editLoopEnabled); },
     [](Document d) { return state(d).editLoopEnabled; }},
    {Command::findLoop, canFindLoop, [](AudioDocument &d) { AudioEditorLoops::findLoop(d.model()); }},
    {Command::playLoopJoint, [](Document d) { return canPlay(d) && state(d).loopPoints; },
     [](AudioDocument &d) { AudioEditorLoops::playLoopJoint(d.model()); }},
    {Command::applyLoopCrossfade, canApplyLoopCrossfade, [](AudioDocument &d) { AudioEditorLoops::applyLoopCrossfade(d.model()); }},

    {Command::spectral, canEdit, [](AudioDocument &d) { d.model().setSpectralEnabled(!state(d).spectralEnabled); },
     [](Document d) { return state(d).spectralEnabled; }},
    {Command::spectralSwapBrush, isSpectral, [](AudioDocument &d) { Painting::swapBrush(d.model()); }},
    {Command::spectralClear, canClearSpectrum, [](AudioDocument &d) { Painting::clear(d.model()); }},
    {Command::spectralReset, canResetSpectrum, [](AudioDocument &d) { Painting::reset(d.model()); }},
};
// clang-format on

}  // namespace

const CommandAction *action(EditorCommand command) {
    const auto row = std::ranges::find(actions, command, &CommandAction::command);
    return row == std::end(actions) ? nullptr : row;
}

bool isEnabled(EditorCommand command, const AudioDocument &document) {
    const CommandAction *row = action(command);
    return row && row->enabled(document);
}

void perform(EditorCommand command, AudioDocument &document) {
    if (isEnabled(command, document)) action(command)->perform(document);
}

}  // namespace kiv
