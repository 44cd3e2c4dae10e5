#include "Document/AudioDocument.h"
#include "Document/AudioFileReading.h"
#include "Editor/AudioEditorModel/AudioEditorLoops.h"

// Where the document comes back from a journal, and where it gives its own up.
namespace kiv {

void AudioDocument::restore(std::shared_ptr<const AbandonedJournal> journal,
                            std::function<void(const std::string &error)> done) {
    if (isBusy()) return done("It is busy.");
    path_ = journal->document;
    const auto recovered = std::make_shared<RecoveredDocument>();
    startWork(
        Work::reading,
        [=, services = services_](Progress &progress) {
            *recovered = recoverDocument(*services.journals, *journal, services.files, services.decoders, progress);
        },
        [=, this](std::exception_ptr failure) {
            if (!failure) installRecovered(std::move(*recovered), journal);
            observers.notify(*this);
            done(failure ? errorText(failure) : "");
        });
}

// With the file's own sound beneath it, so that undoing leads back there. Where that is gone there is nothing to undo.
void AudioDocument::installRecovered(RecoveredDocument recovered, std::shared_ptr<const AbandonedJournal> journal) {
    stop();
    path_ = recovered.path;
    contents_ = std::move(recovered.contents);
    identity_ = recovered.identity;
    Snapshot &edited = recovered.edited;
    const AudioFileEditorPositions positions = editorPositions(*contents_);
    const AudioEditorModel::Batch batch(model_);
    if (recovered.base) {
        journal_.setBase(path_, identity_, *contents_, *recovered.base);
        model_.load(std::move(*recovered.base), positions.markers, positions.loop, std::move(recovered.basePeaks));
        savedVersion_ = model_.state().contentVersion;
        model_.recover(std::move(edited));
    } else {
        constexpr std::int64_t never = -1;
        journal_.setBase(path_, std::nullopt, *contents_, AudioEditorBuffer());
        model_.load(std::move(*edited.buffer), std::move(edited.markers), edited.loop, std::move(edited.peaks));
        savedVersion_ = never;
    }
    AudioEditorLoops::setCanStoreLoop(model_, contents_->canStoreLoop());
    journal_.takeOver(std::move(journal));
}

void AudioDocument::letGo() {
    edits_.cancel();
    journal_.discard();
}

}  // namespace kiv
