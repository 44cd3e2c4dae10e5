#pragma once

#include <cstdint>

#include "Audio/Files/AudioFileContents.h"
#include "Support/ByteSource.h"

namespace kiv {

// Of a file of a kind that has a wrapping, or a WAV or AIFC file, whose samples others decode: what stands around them goes
// into the tags of the contents that were decoded, with positions and the loop. What the user is told of the file names the
// encoding. Nothing happens to contents of other files.
void keepAroundPacked(AudioFileContents &contents, std::int64_t frames, const ByteSource &source);

}  // namespace kiv
