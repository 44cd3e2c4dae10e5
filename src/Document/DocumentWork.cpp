#include "Document/DocumentWork.h"

#include <utility>

#include "Editor/AudioEditorModel/AudioEditorSpectralPainting.h"

namespace kiv {

DocumentWork::DocumentWork(AudioEditorModel &model, Jobs &jobs)
    : model_(model), jobs_(jobs), edits_(model, jobs), analyses_(model, jobs) {
    editChanges_ = edits_.changed.add([this](const BackgroundEdits &) { onChanged(); });
    searchChanges_ = analyses_.changed.add([this](const BackgroundAnalyses &) { onChanged(); });
    edits_.onEnded = [this](bool committed) { editEnded(committed); };
    edits_.onFailed = [this](std::exception_ptr failure) { onEditFailed(failure); };
}

DocumentWork::~DocumentWork() {
    if (progress_) progress_->cancel();
}

// Not at once: whoever cancels is in the midst of something.
void DocumentWork::cancelJob() {
    if (!progress_) return;
    progress_->cancel();
    if (job_ != Kind::saving)
        jobs_.run(
            progress_, [](Progress &progress) { progress.throwIfCancelled(); }, report_);
}

std::optional<double> DocumentWork::progress() const {
    if (isEditing()) return edits_.fraction();
    if (isSearching()) return analyses_.fraction();
    return progress_ ? std::optional(progress_->fraction()) : std::nullopt;
}

void DocumentWork::cancel() {
    if (isEditing()) return cancelEdit();
    isSearching() ? analyses_.cancel() : cancelJob();
}

void DocumentWork::start(Kind kind, std::function<void(Progress &)> job, std::function<void(std::exception_ptr)> done) {
    job_ = kind;
    const auto progress = progress_ = std::make_shared<Progress>();
    onChanged();
    report_ = lifetime_.guard([this, progress, done = std::move(done)](std::exception_ptr failure) {
        if (progress_ != progress) return;  // it was cancelled, and was over with that
        const auto life = lifetime_.watch();
        job_ = Kind::none;
        progress_.reset();
        report_ = nullptr;
        done(failure);
        if (!life.expired()) onEnded();
    });
    const auto run = kind == Kind::saving ? &Jobs::run : &Jobs::read;
    (jobs_.*run)(progress, std::move(job), report_);
}

void DocumentWork::afterEdit(Save save) {
    if (!isEditing()) return save(true);
    waitingSave_ = std::move(save);
}

void DocumentWork::goOn() {
    if (const auto save = std::exchange(keptSave_, nullptr)) afterEdit([save](bool) { save(true); });
}

void DocumentWork::editEnded(bool committed) {
    const auto life = lifetime_.watch();
    if (!committed) AudioEditorSpectralPainting::cancelStroke(model_);  // it was shown until it was rendered
    if (const auto save = std::exchange(waitingSave_, nullptr)) save(committed);
    if (!life.expired()) onEnded();
}

}  // namespace kiv
