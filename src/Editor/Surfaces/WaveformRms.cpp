#include "Editor/Surfaces/WaveformRms.h"

#include <utility>

namespace kiv {
namespace {

// What is read at once takes no longer than a frame of the screen.
constexpr std::int64_t samplesReadAtOnce = std::int64_t(1) << 21;

}  // namespace

SoundSource soundSource(const AudioEditorState &state, const WaveformRms &rms) {
    return {state.buffer, state.peaks, rms.powers(), state.generation, rms.revision()};
}

WaveformRms::WaveformRms(AudioEditorModel &model, Jobs &jobs) : model_(model), jobs_(jobs) {
    modelChanges_ = model.observers.add([this](const Changes &changes) {
        if (changes.contains(Change::audio)) return soundChanged();
        if (!changes.contains(Change::peaks)) return;
        ++revision_;  // the columns are measured from both
        completed.notify(*this);
    });
    soundChanged();
}

WaveformRms::~WaveformRms() {
    if (progress_) progress_->cancel();
}

void WaveformRms::soundChanged() {
    if (progress_) progress_->cancel();
    progress_ = nullptr;
    const AudioEditorBuffer &now = model_.state().buffer;
    powers_ = carriedPowers(now, buffer_, powers_);
    buffer_ = now;
    ++revision_;
    if (unknownBlocks(powers_) * AudioEditorPeaks::blockSize * now.channels() <= samplesReadAtOnce)
        completePowers(buffer_, powers_);
    else
        startJob();
}

void WaveformRms::startJob() {
    const auto progress = progress_ = std::make_shared<Progress>();
    const auto powers = std::make_shared<BlockPowers>(powers_);
    const auto work = [powers, buffer = buffer_](Progress &wanted) { completePowers(buffer, *powers, &wanted); };
    const auto done = [this, powers, progress, alive = std::weak_ptr<int>(alive_)](std::exception_ptr failure) {
        if (alive.expired() || progress != progress_ || failure) return;
        install(std::move(*powers));
    };
    jobs_.run(progress, work, done);
}

void WaveformRms::install(BlockPowers powers) {
    progress_ = nullptr;
    powers_ = std::move(powers);
    ++revision_;
    completed.notify(*this);
}

}  // namespace kiv
