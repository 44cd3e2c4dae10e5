#pragma once

#include <optional>

#include "Audio/Files/NativeFile.h"
#include "Audio/Files/SourceReader.h"

// Files of other kinds whose samples are not compressed: AU, CAF, W64, RF64, BW64 and RIFX. They are taken apart by their own
// structure, and put together again around other samples.
namespace kiv {

// Such a file's wrapping, with what it says of the sound: positions, the loop, texts. Nothing for other files, and for samples
// that are compressed or of an encoding that is not ours. Throws AudioFileError `unreadable`.
std::optional<NativeFile> findWrapping(const SourceReader &reader);

// Of a file of these kinds, or a WAV or AIFC file, whose samples others decode: what stands around them goes into the tags of
// the contents that were decoded, with positions and the loop. What the user is told of the file names the encoding. Nothing
// happens to contents of other files.
void keepAroundPacked(AudioFileContents &contents, std::int64_t frames, const ByteSource &source);

// Only what says what the samples are.
SampleWrapping bareWrapping(SampleWrapping wrapping);

// The wrapping around another sound: sizes and number of channels follow, and what names a speaker for each channel is left
// out where they are others. Throws AudioFileError `tooLarge`.
SampleWrapping wrappingFor(SampleWrapping wrapping, const AudioEditorBuffer &sound);

// How many zeros stand behind the samples.
std::int64_t paddingBehind(const SampleWrapping &wrapping, std::int64_t sampleBytes);

}  // namespace kiv
