#pragma once

#include <cstdint>

#include "Support/ByteSource.h"

// Tags that programs put before and behind the sound of files of any kind: ID3, APE, Lyrics3. Throw what the source throws.
namespace kiv {

// Where the ID3v2 tags end that stand at the start of a file, one behind the other; 0 where there is none. As they say
// themselves: it may lie behind the end of the file.
std::int64_t endOfTagsAtStart(const ByteSource &source);

// Where the tags start that stand at the end of a file; its size where there is none. Nothing before `lowest` is one.
std::int64_t startOfTagsAtEnd(const ByteSource &source, std::int64_t lowest);

}  // namespace kiv
