#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "Audio/Files/AudioFileContents.h"

namespace kiv {

// How a kind of file is put together from chunks.
struct WrappingDialect {
    SampleWrapping::Kind kind;
    std::string_view magic;
    const char *name;  // as the user knows it
    std::endian order;
    std::size_t idBytes = 4, sizeBytes = 4;  // of a chunk's header
    std::int64_t first = 12;                 // where the first chunk begins
    std::int64_t countedHeader = 0;          // bytes of a chunk's header that its size counts
    std::int64_t alignment = 2;              // of chunks
    std::size_t formSize = 4;                // where the whole file's size stands; 0: nowhere
    std::int64_t formLess = 8;               // what that leaves out
    std::string_view form = "WAVE";          // behind the size; empty: nothing to go by
    std::string_view audioId = "data";
    std::int64_t beforeSamples = 0;   // bytes in the audio chunk in front of the samples: a count of edits
    bool leavesZero = true;           // whether an audio chunk's size of 0 may mean that nobody came back to tell it
    bool staysOpen = false;           // whether the samples may go on to the end for good
    std::string_view idRest = "";     // what stands behind the four characters in the ids of chunks that a WAV file has too
    std::string_view markersId = "";  // the start of the id of what has no name
    std::string_view staleId = "";    // a chunk that any edit makes wrong

    std::int64_t header() const { return std::int64_t(idBytes + sizeBytes); }
};

inline constexpr std::size_t cafDescription = 32;  // bytes of a "desc" chunk

// A number of 4 or 8 bytes that says how much there is.
std::int64_t sizeAt(std::span<const std::byte> bytes, std::size_t offset, std::size_t width, std::endian order);

// By the first four bytes, or by kind; null for those that have no chunks.
const WrappingDialect *dialectOf(std::string_view magic);
const WrappingDialect *dialectOf(SampleWrapping::Kind kind);

}  // namespace kiv
