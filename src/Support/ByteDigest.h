#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace kiv {

// A 64-bit fingerprint of bytes, the same however they are cut into pieces. It tells accidents apart, bytes that were torn off,
// are stale or have been changed, and no forgeries. As fast as memory is read: every word is taken in by steps that lose
// nothing, so that two texts which differ in one word never look alike.
class ByteDigest {
public:
    void add(std::span<const std::byte> bytes) {
        length_ += bytes.size();
        while (restBytes_ > 0 && !bytes.empty()) {
            rest_[restBytes_] = bytes.front();
            bytes = bytes.subspan(1);
            if ((restBytes_ = (restBytes_ + 1) % wordBytes) == 0) take(rest_.data());
        }
        for (; bytes.size() >= wordBytes; bytes = bytes.subspan(wordBytes)) take(bytes.data());
        for (const std::byte byte : bytes) rest_[restBytes_++] = byte;
    }
    std::uint64_t value() const {
        ByteDigest ended = *this;
        std::memset(ended.rest_.data() + restBytes_, 0, wordBytes - restBytes_);
        ended.take(ended.rest_.data());
        return mixed(mixed(ended.state_, length_), 0);
    }

private:
    static constexpr std::size_t wordBytes = 8;
    static std::uint64_t mixed(std::uint64_t state, std::uint64_t word) {
        return std::rotl(state ^ word, 29) * 0x9E3779B97F4A7C15u;
    }
    void take(const std::byte *bytes) {
        std::uint64_t word;
        std::memcpy(&word, bytes, wordBytes);
        state_ = mixed(state_, word);
    }

    std::uint64_t state_ = 0x243F6A8885A308D3u;
    std::uint64_t length_ = 0;
    std::array<std::byte, wordBytes> rest_{};
    std::size_t restBytes_ = 0;
};

inline std::uint64_t digestOf(std::span<const std::byte> bytes) {
    ByteDigest digest;
    digest.add(bytes);
    return digest.value();
}

}  // namespace kiv
