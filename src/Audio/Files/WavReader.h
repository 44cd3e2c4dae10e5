#pragma once

#include "Audio/Files/NativeFile.h"
#include "Audio/Files/SourceReader.h"

namespace kiv {

// Reads a RIFF file of form WAVE. Throws AudioFileError `unreadable`, and `unsupported` for sample encodings that are not ours.
NativeFile readWav(const SourceReader &reader);

}  // namespace kiv
