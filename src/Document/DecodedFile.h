#pragma once

#include <string>

#include "Audio/Files/AudioFileCodec.h"
#include "Platform/DecodedReader.h"
#include "Support/Progress.h"

// Files of kinds that are not our own, as contents. Block; any thread but the main and audio threads. Throw AudioFileError
// `unreadable` where the decoder finds the file damaged, what the source throws, and Cancelled.
namespace kiv {

// What a format of such a file has for its extension: the path's own.
std::string pathExtension(const std::string &path);

// Nothing when no decoder knows the file. The path is for the extension.
std::optional<AudioFileContents> readDecoded(DecodedReader &decoders, const ByteSource &source, const std::string &path,
                                             Progress &progress);

// The same without the samples. A file that does not tell its length for certain is decoded to its end.
std::optional<AudioFileCodec::AudioFileSummary> summarizeDecoded(DecodedReader &decoders, const ByteSource &source,
                                                                 const std::string &path, Progress &progress);

}  // namespace kiv
