#include "Editor/AudioEditorModel/BackgroundAnalyses.h"

#include <utility>

namespace kiv {

BackgroundAnalyses::BackgroundAnalyses(AudioEditorModel &model, Jobs &jobs) : model_(model), jobs_(jobs) {
    model.onAnalyse = [this](AnalysisPlan plan) { start(std::move(plan)); };
}

BackgroundAnalyses::~BackgroundAnalyses() {
    model_.onAnalyse = nullptr;
    for (const auto &progress : *running_) progress->cancel();
}

void BackgroundAnalyses::start(AnalysisPlan plan) {
    const auto progress = std::make_shared<Progress>();
    running_->push_back(progress);
    const auto done = [alive = std::weak_ptr(running_), progress, done = std::move(plan.done)](std::exception_ptr failure) {
        const auto running = alive.lock();
        if (!running) return;
        std::erase(*running, progress);
        done(failure);
    };
    jobs_.run(progress, std::move(plan.work), done);
}

}  // namespace kiv
