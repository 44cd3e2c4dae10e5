#pragma once

#include <memory>

#include "Editor/AudioEditorModel/AudioEditorModel.h"
#include "Platform/Jobs.h"

namespace kiv {

// Measures the loose peaks of a model's sound as a job, so that an edit that moves an hour takes no longer than one that does
// not. Main thread only. Made after the model and gone before it.
class BackgroundPeaks {
public:
    BackgroundPeaks(AudioEditorModel &model, Jobs &jobs);
    BackgroundPeaks(const BackgroundPeaks &) = delete;
    BackgroundPeaks &operator=(const BackgroundPeaks &) = delete;
    ~BackgroundPeaks();

private:
    void start();

    AudioEditorModel &model_;
    Jobs &jobs_;
    std::shared_ptr<Progress> progress_;                    // of the latest job
    std::shared_ptr<int> alive_ = std::make_shared<int>();  // jobs hold it weakly
};

}  // namespace kiv
