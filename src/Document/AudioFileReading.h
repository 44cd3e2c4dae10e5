#pragma once

#include <optional>
#include <string>

#include "Audio/Files/AudioFileCodec.h"
#include "Platform/DecodedReader.h"
#include "Platform/Files.h"
#include "Support/Progress.h"

namespace kiv {

struct AudioFileOnDisk {
    AudioFileContents contents;
    std::optional<FileSystem::Identity> identity;  // of the file when reading began
    Files::Recovery recovery = Files::Recovery::notNeeded;
};

// The sound file at a path, put back before where a save was interrupted. What is not WAV or AIFF goes to the decoders, if
// there are any: which it is, its contents say and not its name. Blocks; any thread but the main and audio threads. Throws
// AudioFileError, std::system_error and Cancelled.
AudioFileOnDisk readAudioFile(Files &files, DecodedReader *decoders, const std::string &path, Progress &progress);

// The same without the samples, which is quick for all files that tell their length for certain.
AudioFileCodec::AudioFileSummary summarizeAudioFile(Files &files, DecodedReader *decoders, const std::string &path,
                                                    Progress &progress);

// What the file says of its sound at its very beginning: no frames, but the channel count and rate that reading gives. Nothing
// for a file of no known kind. Blocks, and throws, as the others do, but puts nothing back.
std::optional<AudioEditorBuffer> audioFileShape(Files &files, DecodedReader *decoders, const std::string &path);

// Whether the file at a path holds what these contents do, sample for sample and chunk for chunk, whatever its time says. False
// also when it cannot be read. Blocks, as the others do.
bool holdsStill(Files &files, DecodedReader *decoders, const std::string &path, const AudioFileContents &contents);

}  // namespace kiv
