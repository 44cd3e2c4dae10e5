#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "Audio/Files/AudioFileContents.h"
#include "Audio/Files/AudioFileError.h"
#include "Audio/Files/AudioFileImage.h"
#include "Support/ByteSource.h"
#include "Support/Progress.h"

// Reading and writing WAV and AIFF/AIFC. Pure functions over byte sources and sinks; any thread but the audio thread. Sizes in
// files are never believed: each is checked by subtraction against what is left, and memory asked for stays within a small
// multiple of the bytes that are really there.
namespace kiv::AudioFileCodec {

// The contents of a WAV, AIFF or AIFC file; nothing when it is none of these, or when its sample encoding is not one of ours
// (another decoder may then try). Counts the bytes of the file as they are read. Throws AudioFileError `unreadable`, also for
// a source that fails, and Cancelled.
std::optional<AudioFileContents> readNative(const ByteSource &source, Progress *progress = nullptr);
std::optional<AudioFileContents> readNative(std::span<const std::byte> bytes);

// The same without the samples, which is quick however long the sound: the contents' buffer has channels and rate, and no
// frames.
struct AudioFileSummary {
    AudioFileContents contents;
    std::int64_t frames = 0;
};
std::optional<AudioFileSummary> summarizeNative(const ByteSource &source);

// The same for files of other kinds whose samples are not compressed: AU, CAF, W64, RF64, BW64 and RIFX. Their container is
// coreAudio, and their format has no extension. Nothing for other files.
std::optional<AudioFileContents> readWrapped(const ByteSource &source, Progress *progress = nullptr);
std::optional<AudioFileSummary> summarizeWrapped(const ByteSource &source);

// The metadata blocks of a FLAC file that stay true when its audio changes: applications' own, tags, pictures. Nothing for
// other files.
std::vector<FlacMetadataBlock> flacMetadata(const ByteSource &source);

// Throws AudioFileError `unsupported`, which names the kind of samples, for a WAV, AIFF or AIFC file whose samples are not
// ours.
void throwIfUnsupported(const ByteSource &source);

// The file for contents whose container is wav, or aiff and aifc. Throws AudioFileError `unsupported` ("no PCM encoding"),
// `tooLarge`, and `writeCheckFailed` for more channels or a higher rate than the format can say.
AudioFileImage wavImage(const AudioFileContents &contents);
AudioFileImage aiffImage(const AudioFileContents &contents);
AudioFileImage nativeImage(const AudioFileContents &contents);  // by container
// A FLAC file of 4 to 32 bits with the metadata blocks of the contents; its audio is not compressed. Throws AudioFileError
// `writeCheckFailed` for what FLAC cannot hold: more than 8 channels, or rates above 1,048,575 Hz.
AudioFileImage flacImage(const AudioFileContents &contents, int bits);
// A file of another kind with its wrapping as it was and the sizes in it set right. Throws AudioFileError `tooLarge`, and
// `writeCheckFailed` where the wrapping does not fit the sound.
AudioFileImage wrappedImage(const AudioFileContents &contents);
// The file in the contents' own format, whichever that is. Throws as these do, and `unsupported` where there is no writer.
AudioFileImage fileImage(const AudioFileContents &contents);

// The chunk's payload with every position field rewritten. A field whose index is not in positions, or that does not fit into
// the payload, is passed over; values are clamped to 0 … 0xFFFFFFFF.
Bytes patched(const AudioFileChunk &chunk, const std::vector<std::int64_t> &positions);

// The samples of a range as bytes: integers rounded half away from zero and clipped to the container's width, what is not
// finite as 0. `out` holds range.count() · channels · encoding.bytes.
void encodeSamples(const AudioEditorBuffer &buffer, FrameRange range, const AudioSampleEncoding &encoding,
                   std::span<std::byte> out);

// Contents for a new file made from part of the audio: the same format, only bare chunks, no positions, no loop.
AudioFileContents bareContents(AudioEditorBuffer buffer, const AudioFileContents &contents);

// Brings the file's loop chunks in line with a loop that the editor has and the file has not, or the other way round: the
// entries are added to or taken out of the chunks and the positions. Where the file has a loop already, adding moves it; where
// it has none, removing changes nothing, and neither does anything to a file that our writers do not write.
AudioFileContents addingLoop(AudioFileContents contents, std::int64_t start, std::int64_t end);
AudioFileContents removingLoop(AudioFileContents contents);

}  // namespace kiv::AudioFileCodec
