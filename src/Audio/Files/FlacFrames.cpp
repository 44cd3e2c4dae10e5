#include "Audio/Files/FlacFrames.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <vector>

#include "Audio/Files/AudioFileCodec.h"
#include "Audio/Files/ByteFields.h"
#include "Audio/Files/FlacChecksums.h"
#include "Audio/Files/StoredSamples.h"

namespace kiv {
namespace {

constexpr std::endian big = std::endian::big;

// Writes numbers of any width one behind the other, the highest bit first.
class BitWriter {
public:
    explicit BitWriter(std::span<std::byte> out) : out_(out) {}

    void put(std::uint32_t value, int bits) {
        held_ = held_ << bits | (bits == 32 ? value : value & ((std::uint32_t(1) << bits) - 1));
        for (heldBits_ += bits; heldBits_ >= 8;) {
            heldBits_ -= 8;
            out_[at_++] = std::byte(held_ >> heldBits_);
        }
    }
    void padToByte() {
        if (heldBits_ > 0) put(0, 8 - heldBits_);
    }
    std::size_t size() const { return at_; }

private:
    std::span<std::byte> out_;
    std::size_t at_ = 0;
    std::uint64_t held_ = 0;
    int heldBits_ = 0;
};

struct RateCode {
    int code = 0;
    int bits = 0;  // of the number behind the header
    std::uint32_t number = 0;
};

// 0 leaves it to the start of the file.
RateCode rateCode(std::int64_t rate) {
    constexpr std::array<std::int64_t, 11> listed{88200, 176400, 192000, 8000, 16000, 22050, 24000, 32000, 44100, 48000, 96000};
    const auto found = std::find(listed.begin(), listed.end(), rate);
    if (found != listed.end()) return {int(found - listed.begin()) + 1};
    if (rate < 65536) return {13, 16, std::uint32_t(rate)};
    if (rate % 10 == 0 && rate < 655360) return {14, 16, std::uint32_t(rate / 10)};
    return {};
}

int sizeCode(int bits) {
    constexpr std::array<int, 8> listed{0, 8, 12, 0, 16, 20, 24, 32};
    const auto found = std::find(listed.begin() + 1, listed.end(), bits);
    return found == listed.end() ? 0 : int(found - listed.begin());
}

// How many bytes a frame's number takes: as in UTF-8, carried on to 36 bits.
int numberBytes(std::int64_t number) {
    if (number < 0x80) return 1;
    int bytes = 2;
    while (number >> (5 * bytes + 1) != 0) ++bytes;
    return bytes;
}

void putNumber(BitWriter &writer, std::int64_t number) {
    const int bytes = numberBytes(number);
    if (bytes == 1) return writer.put(std::uint32_t(number), 8);
    writer.put(0xFFu << (8 - bytes) | std::uint32_t(number >> (6 * (bytes - 1))), 8);
    for (int i = bytes - 2; i >= 0; --i) writer.put(0x80 | (std::uint32_t(number >> (6 * i)) & 0x3F), 8);
}

constexpr std::uint32_t verbatim = 1 << 1;  // the byte that a channel starts with

void putAnyWidth(const AudioEditorBuffer &buffer, FrameRange part, int bits, std::span<std::byte> out) {
    const std::vector<std::int32_t> integers = integersOf(buffer, part, bits);
    const auto channels = std::size_t(buffer.channels());
    BitWriter writer(out);
    for (std::size_t c = 0; c < channels; ++c) {
        writer.put(verbatim, 8);
        for (std::size_t i = c; i < integers.size(); i += channels) writer.put(std::uint32_t(integers[i]), bits);
    }
    writer.padToByte();
    assert(writer.size() == out.size());
}

// Takes one channel out of interleaved samples of so many bytes.
template <std::size_t bytes>
void takeChannel(const std::byte *in, std::size_t channels, std::size_t count, std::byte *out) {
    for (std::size_t i = 0; i < count; ++i) std::memcpy(out + i * bytes, in + i * channels * bytes, bytes);
}

// Widths of whole bytes need no shifting about.
void putWholeBytes(const AudioEditorBuffer &buffer, FrameRange part, int bits, std::span<std::byte> out) {
    const auto bytes = std::size_t(bits / 8), channels = std::size_t(buffer.channels()), count = std::size_t(part.count());
    const AudioSampleEncoding encoding{.bytes = bits / 8, .validBits = bits, .bigEndian = true};
    thread_local std::vector<std::byte> interleaved;
    interleaved.resize(bytes * channels * count);
    AudioFileCodec::encodeSamples(buffer, part, encoding, interleaved);
    constexpr std::array take{takeChannel<1>, takeChannel<2>, takeChannel<3>, takeChannel<4>};
    for (std::size_t c = 0; c < channels; ++c) {
        std::byte *subframe = out.data() + c * (1 + bytes * count);
        *subframe = std::byte(verbatim);
        take[bytes - 1](interleaved.data() + c * bytes, channels, count, subframe + 1);
    }
}

constexpr std::int64_t checksums = 3;  // one byte behind the header, two behind the frame

}  // namespace

FlacFrames::FlacFrames(AudioEditorBuffer buffer, int bits) : buffer_(std::move(buffer)), bits_(bits) {
    assert(bits >= 4 && bits <= 32 && buffer_.channels() <= mostChannels && buffer_.sampleRate() <= highestRate);
}

std::int64_t FlacFrames::blockFrames() const { return std::max<std::int64_t>(8 / buffer_.channels(), 1) * 4 * frameSamples; }

std::int64_t FlacFrames::size(FrameRange part) const {
    std::int64_t total = 0;
    for (std::int64_t at = part.lo; at < part.hi; at += frameSamples)
        total += frameSize(at / frameSamples, std::min(frameSamples, part.hi - at));
    return total;
}

void FlacFrames::encode(FrameRange part, std::span<std::byte> out) const {
    for (std::int64_t at = part.lo; at < part.hi; at += frameSamples) {
        const FrameRange frame{at, std::min(at + frameSamples, part.hi)};
        const auto size = std::size_t(frameSize(at / frameSamples, frame.count()));
        encodeFrame(at / frameSamples, frame, out.first(size));
        out = out.subspan(size);
    }
}

// Without its checksum.
std::int64_t FlacFrames::headerSize(std::int64_t number) const {
    constexpr std::int64_t fixed = 4, blockSize = 2;
    return fixed + numberBytes(number) + blockSize + rateCode(buffer_.sampleRate()).bits / 8;
}

std::int64_t FlacFrames::frameSize(std::int64_t number, std::int64_t samples) const {
    const std::int64_t subframeBits = buffer_.channels() * (8 + samples * bits_);
    return headerSize(number) + (subframeBits + 7) / 8 + checksums;
}

void FlacFrames::encodeFrame(std::int64_t number, FrameRange part, std::span<std::byte> out) const {
    constexpr std::uint32_t syncAndFixedBlocks = 0xFFF8, blockSizeIn16Bits = 7;
    const RateCode rate = rateCode(buffer_.sampleRate());
    BitWriter header(out);
    header.put(syncAndFixedBlocks, 16);
    header.put(blockSizeIn16Bits, 4);
    header.put(std::uint32_t(rate.code), 4);
    header.put(std::uint32_t(buffer_.channels() - 1), 4);
    header.put(std::uint32_t(sizeCode(bits_)), 3);
    header.put(0, 1);
    putNumber(header, number);
    header.put(std::uint32_t(part.count() - 1), 16);
    header.put(rate.number, rate.bits);
    const std::size_t headerBytes = header.size();
    out[headerBytes] = std::byte(flacCrc8(out.first(headerBytes)));
    const auto samples = out.subspan(headerBytes + 1, out.size() - headerBytes - std::size_t(checksums));
    (bits_ % 8 == 0 ? putWholeBytes : putAnyWidth)(buffer_, part, bits_, samples);
    putWord(out, out.size() - 2, big, flacCrc16(out.first(out.size() - 2)));
}

}  // namespace kiv
