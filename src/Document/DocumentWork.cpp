#include "Document/DocumentWork.h"

#include <utility>

#include "Editor/AudioEditorModel/AudioEditorSpectralPainting.h"

namespace kiv {

DocumentWork::DocumentWork(AudioEditorModel &model, Jobs &jobs) : model_(model), jobs_(jobs), edits_(model, jobs) {
    editChanges_ = edits_.changed.add([this](const BackgroundEdits &) { onChanged(); });
    edits_.onEnded = [this](bool committed) { editEnded(committed); };
    edits_.onFailed = [this](std::exception_ptr failure) { onEditFailed(failure); };
}

DocumentWork::~DocumentWork() { cancelJob(); }

void DocumentWork::cancelJob() {
    if (progress_) progress_->cancel();
}

void DocumentWork::cancel() { isEditing() ? cancelEdit() : cancelJob(); }

void DocumentWork::start(Kind kind, std::function<void(Progress &)> job, std::function<void(std::exception_ptr)> done) {
    job_ = kind;
    progress_ = std::make_shared<Progress>();
    onChanged();
    jobs_.run(progress_, std::move(job), lifetime_.guard([this, done = std::move(done)](std::exception_ptr failure) {
        const auto life = lifetime_.watch();
        job_ = Kind::none;
        progress_.reset();
        done(failure);
        if (!life.expired()) onEnded();
    }));
}

void DocumentWork::afterEdit(Save save) { isEditing() ? keep(std::move(save)) : save(true); }

void DocumentWork::goOn() {
    if (isEditing()) return;
    if (const auto save = std::exchange(waitingSave_, nullptr)) save(true);
}

void DocumentWork::editEnded(bool committed) {
    const auto life = lifetime_.watch();
    if (!committed) AudioEditorSpectralPainting::cancelStroke(model_);  // it was shown until it was rendered
    if (const auto save = std::exchange(waitingSave_, nullptr)) save(committed);
    if (!life.expired()) onEnded();
}

}  // namespace kiv
