#pragma once

#include "Platform/DecodedReader.h"

namespace kiv {

// FLAC of 4 to 32 bits. Nothing when the source does not start as FLAC does, behind an ID3 tag or not.
std::unique_ptr<DecodedSound> openFlac(const ByteSource &source);

}  // namespace kiv
