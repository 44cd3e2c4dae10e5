#pragma once

#include "Platform/DecodedReader.h"

namespace kiv {

// Ogg Vorbis, Opus and FLAC: all that stand one behind the other, as long as their channels and sample rates agree. Nothing for
// others, and for what is no Ogg file.
std::unique_ptr<DecodedSound> openOgg(const ByteSource &source);

}  // namespace kiv
