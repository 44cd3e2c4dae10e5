#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>

#include "Audio/Files/AudioFileContents.h"

// The sample positions in a WAV file's chunks: cue points, the loops of "smpl", the regions of "LIST" "adtl".
namespace kiv {

// The layout of a "cue " chunk: a count, then records.
namespace CueChunk {
inline constexpr std::size_t header = 4;
inline constexpr std::size_t record = 24;
// Inside a record two places for the position, each u32; 0 in the second means that the first holds it.
inline constexpr std::size_t position = 4, sampleOffset = 20;
inline constexpr std::size_t chunkId = 8;      // inside a record: of the chunk that the position is counted in
inline constexpr std::size_t blockStart = 16;  // u32 inside a record: the byte at which the samples' block begins
}  // namespace CueChunk

// The layout of a "smpl" chunk: a header, then loop records, then whatever the sampler keeps there.
namespace SmplChunk {
inline constexpr std::size_t note = 12;       // u32: the key on which it sounds as it is
inline constexpr std::size_t fraction = 16;   // u32: how far above that key, in semitones of 2³²
inline constexpr std::size_t loopCount = 28;  // u32
inline constexpr std::size_t header = 36;
inline constexpr std::size_t record = 24;
inline constexpr std::size_t recordType = 4;   // u32 inside a record: 0 forward, 1 forth and back
inline constexpr std::size_t recordStart = 8;  // u32 inside a record: the loop's first frame
inline constexpr std::size_t recordEnd = 12;   // u32 inside a record: the loop's last frame

// The loop records it holds: as many as it says, or as fit. 0 when even the header is cut off.
std::size_t records(std::span<const std::byte> payload, std::endian fileOrder = std::endian::little);
}  // namespace SmplChunk

// The chunk's payload with every position field rewritten. A cue that comes to stand at frame 0 says so in both its places, or
// the first would be read with whatever it holds.
Bytes patchedWavChunk(const AudioFileChunk &chunk, const std::vector<std::int64_t> &positions);

// Fills positions, the chunks' fields and the loop of contents read from a WAV file of so many frames.
void collectWavPositions(AudioFileContents &contents, std::int64_t frames);

}  // namespace kiv
