#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "Audio/Files/AudioFileContents.h"

namespace kiv {

// Reads back blocks of FLAC whose samples stand in them as they are, in whole bytes: many times faster than a decoder, which
// has to expect anything. What all blocks of a stream have in common is taken from its first, which a decoder has understood.
class FlacBlockCheck {
public:
    // The first block holds `frames` frames, and is all there is in `first`. Where it cannot be one, nothing is found right.
    FlacBlockCheck(std::span<const std::byte> first, std::int64_t frames, std::int64_t channels, int sampleBytes);

    // Whether these bytes are just the block of that number, with checksums that are right, and hold just these samples, which
    // are interleaved and big-endian.
    bool holds(std::span<const std::byte> block, std::int64_t number, std::span<const std::byte> samples) const;

private:
    bool holdsSamples(std::span<const std::byte> subframes, std::span<const std::byte> samples) const;
    // Where the number stands, and what follows it.
    static constexpr std::size_t fixedSize = 4, lengthSize = 2;

    std::size_t channels_, sampleBytes_;
    Bytes fixed_, rate_;  // the start of the header, and what stands at its end
};

}  // namespace kiv
