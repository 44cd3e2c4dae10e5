#include "Support/SoundTags.h"

#include <array>
#include <string>
#include <string_view>
#include <utility>

namespace kiv {
namespace {

std::string textAt(const ByteSource &source, std::int64_t at, std::size_t size) {
    std::string text(size, '\0');
    text.resize(at < 0 ? 0 : source.read(at, std::as_writable_bytes(std::span(text))));
    return text;
}

std::int64_t byteAt(const std::string &text, std::size_t i) { return std::uint8_t(text[i]); }

// What an ID3v2 header, or the footer that repeats it, says of the bytes behind the header, without a footer. In a number of
// four bytes of seven bits.
std::int64_t id3Size(const std::string &header) {
    std::int64_t size = 0;
    for (std::size_t i = 6; i < 10; ++i) size = size << 7 | (byteAt(header, i) & 0x7F);
    return size;
}
constexpr std::int64_t id3HeaderSize = 10, id3FooterSize = 10;

// How long a tag is that ends at `end`, by its kind; 0 where none does.
std::int64_t id3v1Size(const ByteSource &source, std::int64_t end) {
    constexpr std::int64_t size = 128, longer = 227;
    if (textAt(source, end - size, 3) != "TAG") return 0;
    return textAt(source, end - size - longer, 4) == "TAG+" ? size + longer : size;
}

std::int64_t id3v2Size(const ByteSource &source, std::int64_t end) {
    const std::string footer = textAt(source, end - id3FooterSize, 10);
    if (!footer.starts_with("3DI") || footer.size() < 10) return 0;
    return id3HeaderSize + id3Size(footer) + id3FooterSize;
}

std::int64_t apeSize(const ByteSource &source, std::int64_t end) {
    constexpr std::int64_t footerSize = 32;
    constexpr std::size_t size = 12, flags = 20;
    const std::string footer = textAt(source, end - footerSize, footerSize);
    if (!footer.starts_with("APETAGEX") || footer.size() < footerSize) return 0;
    const auto wordAt = [&](std::size_t at) {
        return byteAt(footer, at) | byteAt(footer, at + 1) << 8 | byteAt(footer, at + 2) << 16 | byteAt(footer, at + 3) << 24;
    };
    const bool hasHeader = wordAt(flags) >> 31 != 0;
    return wordAt(size) + (hasHeader ? footerSize : 0);
}

std::int64_t lyricsSize(const ByteSource &source, std::int64_t end) {
    constexpr std::string_view mark = "LYRICS200";
    constexpr std::size_t digits = 6;
    const std::string tail = textAt(source, end - std::int64_t(digits + mark.size()), digits + mark.size());
    if (!tail.ends_with(mark) || tail.substr(0, digits).find_first_not_of("0123456789") != std::string::npos) return 0;
    return std::stoll(tail.substr(0, digits)) + std::int64_t(tail.size());
}

}  // namespace

std::int64_t endOfTagsAtStart(const ByteSource &source) {
    constexpr std::int64_t hasFooter = 0x10;
    for (std::int64_t at = 0;;) {
        const std::string header = textAt(source, at, id3HeaderSize);
        if (!header.starts_with("ID3") || header.size() < id3HeaderSize) return at;
        at += id3HeaderSize + id3Size(header) + (byteAt(header, 5) & hasFooter ? id3FooterSize : 0);
    }
}

std::vector<SoundTag> tagsAtEnd(const ByteSource &source, std::int64_t lowest) {
    using Kind = SoundTag::Kind;
    static constexpr std::array<std::pair<Kind, std::int64_t (*)(const ByteSource &, std::int64_t)>, 4> sizes{
        {{Kind::id3v1, id3v1Size}, {Kind::id3v2, id3v2Size}, {Kind::ape, apeSize}, {Kind::lyrics, lyricsSize}}};
    std::vector<SoundTag> tags;
    std::int64_t start = source.size();
    for (bool found = true; found;) {
        found = false;
        for (const auto &[kind, sizeOf] : sizes) {
            const std::int64_t size = sizeOf(source, start);
            if (size <= 0 || size > start - lowest) continue;
            start -= size;
            tags.push_back({kind, start, size});
            found = true;
        }
    }
    return tags;
}

std::int64_t startOfTagsAtEnd(const ByteSource &source, std::int64_t lowest) {
    const std::vector<SoundTag> tags = tagsAtEnd(source, lowest);
    return tags.empty() ? source.size() : tags.back().start;
}

}  // namespace kiv
