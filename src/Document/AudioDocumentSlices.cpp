#include <memory>

#include "Document/AudioDocument.h"
#include "Document/AudioFileReading.h"
#include "Document/SlicesFolder.h"
#include "Editor/AudioEditorModel/AudioEditorSlices.h"

// Where the document saves its slices.
namespace kiv {

namespace {

std::string quoted(const std::string &name) { return "“" + name + "”"; }

std::string counted(std::size_t count, const std::string &what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

std::string folderOf(const std::string &path) {
    const std::size_t slash = path.find_last_of('/');
    return slash == path.npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
}

std::string inFolder(const std::string &folder, const std::string &name) { return folder == "." ? name : folder + "/" + name; }

}  // namespace

std::string AudioDocument::slicesFolder() const { return inFolder(folderOf(path_), slicesFolderName(path_)); }

void AudioDocument::saveSlices(const std::string &name, IfHeld ifHeld, std::function<void(bool)> done) {
    if (!done) done = [](bool) {};
    if (work_ != Work::none || waitingSave_) return done(false);
    confirmEqBeforeSaving(Saved::file, [=, this](bool confirmed) {
        const auto save = [=, this](bool go) { go ? saveSlicesAsTheyAre(name, ifHeld, done) : done(false); };
        if (confirmed && isEditing())
            waitingSave_ = save;
        else
            save(confirmed);
    });
}

void AudioDocument::saveSlicesAsTheyAre(const std::string &name, IfHeld ifHeld, std::function<void(bool)> done) {
    const AudioEditorState &state = model_.state();
    if (isBusy() || !contents_ || state.slices.empty()) return done(false);
    const std::string folderName = slicesFolderName(path_);
    const auto saving = std::make_shared<SlicesToSave>();
    saving->name = name.empty() ? fileStem(path_) : name;
    saving->contents = *contents_;
    saving->contents.buffer = state.buffer;
    saving->slices = state.slices;
    saving->fadeIn = state.sliceFadeInSamples;
    saving->fadeOut = state.sliceFadeOutSamples;
    const std::string message =
        "Saving slices writes the folder " + quoted(folderName) + ". Click Allow to let Kiv Audio Editor write in this folder.";
    access_.withAccess(folderOf(path_), message, whileAlive([=, this](const std::optional<std::string> &folder) {
                           if (!folder || isBusy()) return done(false);
                           saving->folder = inFolder(*folder, folderName);
                           lookForSlices(saving, ifHeld, done);
                       }));
}

void AudioDocument::lookForSlices(std::shared_ptr<SlicesToSave> saving, IfHeld ifHeld, std::function<void(bool)> done) {
    const auto held = std::make_shared<std::size_t>(0);
    startWork(
        Work::saving,
        [&files = services_.files, saving, held](Progress &) { *held = audioFilesIn(files, saving->folder).size(); },
        [=, this](std::exception_ptr failure) {
            observers.notify(*this);
            if (failure || *held == 0 || ifHeld == IfHeld::replace)
                return failure ? slicesSaved(*saving, failure, done) : writeSlices(saving, done);
            const std::string holds = "The folder already holds " + counted(*held, "audio file") + ".";
            if (ifHeld == IfHeld::refuse) {
                ui_.showError("The slices could not be saved", holds);
                return done(false);
            }
            const DocumentUi::Question question{"Replace the slices in " + quoted(slicesFolderName(path_)),
                                                holds + " They will be moved to the Trash.",
                                                {"Replace", "Cancel"}};
            ui_.ask(question,
                    whileAlive([=, this](std::size_t button) { button == 0 ? writeSlices(saving, done) : done(false); }));
        });
}

void AudioDocument::writeSlices(std::shared_ptr<SlicesToSave> saving, std::function<void(bool)> done) {
    if (isBusy()) return done(false);
    startWork(
        Work::saving,
        [&files = services_.files, decoders = services_.decoders, saving](Progress &progress) {
            kiv::writeSlices(files, decoders, *saving, progress);
        },
        [=, this](std::exception_ptr written) {
            observers.notify(*this);
            slicesSaved(*saving, written, done);
        });
}

void AudioDocument::slicesSaved(const SlicesToSave &saving, std::exception_ptr failure, const std::function<void(bool)> &done) {
    if (failure && !wasCancelled(failure)) ui_.showError("The slices could not be saved", errorText(failure));
    if (!failure)
        AudioEditorSlices::setSlicerNotice(
            model_, counted(saving.slices.size(), "slice") + " saved in " + quoted(slicesFolderName(path_)));
    done(!failure);
}

}  // namespace kiv
