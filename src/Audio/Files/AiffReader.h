#pragma once

#include "Audio/Files/NativeFile.h"
#include "Audio/Files/SourceReader.h"

namespace kiv {

// Reads a FORM file of type AIFF (container aiff) or AIFC (container aifc). Throws AudioFileError `unreadable`, and
// `unsupported` for sample encodings that are not ours.
NativeFile readAiff(const SourceReader &reader, AudioContainer container);

}  // namespace kiv
