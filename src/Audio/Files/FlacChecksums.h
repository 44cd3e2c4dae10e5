#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

// The checksums of a FLAC frame (RFC 9639): of its header, with the polynomial 0x07, and of all of it, with 0x8005.
namespace kiv {

std::uint8_t flacCrc8(std::span<const std::byte> bytes);
std::uint16_t flacCrc16(std::span<const std::byte> bytes);

}  // namespace kiv
