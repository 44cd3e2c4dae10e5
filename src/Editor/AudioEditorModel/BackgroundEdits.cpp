#include "Editor/AudioEditorModel/BackgroundEdits.h"

#include <utility>

namespace kiv {
namespace {

// What measuring the peaks takes, as a share of a job: reading, beside what the edit reads and writes.
constexpr double peaksShare = 0.15;

// All that the thread works on.
struct Edit {
    EditPlan plan;
    AudioEditorBuffer before;
    AudioEditorPeaks peaks;
    bool measuresPeaks = true;
    std::int64_t generation = 0;
    std::optional<EditOutcome> outcome;

    void carryOut(Progress &progress) {
        outcome = plan.carryOut(progress);
        if (outcome && !outcome->peaks && measuresPeaks)
            outcome->peaks.emplace(outcome->buffer, before, std::move(peaks), &progress);
        plan.carryOut = nullptr;
        before = AudioEditorBuffer();
    }
};

std::vector<double> withPeaks(std::vector<double> stages) {
    for (double &share : stages) share *= 1 - peaksShare;
    stages.push_back(peaksShare);
    return stages;
}

}  // namespace

BackgroundEdits::BackgroundEdits(AudioEditorModel &model, Jobs &jobs) : model_(model), jobs_(jobs) {
    model.onLongEdit = [this](EditPlan plan) { start(std::move(plan)); };
}

BackgroundEdits::~BackgroundEdits() {
    model_.onLongEdit = nullptr;
    if (progress_) progress_->cancel();
}

void BackgroundEdits::cancel() {
    if (!progress_) return;
    progress_->cancel();
    end(false);
}

// One that is asked for while another is under way is not done.
void BackgroundEdits::start(EditPlan plan) {
    if (isRunning()) return;
    const auto progress = progress_ = std::make_shared<Progress>();
    const bool measuresPeaks = model_.keepsPeaks();
    progress->expectStages(measuresPeaks ? withPeaks(plan.stages) : plan.stages);
    const AudioEditorState &state = model_.state();
    const auto edit =
        std::make_shared<Edit>(Edit{std::move(plan), state.buffer, state.peaks, measuresPeaks, state.generation, {}});
    changed.notify(*this);
    const auto done = [this, edit, progress, alive = std::weak_ptr<int>(alive_)](std::exception_ptr failure) {
        if (alive.expired() || progress != progress_) return;
        const bool committed = !failure && edit->outcome && model_.commit(edit->generation, std::move(*edit->outcome));
        end(committed);
        if (failure && !progress->isCancelled() && !alive.expired() && onFailed) onFailed(failure);
    };
    jobs_.run(
        progress, [edit](Progress &wanted) { edit->carryOut(wanted); }, done);
}

void BackgroundEdits::end(bool committed) {
    progress_.reset();
    const std::weak_ptr<int> alive = alive_;
    if (onEnded) onEnded(committed);
    if (!alive.expired()) changed.notify(*this);
}

}  // namespace kiv
