#include "Support/ChunkHeaders.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace kiv {
namespace {

std::string textAt(const ByteSource &source, std::int64_t at, std::size_t size) {
    std::string text(size, '\0');
    text.resize(source.read(at, std::as_writable_bytes(std::span(text))));
    return text;
}

std::int64_t numberOf(std::string_view bytes, std::endian order) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i)
        value = value << 8 | std::uint8_t(bytes[order == std::endian::big ? i : bytes.size() - 1 - i]);
    return std::int64_t(value);
}

// The file properties object tells the size, unless the file is a broadcast (ASF specification, 3.2).
bool endsBeforeAsfSize(const ByteSource &source) {
    constexpr std::size_t mostHeader = 4096, sizeAt = 40, flagsAt = 88;
    const std::string header = textAt(source, 0, mostHeader);
    const std::size_t properties =
        header.find(std::string_view("\xA1\xDC\xAB\x8C\x47\xA9\xCF\x11\x8E\xE4\x00\xC0\x0C\x20\x53\x65", 16));
    if (properties == header.npos || properties + flagsAt >= header.size() || (header[properties + flagsAt] & 1)) return false;
    return numberOf(std::string_view(header).substr(properties + sizeAt, 8), std::endian::little) > source.size();
}

}  // namespace

ChunkHeaders::ChunkHeaders(const ByteSource &source) : source_(source), at_(source.size()) {
    const std::string head = textAt(source, 0, 4);
    if (head == "RIFF") order_ = std::endian::little;
    if (head == "RIFF" || head == "RIFX" || head == "FORM") at_ = 12;
}

std::optional<ChunkHeaders::Chunk> ChunkHeaders::next() {
    constexpr std::int64_t header = 8;
    const std::string bytes = textAt(source_, at_, header);
    if (std::ssize(bytes) < header) return std::nullopt;
    const std::int64_t size = numberOf(std::string_view(bytes).substr(4), order_);
    const Chunk chunk{bytes.substr(0, 4), at_ + header, size};
    at_ = chunk.end() + size % 2;
    return chunk;
}

bool endsTooSoon(const ByteSource &source) {
    constexpr std::int64_t leftOpen = 0xFFFFFFFF;
    constexpr std::string_view asf("\x30\x26\xB2\x75\x8E\x66\xCF\x11", 8);
    if (textAt(source, 0, asf.size()) == asf) return endsBeforeAsfSize(source);
    ChunkHeaders chunks(source);
    while (const auto chunk = chunks.next())
        if (chunk->end() > source.size()) return chunk->size != leftOpen;
    return false;
}

}  // namespace kiv
