#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "Editor/AudioEditorModel/AudioEditorModel.h"
#include "Platform/Jobs.h"
#include "Support/Lifetime.h"
#include "Support/Observers.h"

namespace kiv {

// Runs a model's searches and detections as jobs, side by side. One that is cancelled leaves no trace. Main thread only. Made
// after the model and gone before it: then what still runs is cancelled and reports to nobody.
class BackgroundAnalyses {
public:
    BackgroundAnalyses(AudioEditorModel &model, Jobs &jobs);
    BackgroundAnalyses(const BackgroundAnalyses &) = delete;
    BackgroundAnalyses &operator=(const BackgroundAnalyses &) = delete;
    ~BackgroundAnalyses();

    bool isRunning() const { return !running_.empty(); }
    double fraction() const { return isRunning() ? running_.front()->progress->fraction() : 0; }  // of the one begun first
    // All are over at once, though their threads may take a moment more to notice.
    void cancel();

    // Told when one has begun or ended.
    Observers<BackgroundAnalyses> changed;

private:
    struct Analysis {
        std::shared_ptr<Progress> progress;
        std::function<void(std::exception_ptr)> done;
    };

    void start(AnalysisPlan plan);
    void end(const std::shared_ptr<Analysis> &analysis, const std::exception_ptr &failure);

    AudioEditorModel &model_;
    Jobs &jobs_;
    std::vector<std::shared_ptr<Analysis>> running_;
    Lifetime lifetime_;
};

}  // namespace kiv
