#pragma once

#include "Audio/Files/AudioFileContents.h"
#include "Support/ByteSource.h"

namespace kiv {

// What the tags at the end of a file say that the ones in front do not: ID3v1 and APE are read, others are named. For kinds of
// files whose decoders look in front alone. Throws what the source throws.
void addTagsAtEnd(AudioFileTags &tags, const ByteSource &source);

}  // namespace kiv
