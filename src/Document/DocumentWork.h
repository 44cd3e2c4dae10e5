#pragma once

#include <exception>
#include <functional>
#include <memory>
#include <optional>

#include "Editor/AudioEditorModel/AudioEditorModel.h"
#include "Editor/AudioEditorModel/BackgroundAnalyses.h"
#include "Editor/AudioEditorModel/BackgroundEdits.h"
#include "Platform/Jobs.h"
#include "Support/Lifetime.h"

namespace kiv {

// The long work of a document: one reading or saving at a time, the model's long edits and its searches beside it, and a save
// that waits. Main thread only. Made after the model and gone before it; what still runs then is cancelled and reports to
// nobody.
class DocumentWork {
public:
    // Reading and saving exclude each other: what is asked for meanwhile is not done. The sound may be edited while it is
    // saved, not while it is read. A save asked for during a long edit waits for its end, and is called off with it; another
    // edit has to wait.
    // Looking is done at the disk, before something is saved. It and reading are over as soon as they are cancelled, whenever
    // the disk may answer.
    enum class Kind { none, reading, looking, saving, editing };

    DocumentWork(AudioEditorModel &model, Jobs &jobs);
    DocumentWork(const DocumentWork &) = delete;
    DocumentWork &operator=(const DocumentWork &) = delete;
    ~DocumentWork();

    Kind kind() const { return job_ == Kind::none && isEditing() ? Kind::editing : job_; }
    bool isBusy() const { return kind() != Kind::none; }
    bool isEditing() const { return edits_.isRunning(); }
    bool takesSave() const { return job_ == Kind::none && !isSaveWaiting(); }
    bool isSaving() const { return job_ == Kind::saving || isSaveWaiting(); }
    std::int64_t editsBegun() const { return edits_.begun(); }
    bool isSearching() const { return analyses_.isRunning(); }  // which keeps nothing else from being done
    // How far has come what cancel() would end, 0 … 1: the edit when there is one, else the searches, else the job.
    std::optional<double> progress() const;
    void cancel();
    void cancelEdit() { edits_.cancel(); }
    void cancelJob();

    // Runs the job, which takes its input as values, and then `done`, which tells of the change, with the exception that ended
    // it, or null.
    void start(Kind kind, std::function<void(Progress &)> job, std::function<void(std::exception_ptr)> done);
    using Save = std::function<void(bool go)>;
    // Once the edit under way has ended, or at once without one; it is told whether that was committed.
    void afterEdit(Save save);
    // Not before goOn(), nor during an edit; what becomes of edits does not concern it.
    void keep(Save save) { keptSave_ = std::move(save); }
    void goOn();

    std::function<void()> onChanged;                       // a job has begun; an edit or a search has begun or ended
    std::function<void()> onEnded;                         // a job or an edit, and what waited for it has begun
    std::function<void(std::exception_ptr)> onEditFailed;  // not told when it was cancelled or came too late

private:
    bool isSaveWaiting() const { return waitingSave_ || keptSave_; }
    void editEnded(bool committed);

    AudioEditorModel &model_;
    Jobs &jobs_;
    BackgroundEdits edits_;
    BackgroundAnalyses analyses_;
    Kind job_ = Kind::none;
    std::shared_ptr<Progress> progress_;  // of the job
    std::function<void(std::exception_ptr)> report_;
    Save waitingSave_, keptSave_;  // for an edit to end, and for goOn(); there is one of them at the most
    Subscription editChanges_, searchChanges_;
    Lifetime lifetime_;
};

}  // namespace kiv
