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

// The samples at a place in a source, read and decoded on all cores in one pass. Throws what SourceReader throws.
SampleMemory readSamples(const SourceReader &reader, std::int64_t offset, std::int64_t samples,
                         const AudioSampleEncoding &encoding);

}  // namespace kiv
