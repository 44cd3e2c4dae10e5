#pragma once

#include <cstdint>
#include <vector>

#include "Support/ByteSource.h"

// Tags that programs put before and behind the sound of files of any kind: ID3, APE, Lyrics3. Throw what the source throws.
namespace kiv {

// Where the ID3v2 tags end that stand at the start of a file, one behind the other; 0 where there is none. As they say
// themselves: it may lie behind the end of the file.
std::int64_t endOfTagsAtStart(const ByteSource &source);

struct SoundTag {
    enum class Kind { id3v1, id3v2, ape, lyrics };

    Kind kind = Kind::id3v1;
    std::int64_t start = 0, size = 0;  // bytes
};

// The tags that stand at the end of a file, the last one first. Nothing before `lowest` is one.
std::vector<SoundTag> tagsAtEnd(const ByteSource &source, std::int64_t lowest);

// Where the tags start that stand at the end of a file; its size where there is none. Nothing before `lowest` is one.
std::int64_t startOfTagsAtEnd(const ByteSource &source, std::int64_t lowest);

}  // namespace kiv
