#pragma once

#include <functional>

#include "Document/DocumentFile.h"
#include "Document/DocumentPlayer.h"
#include "Document/DocumentServices.h"
#include "Document/DocumentUi.h"
#include "Document/DocumentWork.h"
#include "Document/Journal/DocumentJournal.h"
#include "Editor/AudioEditorModel/BackgroundPeaks.h"
#include "Support/Lifetime.h"

namespace kiv {

// What the tasks of one document (reading, saving, watching the disk, closing) share; each is a file of its own and none knows
// another's insides. Main thread only.
struct DocumentCore {
    DocumentCore(DocumentServices withServices, DocumentUi &withUi);

    DocumentServices services;
    DocumentUi &ui;
    AudioEditorModel model;
    EqModel eq;
    DocumentFile file;
    std::optional<std::int64_t> savingVersion;  // of the content that is being saved
    DocumentWork work;
    BackgroundPeaks peaks;
    DocumentPlayer player;
    DocumentJournal journal;
    bool isGivenUp = false;      // by its user: nothing of it is to outlive the program
    std::function<void()> tell;  // the document's observers, of a new name, format, edited or busy state
    Lifetime lifetime;           // jobs and questions hold it

    bool isChanged() const { return file.contents && model.state().contentVersion != file.savedVersion; }
    // There is no file that holds the sound as it is.
    bool isEdited() const { return isChanged() || (file.contents && file.isGone()); }
    std::string quotedName() const;
    bool canStoreLoop() const { return file.contents->canStoreLoop(); }
    // The file of the sound that has just been read or written.
    void setFile(DocumentFile newFile, const AudioEditorBuffer &sound);
    // The same file, whose time has changed.
    void setIdentity(const FileSystem::Identity &identity);
    // Unlike the file as it is, or as a save under way is about to make it: what is undone while it is saved would be lost
    // else.
    bool needsJournal() const;
    void followByJournal() { journal.follow(model.state(), needsJournal()); }
    // Calls back when all edits that are finished would survive the end of the program, and a sound whose file has gone.
    void flushJournal(std::function<void()> done) {
        journal.flush(model.state(), needsJournal() || (!isGivenUp && isEdited()), std::move(done));
    }
};

}  // namespace kiv
