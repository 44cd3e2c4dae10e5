#pragma once

#include <algorithm>
#include <vector>

#include "Platform/DecodedReader.h"
#include "ReaderCheck.h"

namespace kiv::readerCheck {

// Blocks of frames until no more come, or enough have. Returns how many; nothing where there might be more.
inline std::optional<std::int64_t> decode(DecodedSound &sound) {
    constexpr std::int64_t enough = 1 << 20, most = 1000;
    std::vector<float> block(std::size_t(most * sound.format().channels));
    for (std::int64_t frames = 0; frames < enough;) {
        const std::int64_t got = sound.read(block);
        require(got >= 0 && got <= most, "no more frames than asked for");
        frames += got;
        if (got < most) return frames;
    }
    return std::nullopt;
}

// A sound that may be read from its midst on too.
inline void decodeHalf(const DecodedSound &sound, const ByteSource &source) {
    const std::int64_t start = sound.expectedFrames() / 2;
    const auto part = start > 0 ? sound.from(source, start) : nullptr;
    if (part) decode(*part);
}

// What must hold for any bytes whatever that are given to a decoder: it leaves them alone, finds them damaged, or decodes whole
// frames until no more come.
inline void drain(std::unique_ptr<DecodedSound> (*open)(const ByteSource &), const std::uint8_t *data, std::size_t size,
                  std::optional<DecodedTags> (*tags)(const ByteSource &) = nullptr) {
    const MemorySource source(std::as_bytes(std::span(data, size)));
    try {
        if (tags) tags(source);
        const auto sound = open(source);
        if (!sound) return;
        require(sound->format().channels > 0 && sound->format().sampleRate > 0, "a sound has channels and a rate");
        const auto frames = decode(*sound);
        const auto counted = open(source)->countFrames();
        require(!counted || !frames || *counted == *frames, "a length that is told is true");
        decodeHalf(*sound, source);
    } catch (const DecodeFault &) {
    }
}

}  // namespace kiv::readerCheck
