#pragma once

#include "Audio/Files/AudioFileContents.h"
#include "Audio/Files/AudioFileImage.h"
#include "Platform/DecodedReader.h"
#include "Support/ByteSource.h"
#include "Support/Progress.h"

namespace kiv {

// Whether a FLAC file holds what it was written for, its tags as well. Read on all cores. Throws as readsBack() does, and
// DecodeFault.
bool isFlacAsWritten(DecodedReader &decoders, const ByteSource &written, const AudioFileContents &contents,
                     const AudioFileCodec::AudioFileImage &image, Progress &progress);

}  // namespace kiv
