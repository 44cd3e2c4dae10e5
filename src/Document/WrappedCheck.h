#pragma once

#include "Audio/Files/AudioFileContents.h"
#include "Audio/Files/AudioFileImage.h"
#include "Platform/DecodedReader.h"
#include "Support/ByteSource.h"
#include "Support/Progress.h"

namespace kiv {

// Whether a file with a wrapping does: we find the samples again as they were written, and whoever else knows the file finds
// the same ones. Throws as readsBack() does.
bool isWrappedAsWritten(DecodedReader *decoders, const ByteSource &written, const AudioFileContents &contents,
                        const AudioFileCodec::AudioFileImage &image, Progress &progress);

}  // namespace kiv
