#pragma once

#include <string>

#include "Audio/Files/AudioFileContents.h"
#include "Platform/DecodedReader.h"
#include "Platform/Files.h"
#include "Support/Progress.h"

namespace kiv {

// Puts the contents, in their own format, in the place of the file at a path. What is not written in a form of our own is read
// back before it takes that place. Blocks; any thread but the main and audio threads. Throws AudioFileError, std::system_error
// and Cancelled; the file is then as it was.
void writeAudioFile(Files &files, DecodedReader *decoders, const std::string &path, const AudioFileContents &contents,
                    Progress &progress);

}  // namespace kiv
