#pragma once

#include "Audio/Files/AudioFileContents.h"
#include "Audio/Files/AudioFileImage.h"
#include "Platform/DecodedReader.h"
#include "Support/Progress.h"

namespace kiv {

// Whether a file of a decoded kind holds what it was written for: its format, every sample to the last bit as the file stores
// it, nothing behind the last, and what stands around them. `image` is what was to be written. FLAC is read on all cores.
// Counts frames. Blocks; any thread but the main and audio threads. Throws what the source throws, and Cancelled.
bool readsBack(DecodedReader *decoders, const ByteSource &written, const AudioFileContents &contents,
               const AudioFileCodec::AudioFileImage &image, Progress &progress);

}  // namespace kiv
