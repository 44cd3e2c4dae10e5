#pragma once

#include "Platform/DecodedReader.h"

namespace kiv {

// CAF, AU, Ogg Vorbis, Opus, W64, RF64, RIFX, compressed WAV and AIFC, and what else libsndfile knows. Nothing for others.
std::unique_ptr<DecodedSound> openWithSndfile(const ByteSource &source);
std::optional<DecodedTags> tagsWithSndfile(const ByteSource &source);

}  // namespace kiv
