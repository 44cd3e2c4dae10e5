#pragma once

#include <memory>
#include <vector>

#include "Editor/AudioEditorModel/AudioEditorModel.h"
#include "Platform/Jobs.h"

namespace kiv {

// Runs a model's searches and detections as jobs. Main thread only. Made after the model and gone before it: then what still
// runs is cancelled and reports to nobody.
class BackgroundAnalyses {
public:
    BackgroundAnalyses(AudioEditorModel &model, Jobs &jobs);
    BackgroundAnalyses(const BackgroundAnalyses &) = delete;
    BackgroundAnalyses &operator=(const BackgroundAnalyses &) = delete;
    ~BackgroundAnalyses();

private:
    using Running = std::vector<std::shared_ptr<Progress>>;

    void start(AnalysisPlan plan);

    AudioEditorModel &model_;
    Jobs &jobs_;
    std::shared_ptr<Running> running_ = std::make_shared<Running>();  // jobs hold it weakly
};

}  // namespace kiv
