#include "Editor/AudioEditorLoopPanel/ZeroCrossings.h"

#include <algorithm>

#include "Editor/AudioEditorLoopPanel/AudioEditorLoopFinder.h"

namespace kiv {

void ChannelSums::hold(std::int64_t frame) {
    constexpr std::int64_t around = 512;
    const std::int64_t channels = buffer_.channels();
    held_ = {std::max<std::int64_t>(frame - around, 0), std::min(frame + around, buffer_.frames())};
    std::vector<float> samples(std::size_t(held_.count() * channels));
    buffer_.copyFrames(held_, samples.data());
    sums_.assign(std::size_t(held_.count()), 0.0f);
    for (std::size_t i = 0; i < samples.size(); ++i) sums_[i / std::size_t(channels)] += samples[i];
}

namespace AudioEditorLoopFinder {

std::optional<std::int64_t> zeroCrossing(const AudioEditorBuffer &buffer, std::int64_t from, int direction, int count) {
    const std::int64_t frames = buffer.frames(), step = direction < 0 ? -1 : 1;
    if (frames < 2 || direction == 0) return std::nullopt;
    // What lies outside the sound is passed at once.
    std::int64_t frame = step > 0 ? std::max<std::int64_t>(from, 0) : std::min(from, frames);
    ChannelSums sums(buffer);
    std::optional<std::int64_t> found;
    for (int left = std::max(count, 1); left > 0;) {
        frame += step;
        if (frame < 1 || frame >= frames) break;
        if (!sums.changesSign(frame)) continue;
        found = frame;
        --left;
    }
    return found;
}

}  // namespace AudioEditorLoopFinder
}  // namespace kiv
