#include "Audio/Files/AiffMetadata.h"

#include <algorithm>

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

Bytes aiffMarkerRecord(std::uint16_t id, std::string_view name) {
    std::size_t length = std::min(name.size(), longestMarkerName);
    while (length < name.size() && length > 0 && (name[length] & 0xC0) == 0x80) --length;
    Bytes record(7);
    putWord(std::span(record), 0, order, id);
    record[6] = std::byte(length);
    append(record, name.substr(0, length));
    record.resize(record.size() + record.size() % 2);
    return record;
}

std::vector<AiffComment> aiffComments(std::span<const std::byte> payload) {
    constexpr std::size_t marker = 4, textLength = 6, text = 8;
    std::vector<AiffComment> comments;
    if (payload.size() < 2) return comments;
    const std::size_t count = u16At(payload, 0, order);
    for (std::size_t at = 2; comments.size() < count && at < payload.size() && payload.size() - at >= text;) {
        const std::size_t length = u16At(payload, at + textLength, order), left = payload.size() - at - text;
        comments.push_back({at, text + length + length % 2, u16At(payload, at + marker, order),
                            payload.subspan(at + text, std::min(length, left))});
        at += comments.back().length;
    }
    return comments;
}

void collectAiffPositions(AudioFileContents &contents, std::int64_t frames) {
    PositionTable table(contents, frames);
    for (AudioFileChunk &chunk : contents.chunks)
        if (chunk.id == "MARK") readMarkers(chunk, table);
    contents.loop = aiffLoop(contents);
}

}  // namespace kiv
