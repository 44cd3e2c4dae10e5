#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// A chunk of a file, and where in it positions are stored.
namespace kiv {

using Bytes = std::vector<std::byte>;

// A place inside a chunk where a sample position is stored, as 32 unsigned bits but for `real`. Small, for a file may hold
// millions.
struct AudioFilePositionField {
    enum class Kind : std::uint8_t {
        frame,         // the position itself
        inclusiveEnd,  // the last frame inside a range: the position − 1
        length,        // frames counted from positions[from]
        real,          // the position itself, as a 64-bit float; in CAF files
    };

    std::uint32_t offset = 0;  // bytes into the chunk's data
    std::uint32_t index = 0;   // into AudioFileContents::positions
    std::uint32_t from = 0;    // kind length only
    Kind kind = Kind::frame;
    bool bigEndian = false;

    friend bool operator==(const AudioFilePositionField &, const AudioFilePositionField &) = default;
};

struct AudioFileChunk {
    std::string id;  // four bytes, exactly as in the file; none: many chunks, with their headers and pad bytes
    Bytes data;      // the payload as in the file; empty for the audio chunk, whose place it marks
    std::vector<AudioFilePositionField> fields;
    std::int64_t sizeInFile = 0;  // bytes of payload that the file held, also for the audio chunk

    friend bool operator==(const AudioFileChunk &, const AudioFileChunk &) = default;
};

}  // namespace kiv
