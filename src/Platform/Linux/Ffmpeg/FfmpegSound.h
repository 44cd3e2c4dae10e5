#pragma once

#include "Platform/DecodedReader.h"

namespace kiv {

// AAC and ALAC in MP4, WMA, WavPack and whatever else FFmpeg finds sound in. Nothing for what it does not know with confidence.
std::unique_ptr<DecodedSound> openWithFfmpeg(const ByteSource &source);

}  // namespace kiv
