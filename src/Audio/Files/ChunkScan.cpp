#include "Audio/Files/ChunkScan.h"

#include <algorithm>
#include <array>

#include "Audio/Files/ByteFields.h"

namespace kiv {
namespace {

constexpr std::int64_t headerSize = 8;

// Far more than any real file has. A file that some device or rescue tool filled up with zeros is one empty chunk every eight
// bytes, each of which would take ten times that in memory; what stands behind this many is carried as it is.
constexpr std::size_t mostChunks = 65536;

// A size that a streaming writer left for later and never came back to.
bool isUnfinished(std::uint32_t declaredSize) { return declaredSize == 0 || declaredSize == 0xFFFFFFFF; }

}  // namespace

const RawChunk *ChunkScan::first(std::string_view id) const {
    const auto found = std::find_if(chunks.begin(), chunks.end(), [&](const RawChunk &chunk) { return chunk.id == id; });
    return found == chunks.end() ? nullptr : &*found;
}

ChunkScan scanChunks(const SourceReader &reader, std::endian order, std::string_view audioId) {
    ChunkScan scan;
    std::int64_t at = 12;
    while (reader.size() - at >= headerSize && scan.chunks.size() < mostChunks) {
        std::array<std::byte, headerSize> header;
        reader.read(at, header);
        const std::string id = idAt(header, 0);
        const std::uint32_t declaredSize = u32At(header, 4, order);
        const std::int64_t left = reader.size() - at - headerSize;
        // Only the first chunk of this name is the audio: the next one may really be empty.
        const bool isAudio = id == audioId && !scan.audio;
        const std::int64_t size = isAudio && isUnfinished(declaredSize) ? left : std::min<std::int64_t>(declaredSize, left);
        if (isAudio) scan.audio = scan.chunks.size();
        scan.chunks.push_back({id, at + headerSize, size});
        at += headerSize + size + (size & 1);
    }
    scan.end = std::min(at, reader.size());
    return scan;
}

std::vector<AudioFileChunk> readChunks(const SourceReader &reader, const ChunkScan &scan) {
    std::vector<AudioFileChunk> chunks;
    chunks.reserve(scan.chunks.size());
    for (std::size_t i = 0; i < scan.chunks.size(); ++i) {
        const RawChunk &raw = scan.chunks[i];
        chunks.push_back({.id = raw.id, .data = {}, .fields = {}, .sizeInFile = raw.size});
        if (i != scan.audio) chunks.back().data = reader.bytes(raw.start, raw.size);
    }
    return chunks;
}

}  // namespace kiv
