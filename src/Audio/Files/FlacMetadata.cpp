#include "Audio/Files/FlacMetadata.h"

#include <array>

#include "Audio/Files/ByteFields.h"
#include "Audio/Files/SourceReader.h"
#include "Support/SoundTags.h"

namespace kiv {
namespace {

bool startsFrame(const SourceReader &reader, std::int64_t at) {
    std::array<std::byte, 2> sync{};
    if (reader.size() - at < std::int64_t(sync.size())) return false;
    reader.read(at, sync);
    return (u16At(sync, 0, std::endian::big) & 0xFFFE) == 0xFFF8;
}

}  // namespace

std::vector<FlacMetadataBlock> readFlacMetadata(const ByteSource &source) {
    using Block = FlacMetadataBlock;
    const SourceReader reader(source);
    std::vector<FlacMetadataBlock> blocks;
    std::array<std::byte, 4> header;
    std::int64_t at = endOfTagsAtStart(source);
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

// A frame that has been cut off, or cannot be read, would be taken for sound behind what we write.
void keepAroundFlac(AudioFileContents &contents, const ByteSource &source, std::int64_t end) {
    const SourceReader reader(source);
    const std::int64_t start = endOfTagsAtStart(source);
    contents.leading = reader.bytes(0, start);
    const bool isFrame = contents.missingFrames > 0 || startsFrame(reader, end);
    const std::int64_t behind = isFrame ? startOfTagsAtEnd(source, end) : end;
    contents.trailing = reader.bytes(behind, reader.size() - behind);
}

}  // namespace kiv
