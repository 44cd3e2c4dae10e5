#include "Audio/Files/FlacBlockCheck.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <optional>

#include "Audio/Files/ByteFields.h"
#include "Audio/Files/FlacChecksums.h"

namespace kiv {
namespace {

constexpr auto order = std::endian::big;
constexpr std::size_t crc8Size = 1, crc16Size = 2;

struct Number {
    std::int64_t value = 0;
    std::size_t bytes = 1;
};

// As in UTF-8, carried on to 36 bits.
std::optional<Number> numberIn(std::span<const std::byte> bytes) {
    if (bytes.empty()) return std::nullopt;
    const auto lead = std::to_integer<unsigned>(bytes[0]);
    const int ones = std::countl_one(std::uint8_t(lead));
    if (ones == 0) return Number{std::int64_t(lead), 1};
    if (ones == 1 || ones == 8 || bytes.size() < std::size_t(ones)) return std::nullopt;
    Number number{std::int64_t(lead & (0x7Fu >> ones)), std::size_t(ones)};
    for (const std::byte byte : bytes.subspan(1, number.bytes - 1)) {
        if ((byte & std::byte(0xC0)) != std::byte(0x80)) return std::nullopt;
        number.value = number.value << 6 | std::to_integer<std::int64_t>(byte & std::byte(0x3F));
    }
    return number;
}

// Whether one channel out of interleaved samples of so many bytes is what stands in `found`.
template <std::size_t bytes>
bool isChannel(const std::byte *found, const std::byte *samples, std::size_t channels, std::size_t count) {
    unsigned difference = 0;
    for (std::size_t i = 0; i < count; ++i)
        for (std::size_t b = 0; b < bytes; ++b)
            difference |= std::to_integer<unsigned>(found[i * bytes + b] ^ samples[i * channels * bytes + b]);
    return difference == 0;
}

bool isSame(std::span<const std::byte> a, std::span<const std::byte> b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin());
}

}  // namespace

FlacBlockCheck::FlacBlockCheck(std::span<const std::byte> first, std::int64_t frames, std::int64_t channels, int sampleBytes)
    : channels_(std::size_t(channels)), sampleBytes_(std::size_t(sampleBytes)) {
    const std::size_t behind = crc8Size + channels_ * (1 + std::size_t(frames) * sampleBytes_) + crc16Size;
    constexpr std::size_t least = fixedSize + 1 + lengthSize;
    if (first.size() < least + behind) return;
    const auto header = first.first(first.size() - behind);
    fixed_.assign(header.begin(), header.begin() + fixedSize);
    rate_.assign(header.begin() + least, header.end());
}

bool FlacBlockCheck::holds(std::span<const std::byte> block, std::int64_t number, std::span<const std::byte> samples) const {
    const std::size_t subframesSize = channels_ + samples.size(), around = crc8Size + crc16Size;
    if (fixed_.empty() || block.size() < fixedSize + subframesSize + around) return false;
    const auto header = block.first(block.size() - subframesSize - around);
    const auto found = numberIn(header.subspan(fixedSize));
    if (!found || found->value != number || header.size() != fixedSize + found->bytes + lengthSize + rate_.size()) return false;
    const std::size_t frames = samples.size() / (channels_ * sampleBytes_), lengthAt = fixedSize + found->bytes;
    return isSame(header.first(fixedSize), fixed_) && u16At(header, lengthAt, order) + std::size_t(1) == frames &&
           isSame(header.subspan(lengthAt + lengthSize), rate_) && block[header.size()] == std::byte(flacCrc8(header)) &&
           u16At(block, block.size() - crc16Size, order) == flacCrc16(block.first(block.size() - crc16Size)) &&
           holdsSamples(block.subspan(header.size() + crc8Size, subframesSize), samples);
}

bool FlacBlockCheck::holdsSamples(std::span<const std::byte> subframes, std::span<const std::byte> samples) const {
    constexpr std::byte verbatim{1 << 1};
    constexpr std::array isChannelOf{isChannel<1>, isChannel<2>, isChannel<3>, isChannel<4>};
    const std::size_t count = samples.size() / (channels_ * sampleBytes_), size = 1 + count * sampleBytes_;
    for (std::size_t c = 0; c < channels_; ++c) {
        const std::byte *subframe = subframes.data() + c * size;
        const bool isRight = *subframe == verbatim &&
                             isChannelOf[sampleBytes_ - 1](subframe + 1, samples.data() + c * sampleBytes_, channels_, count);
        if (!isRight) return false;
    }
    return true;
}

}  // namespace kiv
