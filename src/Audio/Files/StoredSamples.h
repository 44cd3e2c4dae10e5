#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "Audio/Files/AudioFileContents.h"

// Samples as they come back from a file that holds them: rounded and clipped as when they are written. Interleaved, those of
// `part`; pure functions.
namespace kiv {

// Integers of 4 … 32 bits. Where the samples come from wide integers, those hold them exactly.
std::vector<std::int32_t> integersOf(const AudioEditorBuffer &buffer, FrameRange part, int bits);

// `out` holds part.count() · channels.
void storedSamples(const AudioEditorBuffer &buffer, FrameRange part, const AudioSampleEncoding &encoding, std::span<float> out);

}  // namespace kiv
