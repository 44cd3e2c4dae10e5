#include "Document/SlicesSaving.h"

#include <memory>
#include <utility>

#include "Document/FileNames.h"
#include "Document/SaveQuestions.h"
#include "Document/SlicesFolder.h"
#include "Editor/AudioEditorModel/AudioEditorSlices.h"
#include "Support/Failures.h"

namespace kiv {
namespace {

SlicesToSave slicesOf(const AudioEditorState &state, const DocumentFile &file, const std::string &name) {
    SlicesToSave saving;
    saving.name = name.empty() ? fileStem(file.path) : name;
    saving.contents = file.contents;
    saving.sound = state.buffer;
    saving.slices = state.slices;
    saving.fadeIn = state.sliceFadeInSamples;
    saving.fadeOut = state.sliceFadeOutSamples;
    return saving;
}

}  // namespace

std::string SlicesSaving::folder() const {
    const std::string &path = core_.file.path;
    return inFolder(parentFolder(path), slicesFolderName(path));
}

void SlicesSaving::save(const std::string &name, IfHeld ifHeld, Done done) {
    if (!done) done = [](bool) {};
    SaveQuestions::confirmEqAndEdits(core_, SaveQuestions::Saved::file,
                                     [=, this](bool go) { go ? saveAsTheyAre(name, ifHeld, done) : done(false); });
}

void SlicesSaving::saveAsTheyAre(const std::string &name, IfHeld ifHeld, Done done) {
    const AudioEditorState &state = core_.model.state();
    const DocumentFile &file = core_.file;
    if (core_.work.isBusy() || !file.contents || state.slices.empty()) return done(false);
    const std::string folderName = slicesFolderName(file.path);
    const auto saving = std::make_shared<SlicesToSave>(slicesOf(state, file, name));
    const std::string message =
        "Saving slices writes the folder " + quoted(folderName) + ". Click Allow to let Kiv Audio Editor write in this folder.";
    access_.withAccess(parentFolder(file.path), message,
                       core_.lifetime.guard([=, this](const std::optional<std::string> &folder) {
                           if (!folder || core_.work.isBusy()) return done(false);
                           saving->folder = inFolder(*folder, folderName);
                           look(saving, ifHeld, done);
                       }));
}

void SlicesSaving::look(std::shared_ptr<SlicesToSave> saving, IfHeld ifHeld, Done done) {
    const auto held = std::make_shared<std::size_t>(0);
    core_.work.start(
        DocumentWork::Kind::looking,
        [&files = core_.services.files, saving, held](Progress &) { *held = audioFilesIn(files, saving->folder).size(); },
        [=, this](std::exception_ptr failure) {
            core_.tell();
            failure ? written(*saving, failure, done) : confirm(saving, *held, ifHeld, done);
        });
}

void SlicesSaving::confirm(std::shared_ptr<SlicesToSave> saving, std::size_t held, IfHeld ifHeld, Done done) {
    if (held == 0 || ifHeld == IfHeld::replace) return write(saving, done);
    const std::string holds = "The folder already holds " + counted(held, "audio file") + ".";
    if (ifHeld == IfHeld::refuse) {
        core_.ui.showError("The slices could not be saved", holds);
        return done(false);
    }
    const DocumentUi::Question question{"Replace the slices in " + quoted(slicesFolderName(core_.file.path)),
                                        holds + " They will be moved to the Trash.",
                                        {"Replace", "Cancel"}};
    core_.ui.ask(question,
                 core_.lifetime.guard([=, this](std::size_t button) { button == 0 ? write(saving, done) : done(false); }));
}

void SlicesSaving::write(std::shared_ptr<SlicesToSave> saving, Done done) {
    if (core_.work.isBusy()) return done(false);
    core_.work.start(
        DocumentWork::Kind::saving,
        [&files = core_.services.files, decoders = core_.services.decoders, saving](Progress &progress) {
            writeSlices(files, decoders, *saving, progress);
        },
        [=, this](std::exception_ptr failure) {
            core_.tell();
            written(*saving, failure, done);
        });
}

void SlicesSaving::written(const SlicesToSave &saving, const std::exception_ptr &failure, const Done &done) {
    if (failure && !wasCancelled(failure)) core_.ui.showError("The slices could not be saved", errorText(failure));
    if (!failure)
        AudioEditorSlices::setSlicerNotice(
            core_.model, counted(saving.slices.size(), "slice") + " saved in " + quoted(slicesFolderName(core_.file.path)));
    done(!failure);
}

}  // namespace kiv
