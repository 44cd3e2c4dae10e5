#include "Audio/Files/AiffMetadata.h"

#include "Audio/Files/ByteFields.h"
#include "Audio/Files/LoopChunks.h"
#include "Audio/Files/PositionTable.h"

namespace kiv {
namespace {

constexpr auto order = std::endian::big;

void readMarkers(AudioFileChunk &chunk, PositionTable &table) {
    for (const AiffMarker &marker : aiffMarkers(chunk.data)) {
        const std::uint32_t index = table.add(marker.position);
        chunk.fields.push_back({.offset = std::uint32_t(marker.offset + 2), .index = index, .bigEndian = true});
    }
}

}  // namespace

std::vector<AiffMarker> aiffMarkers(std::span<const std::byte> payload) {
    constexpr std::size_t idAndPosition = 6;
    std::vector<AiffMarker> markers;
    if (payload.size() < 2) return markers;
    const std::size_t count = u16At(payload, 0, order);
    for (std::size_t at = 2; markers.size() < count && at < payload.size() && payload.size() - at >= idAndPosition;) {
        const std::size_t name = at + idAndPosition;
        const std::size_t nameLength = name < payload.size() ? std::to_integer<std::size_t>(payload[name]) : 0;
        // The name's length byte and its text together take an even number of bytes.
        const std::size_t length = idAndPosition + (nameLength + 2) / 2 * 2;
        markers.push_back({at, length, u16At(payload, at, order), u32At(payload, at + 2, order)});
        at += length;
    }
    return markers;
}

void collectAiffPositions(AudioFileContents &contents, std::int64_t frames) {
    PositionTable table(contents, frames);
    for (AudioFileChunk &chunk : contents.chunks)
        if (chunk.id == "MARK") readMarkers(chunk, table);
    contents.loop = aiffLoop(contents);
}

}  // namespace kiv
