#pragma once

#include <cstddef>

// The layout of the chunks that describe the samples, as byte offsets into their payloads.
namespace kiv {

namespace FmtChunk {
inline constexpr std::size_t formatTag = 0;       // u16
inline constexpr std::size_t channels = 2;        // u16
inline constexpr std::size_t sampleRate = 4;      // u32
inline constexpr std::size_t byteRate = 8;        // u32
inline constexpr std::size_t blockAlign = 12;     // u16
inline constexpr std::size_t bitsPerSample = 14;  // u16
inline constexpr std::size_t plainSize = 16;
// Only where the tag is the extensible one.
inline constexpr std::size_t validBits = 18;    // u16
inline constexpr std::size_t channelMask = 20;  // u32
inline constexpr std::size_t subFormat = 24;    // a GUID that begins with the tag
inline constexpr std::size_t extensibleSize = 40;

inline constexpr unsigned integerTag = 1, floatTag = 3, extensibleTag = 0xFFFE;
}  // namespace FmtChunk

namespace CommChunk {
inline constexpr std::size_t channels = 0;    // i16
inline constexpr std::size_t frames = 2;      // u32
inline constexpr std::size_t sampleSize = 6;  // i16, in bits
inline constexpr std::size_t sampleRate = 8;  // 80-bit extended
inline constexpr std::size_t plainSize = 18;
inline constexpr std::size_t compression = 18;  // four characters, AIFC only
inline constexpr std::size_t aifcSize = 22;
}  // namespace CommChunk

namespace SsndChunk {
inline constexpr std::size_t offset = 0;  // u32: bytes between this header and the samples
inline constexpr std::size_t header = 8;  // the offset, and a block size that nobody uses
}  // namespace SsndChunk

}  // namespace kiv
