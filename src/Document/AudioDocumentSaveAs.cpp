#include <memory>

#include "Document/AudioDocument.h"
#include "Document/AudioFileReading.h"
#include "Document/AudioFileWriting.h"
#include "Document/SaveFormats.h"
#include "Document/SlicesFolder.h"
#include "Editor/AudioEditorCore/AudioEditorOps.h"

// Where the document saves elsewhere, in other formats, and in parts.
namespace kiv {

namespace {

std::string quoted(const std::string &name) { return "“" + name + "”"; }

std::string nameOf(const std::string &path) { return path.substr(path.find_last_of('/') + 1); }

// The folder with the slash behind it; nothing for a name alone.
std::string folderPart(const std::string &path) { return path.substr(0, path.size() - nameOf(path).size()); }

// The file's own name where its format stays, else with another extension.
std::string proposedPath(const std::string &path, const AudioFileContents &contents, const AudioSaveFormat &format) {
    if (format.matches(contents.format)) return path;
    return folderPart(path) + fileStem(path) + "." + std::string(saveContainerRow(format.container).extensions.front());
}

std::string selectionPath(const std::string &path, const std::string &end) {
    return folderPart(path) + fileStem(path) + "-selection." + end;
}

}  // namespace

// An edit under way, perhaps that of the equalizer, comes first.
void AudioDocument::confirmEqAndEdits(Saved what, std::function<void(bool go)> then) {
    if (work_ != Work::none || waitingSave_) return then(false);
    confirmEqBeforeSaving(what, [this, then = std::move(then)](bool go) {
        if (go && isEditing())
            waitingSave_ = then;
        else
            then(go);
    });
}

void AudioDocument::saveAs(std::function<void(bool)> done) {
    if (!done) done = [](bool) {};
    if (!contents_) return done(false);
    confirmEqAndEdits(Saved::file, [this, done = std::move(done)](bool go) { go ? chooseFormat("", done) : done(false); });
}

void AudioDocument::saveAs(const std::string &path, const AudioSaveFormat &format, std::function<void(bool)> done) {
    confirmAndSave({path, path == path_ ? IfChanged::ask : IfChanged::overwrite, std::move(done), format});
}

void AudioDocument::chooseFormat(const std::string &message, std::function<void(bool)> done) {
    const AudioSaveFormat format = AudioFileCodec::nearestSaveFormat(*contents_);
    chooseTarget({"Save As", message, proposedPath(path_, *contents_, format), format},
                 [this, done = std::move(done)](const std::optional<DocumentUi::SaveTarget> &target) {
                     if (!target) return done(false);
                     const auto ifChanged = target->path == path_ ? IfChanged::ask : IfChanged::overwrite;
                     requestSave({target->path, ifChanged, done, target->format});
                 });
}

// What the panel comes back with is looked at before it is believed.
void AudioDocument::chooseTarget(const DocumentUi::SavePanel &panel, OnTarget chosen) {
    ui_.chooseFile(
        panel, whileAlive([this, panel, chosen = std::move(chosen)](const auto &target) {
            if (!target) return chosen(std::nullopt);
            const auto there = std::make_shared<std::optional<FileSystem::Identity>>();
            services_.jobs.run(
                std::make_shared<Progress>(),
                [&files = services_.files, path = target->path, there](Progress &) { *there = files.identity(path); },
                whileAlive([this, panel, target = *target, there, chosen](std::exception_ptr) {
                    considerTarget(panel, target, *there, chosen);
                }));
        }));
}

bool AudioDocument::isOwnFile(const std::string &path, const std::optional<FileSystem::Identity> &there) const {
    return path == path_ || (there && identity_ && there->device == identity_->device && there->inode == identity_->inode);
}

// Saving over the own file in its own format is an ordinary save, and nothing to ask about.
void AudioDocument::considerTarget(const DocumentUi::SavePanel &panel, const DocumentUi::SaveTarget &target,
                                   std::optional<FileSystem::Identity> there, OnTarget chosen) {
    const bool isSave = target.format && target.format->matches(contents_->format) && isOwnFile(target.path, there);
    if (!there || isSave) return chosen(DocumentUi::SaveTarget{isSave ? path_ : target.path, target.format});
    const DocumentUi::Question question{
        quoted(nameOf(target.path)) + " already exists", "Replacing it overwrites what it holds now.", {"Cancel", "Replace"}};
    ui_.ask(question, whileAlive([this, panel, target, chosen = std::move(chosen)](std::size_t button) {
                enum : std::size_t { cancel, replace };
                if (button == replace) return chosen(target);
                chooseTarget({panel.title, panel.message, target.path, target.format}, chosen);
            }));
}

void AudioDocument::saveSelection(std::function<void(bool)> done) {
    if (!done) done = [](bool) {};
    if (!contents_ || !model_.state().selection) return done(false);
    const bool isWritable = AudioFileCodec::isPartWritable(model_.state().buffer, *contents_);
    const std::string message =
        isWritable ? "" : contents_->format.typeName + " files can't be written: the selection is saved as WAV.";
    const DocumentUi::SavePanel panel{
        "Save Selection As",
        message,
        selectionPath(path_, isWritable ? AudioFileCodec::partExtension(contents_->format) : "wav"),
        {}};
    confirmEqAndEdits(Saved::selection, [this, panel, done = std::move(done)](bool go) {
        if (!go) return done(false);
        chooseTarget(panel, [this, done](const std::optional<DocumentUi::SaveTarget> &target) {
            target ? writeSelection(target->path, done) : done(false);
        });
    });
}

void AudioDocument::saveSelection(const std::string &path, std::function<void(bool)> done) {
    confirmEqAndEdits(Saved::selection, [=, this](bool go) { go ? writeSelection(path, done) : done(false); });
}

void AudioDocument::writeSelection(const std::string &path, std::function<void(bool)> done) {
    const AudioEditorState &state = model_.state();
    if (isBusy() || !contents_ || !state.selection) return done(false);
    startWork(
        Work::saving,
        [&files = services_.files, decoders = services_.decoders, path, contents = *contents_,
         part = AudioEditorOps::slice(state.buffer, *state.selection)](Progress &progress) {
            writeAudioFile(files, decoders, path, AudioFileCodec::partContents(part, contents), progress);
        },
        [this, path, done = std::move(done)](std::exception_ptr failure) {
            observers.notify(*this);
            const std::string name = quoted(nameOf(path));
            if (!failure)
                ui_.showNotice(NoticeKind::done, "The selection is saved as " + name);
            else if (!wasCancelled(failure))
                ui_.showError(name + " could not be saved", errorText(failure));
            done(!failure);
        });
}

}  // namespace kiv
