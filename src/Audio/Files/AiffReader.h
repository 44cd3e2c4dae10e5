#pragma once

#include "Audio/Files/AudioFileContents.h"
#include "Audio/Files/SourceReader.h"

namespace kiv {

// Reads a FORM file of type AIFF (container aiff) or AIFC (container aifc). Throws AudioFileError `unreadable`, and
// `unsupported` for sample encodings that are not ours.
AudioFileContents readAiff(const SourceReader &reader, AudioContainer container);

}  // namespace kiv
