#include "Document/AudioDocument.h"

#include <utility>

#include "Document/DocumentReading.h"
#include "Document/DocumentSaving.h"
#include "Document/SaveQuestions.h"
#include "Platform/FileCopy.h"
#include "Support/Failures.h"

namespace kiv {

AudioDocument::AudioDocument(DocumentServices services, DocumentUi &ui) : core_(services, ui) {
    core_.tell = [this] { tell(); };
    core_.work.onChanged = core_.tell;
    core_.work.onEnded = [this] { closing_.consider(); };
    core_.work.onEditFailed = [this](std::exception_ptr failure) {
        core_.ui.showError(core_.quotedName() + " could not be edited", errorText(failure));
    };
    core_.journal.onTrouble = [this](const std::string &reason) {
        core_.ui.showNotice(NoticeKind::warning, "Changes are not safe from a crash: " + reason);
    };
    core_.model.onSaveSlices = [this](const auto &, const std::string &name) { saveSlices(name, IfHeld::ask); };
    modelChanges_ = core_.model.observers.add([this](const Changes &) { modelChanged(); });
}

void AudioDocument::tell() {
    toldEdited_ = isEdited();
    observers.notify(*this);
}

void AudioDocument::modelChanged() {
    core_.followByJournal();
    if (toldEdited_ != isEdited()) tell();
}

std::string AudioDocument::name() const { return nameOf(path()); }

void AudioDocument::open(const std::string &path, std::function<void(const std::string &error)> done) {
    DocumentReading::open(core_, path, std::move(done));
}

void AudioDocument::restore(std::shared_ptr<const AbandonedJournal> journal,
                            std::function<void(const std::string &error)> done) {
    DocumentReading::restore(core_, std::move(journal), std::move(done));
}

void AudioDocument::revert() { DocumentReading::revert(core_); }

bool AudioDocument::isEqPending() const { return SaveQuestions::isEqPending(core_); }

void AudioDocument::applyEq() {
    if (!isEditing()) kiv::applyEq(core_.model, core_.eq.settings(), core_.model.activeRange());
}

void AudioDocument::save(Done done) { DocumentSaving::save(core_, std::move(done)); }

void AudioDocument::saveTo(const std::string &path, Done done) { DocumentSaving::saveTo(core_, path, std::move(done)); }

void AudioDocument::saveAs(Done done) { DocumentSaving::saveAs(core_, std::move(done)); }

void AudioDocument::saveAs(const std::string &path, const AudioSaveFormat &format, Done done) {
    DocumentSaving::saveAs(core_, path, format, std::move(done));
}

void AudioDocument::saveSelection(Done done) { DocumentSaving::saveSelection(core_, std::move(done)); }

void AudioDocument::saveSelection(const std::string &path, Done done) {
    DocumentSaving::saveSelection(core_, path, std::move(done));
}

void AudioDocument::saveSlices(const std::string &name, IfHeld ifHeld, Done done) {
    slices_.save(name, ifHeld, std::move(done));
}

void AudioDocument::letGo() {
    core_.isGivenUp = true;
    core_.work.cancelEdit();
    core_.journal.discard();
}

}  // namespace kiv
