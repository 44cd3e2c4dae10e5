#pragma once

#include <vector>

#include "Audio/Files/AudioFileContents.h"
#include "Support/ByteSource.h"

namespace kiv {

// The metadata blocks of a FLAC file that stay true when its audio changes, in their order: what applications keep there, tags
// and pictures. Nothing for a file that is no FLAC file; what a damaged one still holds of them.
std::vector<FlacMetadataBlock> readFlacMetadata(const ByteSource &source);

// Puts what stands before a FLAC stream and behind its last frame, which ends at `end`, into the contents: tags of kinds that
// are not FLAC's own. Of what was a frame and is damaged, nothing. Both ends lie inside the source.
void keepAroundFlac(AudioFileContents &contents, const ByteSource &source, std::int64_t end);

}  // namespace kiv
