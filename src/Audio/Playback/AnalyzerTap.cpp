#include "Audio/Playback/AnalyzerTap.h"

namespace kiv {

void AnalyzerTap::write(Ring &ring, std::span<const float> interleaved, int channels) {
    std::uint64_t at = written_.load(std::memory_order_relaxed);
    const float share = 1.0f / float(channels);
    for (std::size_t i = 0; i + std::size_t(channels) <= interleaved.size(); i += std::size_t(channels), ++at) {
        float sum = 0;
        for (int k = 0; k < channels; ++k) sum += interleaved[i + std::size_t(k)];
        ring[at % size].store(sum * share, std::memory_order_relaxed);
    }
}

bool AnalyzerTap::read(std::span<float> before, std::span<float> after) {
    const std::uint64_t written = written_.load();
    if (written - start_ < blockFrames || written == lastRead_) return false;
    lastRead_ = written;
    for (std::size_t i = 0; i < blockFrames; ++i) {
        const std::size_t at = std::size_t(written - blockFrames + i) % size;
        before[i] = before_[at].load(std::memory_order_relaxed);
        after[i] = after_[at].load(std::memory_order_relaxed);
    }
    return true;
}

}  // namespace kiv
