#include "Audio/Files/FlacMetadata.h"

#include <array>

#include "Audio/Files/ByteFields.h"

namespace kiv {
namespace {

using Block = FlacMetadataBlock;

// Behind an ID3 tag that some programs put there.
std::int64_t markAt(const SourceReader &reader) {
    constexpr std::int64_t header = 10;
    std::array<std::byte, header> head;
    if (reader.size() < header) return 0;
    reader.read(0, head);
    const auto at = [&](std::size_t i) { return std::to_integer<std::int64_t>(head[i]); };
    if (at(0) != 'I' || at(1) != 'D' || at(2) != '3') return 0;
    const bool hasFooter = (at(5) & 0x10) != 0;
    return header + (hasFooter ? header : 0) + (at(6) << 21 | at(7) << 14 | at(8) << 7 | at(9));
}

}  // namespace

std::vector<FlacMetadataBlock> readFlacMetadata(const SourceReader &reader) {
    std::vector<FlacMetadataBlock> blocks;
    std::array<std::byte, 4> header;
    std::int64_t at = markAt(reader);
    if (reader.size() - at < 4) return blocks;
    reader.read(at, header);
    if (idAt(header, 0) != "fLaC") return blocks;
    at += 4;
    for (bool isLast = false; !isLast && reader.size() - at >= 4;) {
        reader.read(at, header);
        at += 4;
        const std::uint32_t word = u32At(header, 0, std::endian::big);
        const std::int64_t size = word & 0xFFFFFF;
        const int type = int(word >> 24 & 0x7F);
        if (size > reader.size() - at) break;
        if (type == Block::application || type == Block::tags || type == Block::picture)
            blocks.push_back({type, reader.bytes(at, size)});
        isLast = word >> 31 != 0;
        at += size;
    }
    return blocks;
}

}  // namespace kiv
