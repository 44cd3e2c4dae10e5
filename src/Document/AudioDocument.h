#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Document/DiskWatch.h"
#include "Document/DocumentClosing.h"
#include "Document/DocumentCore.h"
#include "Document/DocumentReading.h"
#include "Document/SlicesSaving.h"

namespace kiv {

// One open sound file: reads it, owns its model, plays it and saves it over itself. Main thread only; reading and writing run
// as jobs on values. Each task has an object or functions of its own; here they are put together.
class AudioDocument {
public:
    AudioDocument(DocumentServices services, DocumentUi &ui);
    AudioDocument(const AudioDocument &) = delete;
    AudioDocument &operator=(const AudioDocument &) = delete;

    AudioEditorModel &model() { return core_.model; }
    const AudioEditorModel &model() const { return core_.model; }
    EqModel &eq() { return core_.eq; }
    const EqModel &eq() const { return core_.eq; }
    DocumentPlayer &player() { return core_.player; }
    const DocumentPlayer &player() const { return core_.player; }

    const std::string &path() const { return core_.file.path; }
    std::string name() const;  // the path's last part
    // What is read or written there is this document's file, also by another path.
    bool isAt(const std::string &where, const DocumentFile::Identity &there) const { return core_.file.isAt(where, there); }
    // None before it is read; the buffer is the model's.
    const std::shared_ptr<const AudioFileContents> &contents() const { return core_.file.contents; }
    const AudioFileFormat *format() const { return contents() ? &contents()->format : nullptr; }
    bool isEdited() const { return core_.isEdited(); }
    // Another one as soon as anything has been edited, or a long edit has been begun.
    struct EditMark {
        std::int64_t contentVersion = 0, editsBegun = 0;
        friend bool operator==(const EditMark &, const EditMark &) = default;
    };
    EditMark editMark() const { return {model().state().contentVersion, core_.work.editsBegun()}; }

    using Work = DocumentWork::Kind;
    Work work() const { return core_.work.kind(); }
    bool isBusy() const { return core_.work.isBusy(); }
    bool isEditing() const { return core_.work.isEditing(); }
    bool isSearching() const { return core_.work.isSearching(); }
    // Of what cancelWork() would end, 0 … 1; nothing when that is nothing. To be polled.
    std::optional<double> progress() const { return core_.work.progress(); }
    void cancelWork() { core_.work.cancel(); }

    // Reads the file; then `done` with the error's text, empty when all is well. That of a reading that the user has cancelled:
    static constexpr const char *cancelledText = DocumentReading::cancelledText;
    void open(const std::string &path, std::function<void(const std::string &error)> done);
    // The same for a document that was not closed properly.
    void restore(std::shared_ptr<const AbandonedJournal> journal, std::function<void(const std::string &error)> done);
    // Reads the file again, after asking when there are edits.
    void revert();
    // Looks for what other programs have done to the file: to be called when the window gets the focus.
    void checkDisk() { disk_.check(); }

    // What is heard through the equalizer is not in the samples.
    bool isEqPending() const;
    // Writes the equalizer into the selection, or the whole sound without one, and closes it.
    void applyEq();

    // Each asks first whether a pending equalizer is to be applied, tells a failure, and then `done` whether it has saved.
    using Done = std::function<void(bool saved)>;
    // Over the file, after asking when another program has changed or removed it meanwhile; a file that cannot be written in
    // its own format as the user chooses.
    void save(Done done = {});
    // Elsewhere in the file's own format, where the document then lives. Undoing goes on as if nothing had been.
    void saveTo(const std::string &path, Done done);
    // Where, and in what format, the user chooses or is said here; the document then lives there.
    void saveAs(Done done = {});
    void saveAs(const std::string &path, const AudioSaveFormat &format, Done done);
    // The selection alone, in the file's own format or as WAV, where the user chooses or is said here.
    void saveSelection(Done done = {});
    void saveSelection(const std::string &path, Done done);
    // The slices, a file each, in a folder beside the file; they are named after the file when the name is empty.
    using IfHeld = SlicesSaving::IfHeld;
    void saveSlices(const std::string &name, IfHeld ifHeld, Done done = {});
    std::string slicesFolder() const { return slices_.folder(); }

    // Tells whether the document may go: at once, or as the user decides.
    void confirmClose(std::function<void(bool mayGo)> answered) { closing_.confirm(std::move(answered)); }
    bool isCloseAsked() const { return closing_.isAsked(); }
    // It does go: what is not saved is given up.
    void letGo();
    // Calls back when all edits that are finished would survive the end of the program.
    void flushJournal(std::function<void()> done) { core_.flushJournal(std::move(done)); }
    // The same on the spot, where no event comes any more.
    void writeJournalNow() noexcept { core_.journal.writeNow(); }

    // Told when the name, the format or isEdited has changed, and when work has begun or ended.
    Observers<AudioDocument> observers;

private:
    void tell();
    void modelChanged();

    DocumentCore core_;
    DiskWatch disk_{core_};
    DocumentClosing closing_{core_};
    SlicesSaving slices_{core_};
    bool toldEdited_ = false;
    Subscription modelChanges_;
};

}  // namespace kiv
