#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "Audio/Files/AudioFileContents.h"

// The sample positions in an AIFF file's chunks: the markers of "MARK", two of which "INST" may name as its sustain loop.
namespace kiv {

struct AiffMarker {
    std::size_t offset = 0;  // of its record in the chunk's payload
    std::size_t length = 0;  // of its record; the last one's may reach past the payload
    std::uint16_t id = 0;
    std::uint32_t position = 0;
};

// The markers of a "MARK" payload: as many as it says, or as are there. One whose name is cut off counts.
std::vector<AiffMarker> aiffMarkers(std::span<const std::byte> payload);

inline constexpr std::size_t longestMarkerName = 255;  // bytes

// The record of a marker whose position is left to its field, which stands 2 bytes into it. A name that is too long is cut
// between characters.
Bytes aiffMarkerRecord(std::uint16_t id, std::string_view name);

struct AiffComment {
    std::size_t offset = 0, length = 0;  // the last one's length may reach past the payload
    std::uint16_t marker = 0;            // 0: on none
    std::span<const std::byte> text;
};

// The comments of a "COMT" payload: as many as it says, or as are there.
std::vector<AiffComment> aiffComments(std::span<const std::byte> payload);

// The layout of an "INST" chunk.
namespace InstChunk {
inline constexpr std::size_t size = 20;
inline constexpr std::size_t note = 0, detune = 1, lowNote = 2, highNote = 3, lowVelocity = 4, highVelocity = 5;  // a byte each
inline constexpr std::size_t gain = 6;  // i16, decibels
inline constexpr std::size_t sustainLoop = 8, releaseLoop = 14;
// Inside a loop: three u16.
inline constexpr std::size_t playMode = 0, beginMarker = 2, endMarker = 4, loopSize = 6;
}  // namespace InstChunk

// Fills positions, the chunks' fields and the loop of contents read from an AIFF file of so many frames.
void collectAiffPositions(AudioFileContents &contents, std::int64_t frames);

}  // namespace kiv
