#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "Audio/Files/AudioFileContents.h"

namespace kiv {

// How a kind of file is put together from chunks.
struct WrappingDialect {
    SampleWrapping::Kind kind;
    std::string_view magic;
    const char *name;  // as the user knows it
    std::endian order;
    std::size_t idBytes, sizeBytes;  // of a chunk's header
    std::int64_t first;              // where the first chunk begins
    std::int64_t countedHeader;      // bytes of a chunk's header that its size counts
    std::int64_t alignment;          // of chunks
    std::size_t formSize;            // where the whole file's size stands; 0: nowhere
    std::int64_t formLess;           // what that leaves out
    std::string_view audioId = "data";
    std::string_view idRest = "";  // what stands behind the four characters in the ids of chunks that a WAV file would have too

    std::int64_t header() const { return std::int64_t(idBytes + sizeBytes); }
};

inline constexpr std::size_t cafDescription = 32;  // bytes of a "desc" chunk

// By the first four bytes, or by kind; null for those that have no chunks.
const WrappingDialect *dialectOf(std::string_view magic);
const WrappingDialect *dialectOf(SampleWrapping::Kind kind);

}  // namespace kiv
