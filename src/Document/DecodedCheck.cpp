#include "Document/DecodedCheck.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

#include "Audio/Files/AudioFileCodec.h"
#include "Audio/Files/FlacFrames.h"
#include "Audio/Files/StoredSamples.h"

namespace kiv {
namespace {

bool isFlac(const AudioFileContents &contents) { return !contents.wrapping; }

// What comes of the decoder when all is well, as the kind of samples that it gives.
template <class Sample>
class Expected {
public:
    explicit Expected(const AudioFileContents &contents)
        : buffer_(contents.buffer), encoding_(storedEncoding(contents)), isFlac_(isFlac(contents)) {}

    void put(FrameRange part, std::span<Sample> out) const {
        if (hasOddBits()) return putOdd(part, out);
        if constexpr (std::is_same_v<Sample, float>)
            storedSamples(buffer_, part, encoding_, out);
        else
            AudioFileCodec::encodeSamples(buffer_, part, wholeWords, std::as_writable_bytes(out));
    }

private:
    static constexpr AudioSampleEncoding wholeWords{
        .bytes = 4, .validBits = 32, .bigEndian = std::endian::native == std::endian::big};

    bool hasOddBits() const { return isFlac_ && encoding_.validBits != 8 * encoding_.bytes; }

    void putOdd(FrameRange part, std::span<Sample> out) const {
        const int bits = encoding_.validBits;
        const std::vector<std::int32_t> integers = integersOf(buffer_, part, bits);
        std::transform(integers.begin(), integers.end(), out.begin(), [=](std::int32_t integer) {
            const auto word = std::int32_t(std::uint32_t(integer) << (32 - bits));
            return std::is_same_v<Sample, float> ? Sample(float(word) * 0x1p-31f) : Sample(word);
        });
    }

    const AudioEditorBuffer &buffer_;
    AudioSampleEncoding encoding_;
    bool isFlac_;
};

// Whether the sound goes on with just these frames, and ends with them.
template <class Sample>
bool holdsFrames(DecodedSound &sound, FrameRange part, const AudioFileContents &contents, Progress &progress) {
    constexpr std::int64_t blockFrames = 1 << 14;
    const Expected<Sample> expected(contents);
    const auto channels = std::size_t(contents.buffer.channels());
    std::vector<Sample> found(blockFrames * channels), wanted(blockFrames * channels);
    for (FrameRange block{part.lo, part.lo}; block.hi < part.hi;) {
        block = {block.hi, std::min(block.hi + blockFrames, part.hi)};
        const std::size_t count = std::size_t(block.count()) * channels;
        if (sound.read(std::span(found).first(count)) != block.count()) return false;
        expected.put(block, std::span(wanted).first(count));
        if (std::memcmp(found.data(), wanted.data(), count * sizeof(Sample)) != 0) return false;
        progress.add(block.count());
    }
    if (sound.read(std::span(found).first(channels)) != 0) return false;
    const DecodedEnd end = sound.end();
    return end.damagedFrames == 0 && end.frame.value_or(part.hi) == part.hi;
}

}  // namespace

AudioSampleEncoding storedEncoding(const AudioFileContents &contents) {
    if (contents.wrapping) return contents.wrapping->encoding;
    const int bits = std::stoi(contents.decodedSetting(bitDepthKey));
    return {.bytes = (bits + 7) / 8, .validBits = bits, .bigEndian = std::endian::native == std::endian::big};
}

bool hasFormat(const DecodedFormat &format, const AudioFileContents &contents) {
    const AudioEditorBuffer &buffer = contents.buffer;
    const bool hasBits = !isFlac(contents) || format.bits == storedEncoding(contents).validBits;
    return format.channels == buffer.channels() && format.sampleRate == buffer.sampleRate() && hasBits;
}

bool holdsOnly(DecodedSound &sound, FrameRange part, const AudioFileContents &contents, Progress &progress) {
    return (sound.format().isWide() ? holdsFrames<std::int32_t> : holdsFrames<float>)(sound, part, contents, progress);
}

bool hasBytes(const ByteSource &source, std::int64_t offset, const Bytes &bytes) {
    Bytes found(bytes.size());
    return source.read(offset, found) == bytes.size() && found == bytes;
}

}  // namespace kiv
