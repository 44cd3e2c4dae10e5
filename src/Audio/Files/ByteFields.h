#pragma once

#include <bit>
#include <cassert>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// Numbers in the bytes of files. Offsets must lie inside the bytes: whoever reads a field has checked that it is there.
namespace kiv {

constexpr std::uint8_t byteSwapped(std::uint8_t word) { return word; }
constexpr std::uint16_t byteSwapped(std::uint16_t word) { return std::uint16_t(word << 8 | word >> 8); }
constexpr std::uint32_t byteSwapped(std::uint32_t word) {
    return word << 24 | (word & 0xFF00) << 8 | (word >> 8 & 0xFF00) | word >> 24;
}
constexpr std::uint64_t byteSwapped(std::uint64_t word) {
    return std::uint64_t(byteSwapped(std::uint32_t(word))) << 32 | byteSwapped(std::uint32_t(word >> 32));
}

// The same value in the other sense: what stands in a file of this byte order, as the machine has it, or the reverse.
template <std::endian order, std::unsigned_integral Word>
constexpr Word inOrder(Word word) {
    return order == std::endian::native ? word : byteSwapped(word);
}

template <std::unsigned_integral Word>
Word wordAt(std::span<const std::byte> bytes, std::size_t offset, std::endian order) {
    assert(offset <= bytes.size() && sizeof(Word) <= bytes.size() - offset);
    Word word;
    std::memcpy(&word, bytes.data() + offset, sizeof word);
    return order == std::endian::native ? word : byteSwapped(word);
}

template <std::unsigned_integral Word>
void putWord(std::span<std::byte> bytes, std::size_t offset, std::endian order, Word word) {
    assert(offset <= bytes.size() && sizeof(Word) <= bytes.size() - offset);
    if (order != std::endian::native) word = byteSwapped(word);
    std::memcpy(bytes.data() + offset, &word, sizeof word);
}

inline std::uint16_t u16At(std::span<const std::byte> bytes, std::size_t offset, std::endian order) {
    return wordAt<std::uint16_t>(bytes, offset, order);
}

inline std::uint32_t u32At(std::span<const std::byte> bytes, std::size_t offset, std::endian order) {
    return wordAt<std::uint32_t>(bytes, offset, order);
}

// The four characters of a chunk's id.
std::string idAt(std::span<const std::byte> bytes, std::size_t offset);

void append(std::vector<std::byte> &to, std::span<const std::byte> bytes);
void append(std::vector<std::byte> &to, std::string_view text);

}  // namespace kiv
