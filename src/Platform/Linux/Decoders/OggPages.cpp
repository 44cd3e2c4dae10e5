#include "Platform/Linux/Decoders/OggPages.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <string_view>

namespace kiv {
namespace {

constexpr std::size_t headerBytes = 27, mostSegments = 255, checksumAt = 22;
constexpr std::string_view mark("OggS\0", 5);  // and the version
constexpr int mostFailures = 1000;             // of what looks like pages and is none; damage leaves few

bool isMarkAt(const ByteSource &source, std::int64_t offset) {
    std::array<char, mark.size()> found{};
    const std::size_t count = source.read(offset, std::as_writable_bytes(std::span(found)));
    return std::string_view(found.data(), count) == mark;
}

// The header at a place, which may be all that there is of the page.
std::optional<OggPage> pageAt(const ByteSource &source, std::int64_t offset) {
    std::array<std::uint8_t, headerBytes + mostSegments> bytes{};
    const std::size_t count = source.read(offset, std::as_writable_bytes(std::span(bytes)));
    const std::size_t header = headerBytes + bytes[26];
    if (count < headerBytes || count < header || !isMarkAt(source, offset)) return std::nullopt;
    const auto number = [&](std::size_t at, std::size_t size) {
        std::uint64_t value = 0;
        for (std::size_t i = size; i-- > 0;) value = value << 8 | bytes[at + i];
        return value;
    };
    const auto segments = std::span(bytes).subspan(headerBytes, bytes[26]);
    OggPage page{.offset = offset, .size = std::accumulate(segments.begin(), segments.end(), std::int64_t(header))};
    page.granule = std::int64_t(number(6, 8));
    page.serial = std::uint32_t(number(14, 4));
    page.number = std::uint32_t(number(18, 4));
    page.packets = std::count_if(segments.begin(), segments.end(), [](std::uint8_t length) { return length < mostSegments; });
    page.body = offset + std::int64_t(header);
    page.startsStream = (bytes[5] & 2) != 0;
    page.endsStream = (bytes[5] & 4) != 0;
    return page;
}

// The generator polynomial 0x04c11db7, the highest bit first.
std::uint32_t checksumOf(std::span<const std::byte> bytes) {
    static constexpr auto table = [] {
        std::array<std::uint32_t, 256> sums{};
        for (std::uint32_t i = 0; i < sums.size(); ++i) {
            sums[i] = i << 24;
            for (int bit = 0; bit < 8; ++bit) sums[i] = sums[i] << 1 ^ (sums[i] >> 31 ? 0x04c11db7u : 0u);
        }
        return sums;
    }();
    std::uint32_t sum = 0;
    for (const std::byte each : bytes) sum = sum << 8 ^ table[sum >> 24 ^ std::to_integer<std::uint32_t>(each)];
    return sum;
}

}  // namespace

bool isIntact(const ByteSource &source, const OggPage &page) {
    std::vector<std::byte> bytes(std::size_t(page.size));
    if (source.read(page.offset, bytes) < bytes.size()) return false;
    std::uint32_t told = 0;
    for (std::size_t i = 4; i-- > 0;) {
        told = told << 8 | std::to_integer<std::uint32_t>(bytes[checksumAt + i]);
        bytes[checksumAt + i] = std::byte(0);
    }
    return checksumOf(bytes) == told;
}

bool startsAsOgg(const ByteSource &source) { return isMarkAt(source, 0); }

std::optional<OggPage> OggPages::next() {
    while (at_ < source_.size() && failures_ < mostFailures) {
        const auto page = pageAt(source_, at_);
        if (page && isPage(*page)) {
            at_ += page->size;
            cutOff_.reset();
            return page;
        }
        if (page && page->offset + page->size > source_.size()) cutOff_ = page;
        seekMark();
    }
    return std::nullopt;
}

// One that another follows need not be looked at.
bool OggPages::isPage(const OggPage &page) {
    const std::int64_t end = page.offset + page.size;
    if (end == source_.size() || isMarkAt(source_, end)) return true;
    const bool isWhole = end < source_.size() && isIntact(source_, page);
    if (!isWhole) ++failures_;
    return isWhole;
}

void OggPages::seekMark() {
    isInterrupted_ = true;
    std::array<char, 65536> bytes;
    for (++at_; at_ < source_.size(); at_ += std::int64_t(bytes.size() - mark.size())) {
        const std::size_t count = source_.read(at_, std::as_writable_bytes(std::span(bytes)));
        const std::size_t found = std::string_view(bytes.data(), count).find(mark);
        if (found != std::string_view::npos) {
            at_ += std::int64_t(found);
            return;
        }
    }
}

}  // namespace kiv
