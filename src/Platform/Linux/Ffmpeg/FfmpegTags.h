#pragma once

#include "Platform/DecodedReader.h"

namespace kiv {

// The tags and pictures of any file that FFmpeg knows. Nothing for others.
std::optional<DecodedTags> tagsWithFfmpeg(const ByteSource &source);

}  // namespace kiv
