#pragma once

#include <bit>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Audio/Files/SourceReader.h"

namespace kiv {

// A chunk found in a file: its payload, as far as the file really holds it. One without an id is a run of chunks that are
// carried together, their headers and pad bytes included.
struct RawChunk {
    std::string id;
    std::int64_t start = 0;    // of the payload
    std::int64_t size = 0;     // of the payload, without the pad byte
    std::int64_t missing = 0;  // bytes that it says it has and the file does not hold
};

// The chunks that follow one another from byte 12 on, in RIFF (little-endian sizes) and FORM files (big-endian) alike.
struct ChunkScan {
    std::vector<RawChunk> chunks;
    std::optional<std::size_t> audio;  // which of them is the audio chunk
    std::int64_t end = 0;              // where the last chunk ends, its pad byte included; never past the file

    const RawChunk *audioChunk() const { return audio ? &chunks[*audio] : nullptr; }
    const RawChunk *first(std::string_view id) const;
};

// Believes neither the form's own size, which many writers leave wrong, nor a chunk's, which is cut to what the file holds.
ChunkScan scanChunks(const SourceReader &reader, std::endian order, std::string_view formatId, std::string_view audioId);

// Whether a size is what a streaming writer leaves that never came back to it: a file with less is as it should be.
bool isLeftOpen(std::int64_t declaredBytes);

// The chunks with their payloads; the audio chunk without.
std::vector<AudioFileChunk> readChunks(const SourceReader &reader, const ChunkScan &scan);

}  // namespace kiv
