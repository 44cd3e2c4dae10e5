#pragma once

#include "Audio/Files/AudioFileContents.h"
#include "Platform/DecodedReader.h"
#include "Support/ByteSource.h"
#include "Support/Progress.h"

// What the checks of written files have in common.
namespace kiv {

// How the samples of a file of a decoded kind stand in it.
AudioSampleEncoding storedEncoding(const AudioFileContents &contents);

// Whether a decoder finds the channels, the rate and, in a FLAC file, the bits of the contents.
bool hasFormat(const DecodedFormat &format, const AudioFileContents &contents);

// Whether the sound goes on with just these frames of the contents, to the last bit, and ends with them. Counts frames; throws
// what the decoder throws, and Cancelled.
bool holdsOnly(DecodedSound &sound, FrameRange part, const AudioFileContents &contents, Progress &progress);

// Whether these bytes stand at that place.
bool hasBytes(const ByteSource &source, std::int64_t offset, const Bytes &bytes);

}  // namespace kiv
