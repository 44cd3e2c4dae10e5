#pragma once

#include <cstddef>
#include <span>

#include "Audio/Files/AudioFileContents.h"

namespace kiv {

// The reverse of decodeSamples. Integers: scaled to the container's full width, rounded half away from zero, clipped to what
// it holds; what is not finite becomes 0. Floats: the samples' very bits, or widened to 64 bits. `out` holds encoding.bytes
// for each sample.
void encodeSamples(std::span<const float> in, const AudioSampleEncoding &encoding, std::span<std::byte> out);

}  // namespace kiv
