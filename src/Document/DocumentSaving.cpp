#include "Document/DocumentSaving.h"

#include <memory>
#include <stdexcept>
#include <utility>

#include "Audio/Files/AudioFileConversion.h"
#include "Audio/Files/AudioFileError.h"
#include "Document/AudioFileWriting.h"
#include "Document/DiskWatch.h"
#include "Document/FileNames.h"
#include "Document/FileSave.h"
#include "Document/SaveFormats.h"
#include "Document/SaveQuestions.h"
#include "Editor/AudioEditorCore/AudioEditorOps.h"
#include "Editor/AudioEditorModel/AudioEditorLoops.h"
#include "Platform/FileCopy.h"
#include "Support/Failures.h"

namespace kiv::DocumentSaving {
namespace {

using SaveQuestions::Saved;
using Target = std::optional<DocumentUi::SaveTarget>;

enum class IfChanged { ask, overwrite };

// What is to be saved where.
struct Order {
    std::string path;
    IfChanged ifChanged = IfChanged::ask;
    Done done;
    std::optional<AudioSaveFormat> format = {};  // none: the file's own
    IfGone ifGone = IfGone::ask;
};

// What another program has done to other files than the document's own is not asked about.
IfChanged ifChangedAt(const DocumentCore &core, const std::string &path) {
    return path == core.file.path ? IfChanged::ask : IfChanged::overwrite;
}

Done orNobody(Done done) {
    return done ? std::move(done) : [](bool) {};
}

// A file may hold thousands.
std::string listed(std::vector<std::string> things) {
    constexpr std::size_t most = 10;
    if (things.size() > most) {
        things[most - 1] = std::to_string(things.size() - most + 1) + " other things";
        things.resize(most);
    }
    std::string text;
    for (std::size_t i = 0; i < things.size(); ++i) text += (i == 0 ? "" : i + 1 == things.size() ? " and " : ", ") + things[i];
    return text;
}

std::shared_ptr<FileSave> savingOf(DocumentCore &core, const Order &order) {
    const auto saving = std::make_shared<FileSave>();
    const AudioEditorState &state = core.model.state();
    saving->path = order.path;
    saving->format = order.format;
    saving->mayBeGone = order.ifGone == IfGone::write;
    if (!core.file.contents) return saving;
    saving->version = state.contentVersion;
    saving->file = core.file.contents;
    saving->sound = state.buffer;
    saving->note = core.journal.noteFor(state.buffer);
    saving->markers = state.markerFrames;
    saving->loop = state.loopPoints;
    return saving;
}

void tellWhatIsLeft(DocumentCore &core, const FileSave &saving) {
    const AudioFileContents &contents = *core.file.contents;
    const bool lacksLoop = saving.loop && !contents.loop;
    std::vector<std::string> left = saving.left;
    if (left.empty() && !lacksLoop) return;
    if (left.empty()) return core.ui.showNotice(NoticeKind::warning, "This file cannot store a loop: it was not saved");
    if (lacksLoop) left.push_back("the loop");
    core.ui.showNotice(NoticeKind::warning, contents.format.typeName + " has no place for " + listed(left) + ": not saved");
}

void request(DocumentCore &core, const Order &order);

void askOverChanges(DocumentCore &core, Order order, const std::exception_ptr &failure) {
    const bool isGone = isA<GoneFromDisk>(failure);
    const DocumentUi::Question question{
        core.quotedName() + (isGone ? " is no longer where it was" : " has been changed by another program"),
        isGone ? "It has been moved or deleted. Saving writes it anew in the old place."
               : "Saving replaces what the other program has written.",
        {"Cancel", "Save Anyway"}};
    order.ifChanged = IfChanged::overwrite;
    core.ui.ask(question, core.lifetime.guard([&core, order](std::size_t button) {
        enum : std::size_t { cancel, saveAnyway };
        if (button != saveAnyway || !SaveQuestions::stillTakesSave(core, order.path)) return order.done(false);
        request(core, order);
    }));
}

void end(DocumentCore &core, FileSave &saving, std::exception_ptr failure, const Order &order) {
    core.savingVersion.reset();
    if (!failure) {
        const auto written = std::make_shared<const AudioFileContents>(std::move(saving.contents));
        core.setFile({saving.path, written, saving.written, saving.version}, saving.sound);
        AudioEditorLoops::setCanStoreLoop(core.model, core.canStoreLoop());
    }
    core.followByJournal();
    const auto life = core.lifetime.watch();
    core.tell();
    if (life.expired()) return;
    if (failure && isA<ChangedOnDisk>(failure)) return askOverChanges(core, order, failure);
    if (failure && !wasCancelled(failure))
        core.ui.showError(quoted(nameOf(saving.path)) + " could not be saved", errorText(failure));
    if (!failure) tellWhatIsLeft(core, saving);
    order.done(!failure);
}

void run(DocumentCore &core, const Order &order, const std::shared_ptr<FileSave> &saving) {
    if (core.work.isBusy()) return order.done(false);
    if (!core.file.contents)
        return end(core, *saving, std::make_exception_ptr(AudioFileError::unreadable("nothing to save")), order);
    if (order.ifChanged == IfChanged::ask) {
        saving->expected = core.file.identity;
        saving->onDisk = DiskWatch::onDisk(core);
    }
    core.savingVersion = saving->version;
    core.followByJournal();
    core.work.start(
        DocumentWork::Kind::saving,
        [&files = core.services.files, decoders = core.services.decoders, saving](Progress &progress) {
            saving->run(files, decoders, progress);
        },
        [&core, saving, order](std::exception_ptr failure) { end(core, *saving, failure, order); });
}

// What was brought back is safe in a journal of its own first: killed meanwhile, the old one would take this save for another
// program's. What is saved is what there is now.
void runWhenTakenOver(DocumentCore &core, const Order &order) {
    core.work.keep(
        [&core, order, saving = savingOf(core, order)](bool go) { go ? run(core, order, saving) : order.done(false); });
    core.flushJournal(core.lifetime.guard([&core] { core.work.goOn(); }));
}

void request(DocumentCore &core, const Order &order) {
    if (!core.work.takesSave()) return order.done(false);
    if (core.work.isEditing())
        return core.work.afterEdit([&core, order](bool go) { go ? request(core, order) : order.done(false); });
    core.journal.isTakingOver() ? runWhenTakenOver(core, order) : run(core, order, savingOf(core, order));
}

void confirmAndRequest(DocumentCore &core, Order order) {
    order.done = orNobody(std::move(order.done));
    SaveQuestions::confirmEqAndEdits(core, Saved::file,
                                     [&core, order](bool go) { go ? request(core, order) : order.done(false); });
}

// The file's own name where its format stays, else with another extension.
std::string proposedPath(const DocumentFile &file, const AudioSaveFormat &format) {
    if (format.matches(file.contents->format)) return file.path;
    const auto &extensions = saveContainerRow(format.container).extensions;
    return folderPart(file.path) + fileStem(file.path) + "." + std::string(extensions.front());
}

void chooseFormat(DocumentCore &core, const std::string &message, Done done) {
    const AudioSaveFormat format = AudioFileCodec::nearestSaveFormat(*core.file.contents);
    SaveQuestions::chooseTarget(core, {"Save As", message, proposedPath(core.file, format), format},
                                [&core, done = std::move(done)](const Target &target) {
                                    if (!target) return done(false);
                                    request(core, {target->path, ifChangedAt(core, target->path), done, target->format});
                                });
}

// A save cannot go over the file; empty when it can.
std::string whyElsewhere(const DocumentCore &core) {
    const AudioFileContents &contents = *core.file.contents;
    const std::string files = contents.format.typeName + " files can't ";
    if (!contents.canSaveInPlace()) return files + "be written: choose a format.";
    const bool fits = !contents.wrapping || contents.wrapping->fits(core.model.state().buffer);
    return fits ? "" : files + "follow these edits: choose a format.";
}

DocumentUi::SavePanel selectionPanel(const DocumentCore &core) {
    const AudioFileContents &contents = *core.file.contents;
    const bool isWritable = AudioFileCodec::isPartWritable(core.model.state().buffer, contents);
    const std::string path = folderPart(core.file.path) + fileStem(core.file.path) + "-selection.";
    if (isWritable) return {"Save Selection As", "", path + AudioFileCodec::partExtension(contents.format), {}};
    const std::string message = contents.format.typeName + " files can't be written: the selection is saved as WAV.";
    return {"Save Selection As", message, path + "wav", {}};
}

void selectionSaved(DocumentCore &core, const std::string &path, const std::exception_ptr &failure, const Done &done) {
    core.tell();
    const std::string name = quoted(nameOf(path));
    if (!failure)
        core.ui.showNotice(NoticeKind::done, "The selection is saved as " + name);
    else if (!wasCancelled(failure))
        core.ui.showError(name + " could not be saved", errorText(failure));
    done(!failure);
}

void writeSelection(DocumentCore &core, const std::string &path, const Done &done) {
    const AudioEditorState &state = core.model.state();
    if (core.work.isEditing())
        return core.work.afterEdit([&core, path, done](bool go) { go ? writeSelection(core, path, done) : done(false); });
    if (core.work.isBusy() || !core.file.contents) return done(false);
    if (!state.selection) {
        core.ui.showError(quoted(nameOf(path)) + " could not be saved", "Nothing is selected any more.");
        return done(false);
    }
    core.work.start(
        DocumentWork::Kind::saving,
        [&files = core.services.files, decoders = core.services.decoders, path, file = core.file,
         part = AudioEditorOps::slice(state.buffer, *state.selection)](Progress &progress) {
            if (file.isAt(path, files.identity(path)))
                throw std::runtime_error("The selection is taken from this file: choose another name.");
            writeAudioFile(files, decoders, path, AudioFileCodec::partContents(part, *file.contents), progress);
        },
        [&core, path, done](std::exception_ptr failure) { selectionSaved(core, path, failure, done); });
}

}  // namespace

void save(DocumentCore &core, Done done, IfGone ifGone) {
    SaveQuestions::confirmEqAndEdits(core, Saved::file, [&core, done = orNobody(std::move(done)), ifGone](bool go) {
        if (!go) return done(false);
        const std::string why = core.file.contents ? whyElsewhere(core) : "";  // as edits have left it
        why.empty() ? request(core, {core.file.path, IfChanged::ask, done, {}, ifGone}) : chooseFormat(core, why, done);
    });
}

void saveTo(DocumentCore &core, const std::string &path, Done done) {
    confirmAndRequest(core, {path, IfChanged::overwrite, std::move(done)});
}

void saveAs(DocumentCore &core, Done done) {
    done = orNobody(std::move(done));
    if (!core.file.contents) return done(false);
    SaveQuestions::confirmEqAndEdits(core, Saved::file,
                                     [&core, done](bool go) { go ? chooseFormat(core, "", done) : done(false); });
}

void saveAs(DocumentCore &core, const std::string &path, const AudioSaveFormat &format, Done done) {
    confirmAndRequest(core, {path, ifChangedAt(core, path), std::move(done), format});
}

void saveSelection(DocumentCore &core, Done done) {
    done = orNobody(std::move(done));
    if (!core.file.contents || !core.model.state().selection) return done(false);
    const auto choose = [&core, panel = selectionPanel(core), done](bool go) {
        if (!go) return done(false);
        SaveQuestions::chooseTarget(core, panel, [&core, done](const Target &target) {
            target ? writeSelection(core, target->path, done) : done(false);
        });
    };
    SaveQuestions::confirmEqAndEdits(core, Saved::selection, choose);
}

void saveSelection(DocumentCore &core, const std::string &path, Done done) {
    done = orNobody(std::move(done));
    SaveQuestions::confirmEqAndEdits(core, Saved::selection,
                                     [=, &core](bool go) { go ? writeSelection(core, path, done) : done(false); });
}

}  // namespace kiv::DocumentSaving
