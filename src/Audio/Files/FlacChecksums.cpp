#include "Audio/Files/FlacChecksums.h"

#include <array>
#include <utility>

#include "Audio/Files/ByteFields.h"

namespace kiv {
namespace {

constexpr std::array<std::uint8_t, 256> crc8Table = [] {
    std::array<std::uint8_t, 256> table{};
    for (unsigned i = 0; i < 256; ++i) {
        unsigned crc = i;
        for (int bit = 0; bit < 8; ++bit) crc = crc << 1 ^ (crc & 0x80 ? 0x107 : 0);
        table[i] = std::uint8_t(crc);
    }
    return table;
}();

// Table k holds what a byte adds to the checksum that stands k bytes before the end: with sixteen of them, sixteen bytes are
// summed up without waiting for one another.
constexpr std::size_t stride = 16;
using Crc16Tables = std::array<std::array<std::uint16_t, 256>, stride>;
constexpr Crc16Tables crc16Tables = [] {
    Crc16Tables tables{};
    for (unsigned i = 0; i < 256; ++i) {
        unsigned crc = i << 8;
        for (int bit = 0; bit < 8; ++bit) crc = crc << 1 ^ (crc & 0x8000 ? 0x18005 : 0);
        tables[0][i] = std::uint16_t(crc);
    }
    for (std::size_t k = 1; k < tables.size(); ++k)
        for (std::size_t i = 0; i < 256; ++i) {
            const std::uint16_t before = tables[k - 1][i];
            tables[k][i] = std::uint16_t(before << 8 ^ tables[0][before >> 8]);
        }
    return tables;
}();

// What eight bytes, the first in the highest bits, add that stand so many bytes before the end of the sixteen.
template <std::size_t behind>
std::uint32_t eightBytes(std::uint64_t word) {
    const auto &t = crc16Tables;
    return [&]<std::size_t... i>(std::index_sequence<i...>) {
        return (0u ^ ... ^ std::uint32_t(t[behind + i][word >> (8 * i) & 0xFF]));
    }
    (std::make_index_sequence<8>());
}

}  // namespace

std::uint8_t flacCrc8(std::span<const std::byte> bytes) {
    std::uint8_t crc = 0;
    for (const std::byte byte : bytes) crc = crc8Table[crc ^ std::to_integer<std::uint8_t>(byte)];
    return crc;
}

std::uint16_t flacCrc16(std::span<const std::byte> bytes) {
    constexpr auto order = std::endian::big;
    std::uint16_t crc = 0;
    for (; bytes.size() >= stride; bytes = bytes.subspan(stride)) {
        const std::uint64_t first = wordAt<std::uint64_t>(bytes.first(8), 0, order) ^ std::uint64_t(crc) << 48;
        crc = std::uint16_t(eightBytes<8>(first) ^ eightBytes<0>(wordAt<std::uint64_t>(bytes.subspan(8, 8), 0, order)));
    }
    for (const std::byte byte : bytes)
        crc = std::uint16_t(crc << 8 ^ crc16Tables[0][crc >> 8 ^ std::to_integer<std::uint8_t>(byte)]);
    return crc;
}

}  // namespace kiv
