#pragma once

#include <algorithm>
#include <vector>

#include "Platform/DecodedReader.h"
#include "ReaderCheck.h"

// What must hold for any bytes whatever that are given to a decoder: it leaves them alone, finds them damaged, or decodes whole
// frames until no more come.
namespace kiv::readerCheck {

inline void drain(std::unique_ptr<DecodedSound> (*open)(const ByteSource &), const std::uint8_t *data, std::size_t size,
                  std::optional<DecodedTags> (*tags)(const ByteSource &) = nullptr) {
    constexpr std::int64_t enough = 1 << 20;
    const MemorySource source(std::as_bytes(std::span(data, size)));
    try {
        if (tags) tags(source);
        const auto sound = open(source);
        if (!sound) return;
        const DecodedFormat &format = sound->format();
        require(format.channels > 0 && format.sampleRate > 0, "a sound has channels and a rate");
        std::vector<float> block(std::size_t(1000 * format.channels));
        std::int64_t frames = 0, got = 1000;
        for (; got == 1000 && frames < enough; frames += got) {
            got = sound->read(block);
            require(got >= 0 && got <= 1000, "no more frames than asked for");
        }
        const auto counted = open(source)->countFrames();
        require(!counted || got == 1000 || *counted == frames, "a length that is told is true");
    } catch (const DecodeFault &) {
    }
}

}  // namespace kiv::readerCheck
