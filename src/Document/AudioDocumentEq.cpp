#include "Document/AudioDocument.h"

// Where the document meets its equalizer.
namespace kiv {

bool AudioDocument::isEqPending() const { return model_.state().eqEnabled && !eq_.settings().isTransparent(); }

void AudioDocument::applyEq() {
    if (!isEditing()) kiv::applyEq(model_, eq_.settings(), model_.activeRange());
}

void AudioDocument::updateEq() {
    if (!model_.state().eqEnabled) eq_.resetAnalyzer();
    if (!services_.playback) return;
    services_.playback->setEq(eqTargets(), this);
    services_.playback->setEqTap(model_.state().eqEnabled, this);
}

// Called with every tick of the playback, which is about twice as often as the picture is to change.
void AudioDocument::feedAnalyzer() {
    eqInput_.resize(AnalyzerTap::blockFrames);
    eqOutput_.resize(AnalyzerTap::blockFrames);
    if (std::exchange(analyzerRests_, !analyzerRests_)) return;
    if (services_.playback->readAnalyzer(this, eqInput_, eqOutput_)) eq_.analyze(eqInput_, eqOutput_);
}

}  // namespace kiv
