#include "Document/DocumentCore.h"

#include <utility>

#include "Document/FileNames.h"
#include "Platform/FileCopy.h"

namespace kiv {

DocumentCore::DocumentCore(DocumentServices withServices, DocumentUi &withUi)
    : services(withServices),
      ui(withUi),
      model(services.settings, services.clipboard, services.peaks),
      work(model, services.jobs),
      peaks(model, services.jobs),
      player(services.playback, model, eq),
      journal(services.journals, services.jobs) {}

std::string DocumentCore::quotedName() const { return quoted(nameOf(file.path)); }

bool DocumentCore::needsJournal() const {
    return !isGivenUp && (isChanged() || (savingVersion && model.state().contentVersion != *savingVersion));
}

void DocumentCore::setFile(DocumentFile newFile, const AudioEditorBuffer &sound) {
    file = std::move(newFile);
    journal.setBase(file.path, file.identity, file.contents, sound);
}

void DocumentCore::setIdentity(const FileSystem::Identity &identity) {
    file.identity = identity;
    journal.setIdentity(identity);
    followByJournal();
}

}  // namespace kiv
