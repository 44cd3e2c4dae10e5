#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>

namespace kiv {

// The last moments of the sound before and after the equalizer, the channels mixed to one. The audio thread writes, the main
// thread reads a block now and then; neither waits. A block read while it is written to may be a mixture of old and new, which
// a picture of a spectrum bears.
class AnalyzerTap {
public:
    static constexpr std::size_t blockFrames = 4096;

    // Audio thread: both before and after for the same frames, then advance.
    void writeBefore(std::span<const float> interleaved, int channels) { write(before_, interleaved, channels); }
    void writeAfter(std::span<const float> interleaved, int channels) { write(after_, interleaved, channels); }
    void advance(std::size_t frames) { written_.store(written_.load(std::memory_order_relaxed) + frames); }

    // Main thread: the newest blocks of blockFrames samples each. False, with nothing read, as long as there are not as many or
    // when none have come since the last call.
    bool read(std::span<float> before, std::span<float> after);
    // Main thread, while nothing is rendered: what was written before this counts no more.
    void restart() { start_ = lastRead_ = written_.load(); }

private:
    static constexpr std::size_t size = 4 * blockFrames;
    using Ring = std::array<std::atomic<float>, size>;

    void write(Ring &ring, std::span<const float> interleaved, int channels);

    Ring before_{}, after_{};
    std::atomic<std::uint64_t> written_{0};
    std::uint64_t start_ = 0, lastRead_ = 0;
};

}  // namespace kiv
