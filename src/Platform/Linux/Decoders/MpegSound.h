#pragma once

#include "Platform/DecodedReader.h"

namespace kiv {

// MPEG audio of layers 1 to 3, behind ID3 tags or not. Nothing when two frames that belong together do not stand where the
// first must: others may know more of it.
std::unique_ptr<DecodedSound> openMpeg(const ByteSource &source);

// What its ID3 tag says in words; nothing where openMpeg finds nothing.
std::optional<DecodedTags> tagsOfMpeg(const ByteSource &source);

// Whether a source starts as MPEG audio does, whatever there is behind that.
bool startsAsMpeg(const ByteSource &source);

}  // namespace kiv
