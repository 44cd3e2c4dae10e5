#include "Platform/Linux/Decoders/SndfileKinds.h"

#include <algorithm>
#include <array>
#include <bit>
#include <string_view>

namespace kiv {
namespace {

// The header of a RIFF chunk, and the word behind it: of a format chunk the kind of samples.
class RiffChunk {
public:
    RiffChunk(const ByteSource &source, std::int64_t at, std::endian order)
        : count_(source.read(at, std::as_writable_bytes(std::span(bytes_)))), order_(order) {}

    bool isThere() const { return count_ >= header; }
    bool isCalled(std::string_view id) const { return std::string_view(bytes_.data(), id.size()) == id; }
    // The library looks for a chunk elsewhere where none can be.
    bool hasName() const {
        return std::all_of(bytes_.begin(), bytes_.begin() + 4, [](char each) { return each >= ' ' && each <= '~'; });
    }
    bool isMpegFormat() const {
        constexpr std::int64_t mpeg = 0x50, mpegLayer3 = 0x55;
        return isCalled("fmt ") && count_ == bytes_.size() && (number(8, 2) == mpeg || number(8, 2) == mpegLayer3);
    }
    // With its header, padded to an even length.
    std::int64_t size() const { return std::int64_t(header) + number(4, 4) + number(4, 4) % 2; }

private:
    static constexpr std::size_t header = 8;

    std::int64_t number(std::size_t at, std::size_t bytes) const {
        std::int64_t value = 0;
        for (std::size_t i = 0; i < bytes; ++i)
            value = value << 8 | std::uint8_t(bytes_[order_ == std::endian::big ? at + i : at + bytes - 1 - i]);
        return value;
    }

    std::array<char, header + 2> bytes_{};
    std::size_t count_;
    std::endian order_;
};

// Samples may be cut off.
bool isRiffForSndfile(const ByteSource &source, std::endian order) {
    for (std::int64_t at = 12;;) {
        const RiffChunk chunk(source, at, order);
        if (!chunk.isThere()) return true;
        if (chunk.isMpegFormat() || !chunk.hasName()) return false;
        at += chunk.size();
        if (at > source.size() + 1) return chunk.isCalled("data");
    }
}

}  // namespace

bool isForSndfile(const ByteSource &source) {
    std::array<char, 4> bytes{};
    const std::string_view head(bytes.data(), source.read(0, std::as_writable_bytes(std::span(bytes))));
    const bool isMpegFrame = head.size() > 1 && head[0] == '\xFF' && std::uint8_t(head[1]) >= 0xE0;
    if (isMpegFrame || head.starts_with("ID3")) return false;
    if (head != "RIFF" && head != "RIFX") return true;
    return isRiffForSndfile(source, head == "RIFX" ? std::endian::big : std::endian::little);
}

}  // namespace kiv
