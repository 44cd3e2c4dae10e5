#pragma once

#include <vector>

#include "Audio/Files/AudioFileContents.h"
#include "Audio/Files/SourceReader.h"

namespace kiv {

// The metadata blocks of a FLAC file that stay true when its audio changes, in their order: what applications keep there, tags
// and pictures. Nothing for a file that is no FLAC file; what a damaged one still holds of them.
std::vector<FlacMetadataBlock> readFlacMetadata(const SourceReader &reader);

}  // namespace kiv
