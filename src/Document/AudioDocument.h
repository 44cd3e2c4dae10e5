#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Audio/Files/AudioFileConversion.h"
#include "Audio/Playback/PlaybackEngine.h"
#include "Document/DocumentUi.h"
#include "Document/FolderAccess.h"
#include "Document/Journal/DocumentJournal.h"
#include "Editor/AudioEditorModel/AudioEditorEdits.h"
#include "Editor/AudioEditorModel/AudioEditorModel.h"
#include "Editor/AudioEditorModel/BackgroundAnalyses.h"
#include "Editor/AudioEditorModel/BackgroundEdits.h"
#include "Editor/AudioEditorModel/BackgroundPeaks.h"
#include "Editor/AudioEditorModel/EqModel.h"
#include "Editor/Surfaces/PlayheadFollower.h"
#include "Platform/DecodedReader.h"
#include "Platform/Files.h"
#include "Platform/Jobs.h"

namespace kiv {

struct SlicesToSave;

// What a document works with; made in main, borrowed by all documents.
struct DocumentServices {
    Files &files;
    Jobs &jobs;
    Settings &settings;
    Clipboard &clipboard;
    PlaybackEngine *playback = nullptr;       // none: nothing is played
    DecodedReader *decoders = nullptr;        // none: only WAV and AIFF are read
    Peaks peaks = Peaks::kept;                // none: for work without a view
    const JournalFolder *journals = nullptr;  // none: a crash loses what was not saved
};

// One open sound file: reads it, owns its model, plays it and saves it over itself. Main thread only; reading and writing run
// as jobs on values.
class AudioDocument : public PlaybackEngine::Client {
public:
    AudioDocument(DocumentServices services, DocumentUi &ui);
    ~AudioDocument() override;

    AudioEditorModel &model() { return model_; }
    const AudioEditorModel &model() const { return model_; }
    EqModel &eq() { return eq_; }
    const EqModel &eq() const { return eq_; }
    const std::string &path() const { return path_; }
    std::string name() const;                                                       // the path's last part
    const std::optional<AudioFileContents> &contents() const { return contents_; }  // as read; the buffer is the model's
    const AudioFileFormat *format() const { return contents_ ? &contents_->format : nullptr; }

    bool isEdited() const;
    // Work going on. Reading and saving exclude each other: what is asked for meanwhile is not done. The sound may be edited
    // while it is saved, not while it is read. A save asked for during a long edit waits for its end, and is called off with
    // it; another edit has to wait.
    enum class Work { none, reading, saving, editing };
    Work work() const { return work_ == Work::none && isEditing() ? Work::editing : work_; }
    bool isBusy() const { return work() != Work::none; }
    bool isEditing() const { return edits_.isRunning(); }
    // Of the edit when there is one, and it is that which is cancelled first.
    double progressFraction() const { return isEditing() ? edits_.fraction() : progress_ ? progress_->fraction() : 0; }
    void cancelWork();

    // The error that `open` ends with when the user has cancelled it.
    static constexpr const char *cancelledText = "Cancelled.";
    // Reads the file; then `done` with the error's text, empty when all is well.
    void open(const std::string &path, std::function<void(const std::string &error)> done);
    // The same for a document that was not closed properly: as it was after its last edit, with the file as it was before that.
    void restore(std::shared_ptr<const AbandonedJournal> journal, std::function<void(const std::string &error)> done);
    // What is heard through the equalizer is not in the samples: it is open and does something.
    bool isEqPending() const;
    // Writes the equalizer into the selection, or the whole sound without one, and closes it.
    void applyEq();
    // Asks, when the equalizer is pending, whether it is to be applied to what will be saved, does so, and goes on; cancelled,
    // it goes on with false. A save that could not begin is not asked about.
    enum class Saved { file, selection };
    void confirmEqBeforeSaving(Saved what, std::function<void(bool go)> then);

    // Saves over the file, after asking whether a pending equalizer is to be applied first, and after asking when another
    // program has changed or removed it meanwhile, or elsewhere in the file's own format, where the document then lives; a
    // failure is shown, and `done` is told false, as it is when the user has cancelled. A file that cannot be written in its
    // own format is saved elsewhere, as the user chooses.
    void save(std::function<void(bool)> done = {});
    void saveTo(const std::string &path, std::function<void(bool)> done);
    // Saves where, and in what format, the user chooses or is said here; the document then lives there. Undoing goes on as if
    // nothing had been. What the format cannot store is told.
    void saveAs(std::function<void(bool)> done = {});
    void saveAs(const std::string &path, const AudioSaveFormat &format, std::function<void(bool)> done);
    // Saves the selection alone, in the file's own format or as WAV, where the user chooses or is said here.
    void saveSelection(std::function<void(bool)> done = {});
    void saveSelection(const std::string &path, std::function<void(bool)> done);
    // Looks whether another program has changed the file since it was read or written: to be called when the window gets the
    // focus. Without edits it is read again; with edits the user is asked, once for each change.
    void checkDisk();
    // Reads the file again, after asking when there are edits.
    void revert();
    // Tells whether the document may go: at once when it has no edits, else as the user decides (save, discard, cancel). Waits
    // for a save under way. Asked for again while the question stands it has the same answer. Until it goes it is as it was.
    void confirmClose(std::function<void(bool mayGo)> answered);
    bool isCloseAsked() const { return closeAsked_; }
    // It does go: what is not saved is given up.
    void letGo();
    // Another one as soon as anything has been edited, or a long edit has been begun.
    struct EditMark {
        std::int64_t contentVersion = 0, editsBegun = 0;
        friend bool operator==(const EditMark &, const EditMark &) = default;
    };
    EditMark editMark() const { return {model_.state().contentVersion, edits_.begun()}; }
    // Calls back when all edits that are finished would survive the end of the program.
    void flushJournal(std::function<void()> done) { journal_.flush(model_.state(), isEdited(), std::move(done)); }

    // Saves the model's slices, a file each, in a folder beside the file; the name is the file's when it is empty. Where that
    // folder holds audio files already, they go to the trash: after asking, at once, or not at all.
    enum class IfHeld { ask, replace, refuse };
    void saveSlices(const std::string &name, IfHeld ifHeld, std::function<void(bool)> done = {});
    std::string slicesFolder() const;

    bool canPlay() const;
    void togglePlay();  // the selection, or from the cursor (at the sound's end: from its start); stops what plays
    void play(FrameRange range, std::int64_t start, bool loop);
    void playSlice(std::size_t index);  // once, with the slices' fades
    void playLoopJoint();               // the loop, over and over, from a second before its end, with the crossfade that is set
    void stop();
    bool isPlaying() const;
    // Place the cursor there and show it. While playing, playback goes on from the start, and stops at the end.
    void goToStart();
    void goToEnd();

    // Told when the name, the format, isEdited or isBusy has changed. Progress itself is to be polled while busy.
    Observers<AudioDocument> observers;

    void playbackPeak(float level) override;
    void playbackMoved(double frame) override;
    void playbackStopped() override;

private:
    // What a job reads and what it writes; in AudioDocument.cpp.
    struct Loaded;
    struct Saving;
    enum class IfChanged { ask, overwrite };
    // What is to be saved where.
    struct SaveOrder {
        std::string path;
        IfChanged ifChanged = IfChanged::ask;
        std::function<void(bool)> done;
        std::optional<AudioSaveFormat> format = {};  // none: the file's own
    };
    using OnTarget = std::function<void(const std::optional<DocumentUi::SaveTarget> &)>;

    void tellMissing();
    void expectShape();
    void startWork(Work kind, std::function<void(Progress &)> work, std::function<void(std::exception_ptr)> done);
    void load(const std::string &path, std::function<void(std::shared_ptr<Loaded>, const std::string &error)> done);
    enum class Install { fresh, again };
    void install(Loaded loaded, Install how);
    void readAgain(const std::string &notice = {});  // which is shown when it has worked
    std::string whyElsewhere() const;                // a save cannot go over the file; empty when it can
    void installRecovered(RecoveredDocument recovered, std::shared_ptr<const AbandonedJournal> journal);
    void confirmAndSave(SaveOrder order);
    void requestSave(SaveOrder order);
    std::shared_ptr<Saving> savingOf(const SaveOrder &order);
    void runSave(const SaveOrder &order);
    void runSave(const SaveOrder &order, const std::shared_ptr<Saving> &saving);
    void chooseFormat(const std::string &message, std::function<void(bool)> done);
    void chooseTarget(const DocumentUi::SavePanel &panel, OnTarget chosen);
    void considerTarget(const DocumentUi::SavePanel &panel, const DocumentUi::SaveTarget &target,
                        std::optional<FileSystem::Identity> there, OnTarget chosen);
    bool isOwnFile(const std::string &path, const std::optional<FileSystem::Identity> &there) const;
    void confirmEqAndEdits(Saved what, std::function<void(bool go)> then);
    void writeSelection(const std::string &path, std::function<void(bool)> done);
    AudioFileContents contentsOnDisk() const;
    void compareWithDisk(const FileSystem::Identity &now);
    void changedOnDisk();
    EqTargets eqTargets() const { return {eq_.settings(), model_.state().eqEnabled}; }
    void updateEq();
    void feedAnalyzer();
    void editEnded(bool committed);
    void saveEnded(Saving &saving, std::exception_ptr failure, const SaveOrder &order);
    void tellWhatIsLeft(const Saving &saving);
    void askOverChanges(SaveOrder order, bool isGone);
    void considerClosing();
    void closeAnswered(std::size_t button);
    void tellClosers(bool mayGo);
    // Wraps a call that may come after this document is gone.
    template <class Call>
    auto whileAlive(Call call) {
        return [alive = std::weak_ptr(alive_), call = std::move(call)](auto &&...arguments) {
            if (!alive.expired()) call(std::forward<decltype(arguments)>(arguments)...);
        };
    }
    void start(PlaybackEngine::Request request);
    void followLoop(const Changes &changes);
    void saveSlicesAsTheyAre(const std::string &name, IfHeld ifHeld, std::function<void(bool)> done);
    void lookForSlices(std::shared_ptr<SlicesToSave> saving, IfHeld ifHeld, std::function<void(bool)> done);
    void writeSlices(std::shared_ptr<SlicesToSave> saving, std::function<void(bool)> done);
    void slicesSaved(const SlicesToSave &saving, std::exception_ptr failure, const std::function<void(bool)> &done);
    void tellIfEditedChanged();

    DocumentServices services_;
    DocumentUi &ui_;
    AudioEditorModel model_;
    EqModel eq_;
    std::vector<float> eqInput_, eqOutput_;  // what the analyzer is fed with
    bool analyzerRests_ = false;             // at this tick
    BackgroundEdits edits_;
    BackgroundPeaks peaks_;
    BackgroundAnalyses analyses_;
    DocumentJournal journal_;
    FolderAccess access_;
    std::string path_;
    std::optional<AudioFileContents> contents_;
    std::optional<FileSystem::Identity> identity_;  // of the file as last read or written
    // What was last found on the disk instead, and told of: nothing, that there is nothing, or another file.
    std::optional<std::optional<FileSystem::Identity>> foundOnDisk_;
    bool looksAtDisk_ = false;
    Work work_ = Work::none;
    std::shared_ptr<Progress> progress_;
    std::function<void(bool go)> waitingSave_;        // for an edit to end
    std::vector<std::function<void(bool)>> closers_;  // wait for a save to end, or for the answer to one question
    bool closeAsked_ = false;                         // that question stands, or its answer is being carried out
    std::int64_t savedVersion_ = 0;
    bool toldEdited_ = false;
    PlayheadFollower follower_{model_};
    bool jointPlaying_ = false;
    Subscription loopChanges_;
    Subscription modelChanges_, editChanges_, eqChanges_;
    std::shared_ptr<int> alive_ = std::make_shared<int>();  // jobs and questions hold it weakly
};

}  // namespace kiv
