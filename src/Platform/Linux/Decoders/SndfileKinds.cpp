#include "Platform/Linux/Decoders/SndfileKinds.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "Support/ChunkHeaders.h"

namespace kiv {
namespace {

// The library looks for a chunk elsewhere where none can be.
bool isName(std::string_view id) {
    return std::all_of(id.begin(), id.end(), [](char each) { return each >= ' ' && each <= '~'; });
}

bool isMpegFormat(const ByteSource &source, const ChunkHeaders::Chunk &chunk, std::endian order) {
    constexpr int mpeg = 0x50, mpegLayer3 = 0x55;
    std::array<std::uint8_t, 2> bytes{};
    if (chunk.id != "fmt " || source.read(chunk.start, std::as_writable_bytes(std::span(bytes))) < bytes.size()) return false;
    const int tag = order == std::endian::big ? bytes[0] << 8 | bytes[1] : bytes[1] << 8 | bytes[0];
    return tag == mpeg || tag == mpegLayer3;
}

// Samples may be cut off.
bool isRiffForSndfile(const ByteSource &source) {
    ChunkHeaders chunks(source);
    while (const auto chunk = chunks.next()) {
        if (!isName(chunk->id) || isMpegFormat(source, *chunk, chunks.order())) return false;
        if (chunk->end() > source.size()) return chunk->id == "data";
    }
    return true;
}

// Whether all packets are there that it needs, and look like packets.
bool isWholeSampleDump(const ByteSource &source) {
    constexpr std::int64_t header = 21, packet = 127, mostBytes = 120;  // of samples in a packet
    std::array<std::uint8_t, header> head{};
    if (source.read(0, std::as_writable_bytes(std::span(head))) < head.size()) return false;
    const std::int64_t bits = head[6], frames = head[10] | head[11] << 7 | head[12] << 14;
    const std::int64_t perPacket = mostBytes / ((std::max<std::int64_t>(bits, 1) + 6) / 7);
    if (bits > 28 || frames == 0) return false;
    for (std::int64_t i = 0; i * perPacket < frames; ++i) {
        std::array<std::uint8_t, packet> found{};
        const std::size_t count = source.read(header + i * packet, std::as_writable_bytes(std::span(found)));
        if (count < found.size() || found[0] != 0xF0 || found[1] != 0x7E || found[3] != 2) return false;
    }
    return true;
}

}  // namespace

bool isBrokenSampleDump(const ByteSource &source) {
    std::array<char, 4> bytes{};
    const std::string_view head(bytes.data(), source.read(0, std::as_writable_bytes(std::span(bytes))));
    return head.starts_with("\xF0\x7E") && head.ends_with('\1') && !isWholeSampleDump(source);
}

bool isForSndfile(const ByteSource &source) {
    std::array<char, 4> bytes{};
    const std::string_view head(bytes.data(), source.read(0, std::as_writable_bytes(std::span(bytes))));
    const bool isMpegFrame = head.size() > 1 && head[0] == '\xFF' && std::uint8_t(head[1]) >= 0xE0;
    if (isMpegFrame || head.starts_with("ID3")) return false;
    return (head != "RIFF" && head != "RIFX") || isRiffForSndfile(source);
}

}  // namespace kiv
