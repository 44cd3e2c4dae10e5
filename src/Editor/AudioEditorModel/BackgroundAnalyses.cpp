#include "Editor/AudioEditorModel/BackgroundAnalyses.h"

#include <utility>

namespace kiv {

BackgroundAnalyses::BackgroundAnalyses(AudioEditorModel &model, Jobs &jobs) : model_(model), jobs_(jobs) {
    model.onAnalyse = [this](AnalysisPlan plan) { start(std::move(plan)); };
}

BackgroundAnalyses::~BackgroundAnalyses() {
    model_.onAnalyse = nullptr;
    for (const auto &analysis : running_) analysis->progress->cancel();
}

void BackgroundAnalyses::start(AnalysisPlan plan) {
    const auto analysis = std::make_shared<Analysis>(Analysis{std::make_shared<Progress>(), std::move(plan.done)});
    running_.push_back(analysis);
    changed.notify(*this);
    jobs_.run(analysis->progress, std::move(plan.work),
              lifetime_.guard([this, analysis](std::exception_ptr failure) { end(analysis, failure); }));
}

void BackgroundAnalyses::end(const std::shared_ptr<Analysis> &analysis, const std::exception_ptr &failure) {
    if (std::erase(running_, analysis) == 0) return;  // cancelled
    const auto life = lifetime_.watch();
    analysis->done(failure);
    if (!life.expired()) changed.notify(*this);
}

void BackgroundAnalyses::cancel() {
    for (const auto &analysis : std::vector(running_)) {
        analysis->progress->cancel();
        end(analysis, std::make_exception_ptr(Cancelled()));
    }
}

}  // namespace kiv
