#pragma once

#include <optional>
#include <string>

#include "Audio/Files/NativeFile.h"
#include "Audio/Files/SourceReader.h"
#include "Audio/Files/WrappingDescription.h"

// Files of other kinds whose samples are not compressed: AU, CAF, W64, RF64, BW64 and RIFX. They are taken apart by their own
// structure, and put together again around other samples. Throws AudioFileError `unreadable`.
namespace kiv {

// Such a file's wrapping, with what it says of the sound: positions, the loop, texts. Nothing for other files, and for samples
// that are compressed or of an encoding that is not ours.
std::optional<NativeFile> findWrapping(const SourceReader &reader);

// The wrapping, without positions and loop; nothing for files of which it is not known what stands around the samples.
std::optional<NativeFile> takeApart(const SourceReader &reader, WrappedSamples samples);

// Only AU files.
std::optional<NativeFile> takeAuApart(const SourceReader &reader, WrappedSamples samples);

// Positions and the loop, from the chunks of the wrapping.
void collectPositions(AudioFileContents &contents, SampleWrapping &wrapping);

// Gives contents with a wrapping the shape of what it holds.
void describeWrapped(AudioFileContents &contents, const std::string &typeName, const WrappedFormat &format);

// What is no chunk, and is kept as it is.
SampleWrapping::Part keptPart(Bytes bytes);

}  // namespace kiv
