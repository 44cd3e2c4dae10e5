#pragma once

#include <cstdint>
#include <memory>

#include "Editor/AudioEditorModel/AudioEditorModel.h"
#include "Editor/Surfaces/BlockPowers.h"
#include "Editor/Surfaces/WaveformColumns.h"
#include "Platform/Jobs.h"
#include "Support/Observers.h"

namespace kiv {

class WaveformRms;

// The sound in a state with its block powers, as the columns of views are measured from.
SoundSource soundSource(const AudioEditorState &state, const WaveformRms &rms);

// The block powers of a model's sound, kept up to date: a small edit at once, much work as a job, during which the untouched
// blocks stay known. One for the views of a document, made before them. Main thread only.
class WaveformRms {
public:
    WaveformRms(AudioEditorModel &model, Jobs &jobs);
    ~WaveformRms();

    const BlockPowers &powers() const { return powers_; }
    // Grows whenever powers() changes.
    std::int64_t revision() const { return revision_; }

    // Told when blocks have become known later than the sound changed.
    Observers<WaveformRms> completed;

private:
    void soundChanged();
    void startJob();
    void install(BlockPowers powers);

    AudioEditorModel &model_;
    Jobs &jobs_;
    AudioEditorBuffer buffer_;  // the one that powers_ belongs to
    BlockPowers powers_;
    std::int64_t revision_ = 0;
    std::shared_ptr<Progress> progress_;                    // of the job under way
    std::shared_ptr<int> alive_ = std::make_shared<int>();  // jobs hold it weakly
    Subscription modelChanges_;
};

}  // namespace kiv
