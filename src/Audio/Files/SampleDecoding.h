#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "Audio/Files/AudioFileContents.h"
#include "Audio/Files/SourceReader.h"

namespace kiv {

// Samples as they stand in a file, made 32-bit floats: integers scaled so that full scale is ±1, which is exact up to 24 bits
// and rounded once, to the nearest, for 32; 32-bit floats with their very bits, those that are not numbers included; 64-bit
// floats narrowed. `in` holds encoding.bytes for each sample of `out`.
void decodeSamples(std::span<const std::byte> in, const AudioSampleEncoding &encoding, std::span<float> out);

// Where the samples of a file stand, and how many whole frames of them.
struct AudioPlace {
    std::int64_t start = 0;
    std::int64_t frames = 0;
};

// The samples at a place in a source, read and decoded on all cores in one pass; what floats leave out of them stays with them
// as a SampleResidue. Throws what SourceReader throws.
AudioEditorBuffer readSamples(const SourceReader &reader, AudioPlace place, const AudioSampleEncoding &encoding,
                              std::int64_t channels, std::int64_t sampleRate);

}  // namespace kiv
