#include "Platform/Linux/Decoders/OggLinks.h"

#include <array>
#include <cstdint>
#include <numeric>
#include <span>

namespace kiv {
namespace {

constexpr std::size_t headerBytes = 27, mostSegments = 255;

// A page's header with the lengths of its segments, as much of it as is there.
struct Page {
    std::array<std::byte, headerBytes + mostSegments> bytes{};
    std::size_t count = 0;

    std::uint8_t at(std::size_t i) const { return std::to_integer<std::uint8_t>(bytes[i]); }
    std::size_t headerSize() const { return headerBytes + at(26); }
    bool isThere() const {
        return count >= headerBytes && count >= headerSize() && at(0) == 'O' && at(1) == 'g' && at(2) == 'g' && at(3) == 'S';
    }
    bool startsStream() const { return (at(5) & 2) != 0; }
    std::int64_t size() const {
        const auto segments = std::span(bytes).first(headerSize()).subspan(headerBytes);
        const auto add = [](std::int64_t sum, std::byte length) { return sum + std::to_integer<int>(length); };
        return std::accumulate(segments.begin(), segments.end(), std::int64_t(headerSize()), add);
    }
};

Page pageAt(const ByteSource &source, std::int64_t offset) {
    Page page;
    page.count = source.read(offset, page.bytes);
    return page;
}

}  // namespace

// Streams that run side by side all start before any of them goes on.
bool hasSeveralOggLinks(const ByteSource &source) {
    bool goesOn = false;
    std::int64_t at = 0;
    for (Page page = pageAt(source, at); page.isThere(); page = pageAt(source, at)) {
        if (goesOn && page.startsStream()) return true;
        goesOn = goesOn || !page.startsStream();
        at += page.size();
    }
    return false;
}

}  // namespace kiv
