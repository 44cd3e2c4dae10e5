#pragma once

#include <exception>
#include <memory>

#include "Editor/AudioEditorModel/AudioEditorModel.h"
#include "Platform/Jobs.h"
#include "Support/Observers.h"

namespace kiv {

// Carries out a model's long edits as jobs, one at a time: each on the sound as it is when the edit is asked for, and committed
// when it is done if that is still the model's sound. One that is cancelled, fails or comes too late leaves no trace. Main
// thread only. Made after the model and gone before it.
class BackgroundEdits {
public:
    BackgroundEdits(AudioEditorModel &model, Jobs &jobs);
    BackgroundEdits(const BackgroundEdits &) = delete;
    BackgroundEdits &operator=(const BackgroundEdits &) = delete;
    ~BackgroundEdits();

    bool isRunning() const { return progress_ != nullptr; }
    std::int64_t begun() const { return begun_; }  // how many so far
    double fraction() const { return progress_ ? progress_->fraction() : 0; }
    // Over at once, though the thread may take a moment more to notice.
    void cancel();

    // Told when an edit has begun or ended.
    Observers<BackgroundEdits> changed;
    // Told before that when it has ended, with whether it was committed.
    std::function<void(bool committed)> onEnded;
    // Why an edit could not be done, other than that it was cancelled or came too late.
    std::function<void(std::exception_ptr)> onFailed;

private:
    void start(EditPlan plan);
    void end(bool committed);

    AudioEditorModel &model_;
    Jobs &jobs_;
    std::int64_t begun_ = 0;
    std::shared_ptr<Progress> progress_;                    // of the edit under way
    std::shared_ptr<int> alive_ = std::make_shared<int>();  // jobs hold it weakly
};

}  // namespace kiv
