#include "Platform/Fake/FakeAudioOutput.h"

#include <stdexcept>
#include <utility>

namespace kiv {

void FakeAudioOutput::start(const Format &format, Render render) {
    stop();
    if (!failure.empty()) throw std::runtime_error(failure);
    const std::lock_guard lock(mutex_);
    render_ = std::move(render);
    format_ = format;
    running_ = paused_ = true;
    ++starts;
}

void FakeAudioOutput::resume() {
    const std::lock_guard lock(mutex_);
    paused_ = false;
}

void FakeAudioOutput::pause() {
    const std::lock_guard lock(mutex_);
    paused_ = true;
    ++pauses;
}

void FakeAudioOutput::stop() {
    const std::lock_guard lock(mutex_);
    running_ = false;
    render_ = nullptr;
}

std::vector<float> FakeAudioOutput::render(std::int64_t frames) {
    std::vector<float> out(std::size_t(frames * format_.channels));
    renderInto(out);
    return out;
}

bool FakeAudioOutput::renderInto(std::span<float> out) {
    const std::lock_guard lock(mutex_);
    const bool plays = running_ && !paused_;
    if (plays) render_(out);
    return plays;
}

void FakeAudioOutput::lose(const std::string &reason) {
    if (!running_) return;
    stop();
    if (onLost) onLost(reason);
}

}  // namespace kiv
