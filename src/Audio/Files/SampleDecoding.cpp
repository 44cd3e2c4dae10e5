#include "Audio/Files/SampleDecoding.h"

#include <algorithm>
#include <array>

#include "Audio/Files/ByteFields.h"
#include "Audio/Files/SampleResidue.h"
#include "Audio/Files/ScratchBlocks.h"
#include "Support/Parallel.h"
#include "Support/Vectorised.h"

// Every integer width is brought to the top of 32 bits, where one scale fits all. The conversion of those to float is exact for
// up to 24 meaningful bits and otherwise rounds once, as going by way of a double would; the scale, a power of two, is exact.
namespace kiv {
namespace {

constexpr auto little = std::endian::little, big = std::endian::big;

float scaled(std::uint32_t topAligned) { return float(std::int32_t(topAligned)) * 0x1p-31f; }

template <std::unsigned_integral Word, std::endian order>
Word load(const std::byte *at) {
    Word word;
    std::memcpy(&word, at, sizeof word);
    return inOrder<order>(word);
}

template <std::unsigned_integral Word, std::endian order, Word flipped = 0>
KIV_VECTORISED void decodeIntegers(const std::byte *in, float *out, std::size_t count) {
    constexpr int shift = 32 - 8 * int(sizeof(Word));
    for (std::size_t i = 0; i < count; ++i)
        out[i] = scaled(std::uint32_t(load<Word, order>(in + sizeof(Word) * i) ^ flipped) << shift);
}

// Four samples of three bytes stand in three words of four.
template <std::endian order>
inline void decodeFour24(const std::byte *in, float *out) {
    const auto a = load<std::uint32_t, order>(in), b = load<std::uint32_t, order>(in + 4),
               c = load<std::uint32_t, order>(in + 8);
    if constexpr (order == little) {
        out[0] = scaled(a << 8);
        out[1] = scaled((a >> 16 & 0xFF00) | b << 16);
        out[2] = scaled((b >> 8 & 0xFFFF00) | c << 24);
        out[3] = scaled(c & 0xFFFFFF00);
    } else {
        out[0] = scaled(a & 0xFFFFFF00);
        out[1] = scaled(a << 24 | (b >> 8 & 0xFFFF00));
        out[2] = scaled(b << 16 | (c >> 16 & 0xFF00));
        out[3] = scaled(c << 8);
    }
}

template <std::endian order>
KIV_VECTORISED void decode24(const std::byte *in, float *out, std::size_t count) {
    const std::size_t fours = count / 4 * 4;
    for (std::size_t i = 0; i < fours; i += 4) decodeFour24<order>(in + 3 * i, out + i);
    if (fours == count) return;
    std::array<std::byte, 12> rest{};
    std::array<float, 4> last;
    std::copy_n(in + 3 * fours, 3 * (count - fours), rest.begin());
    decodeFour24<order>(rest.data(), last.data());
    std::copy_n(last.begin(), count - fours, out + fours);
}

// The bits are moved as integers: going through a float register could turn a signalling NaN into a quiet one.
template <std::endian order>
KIV_VECTORISED void decodeFloats(const std::byte *in, float *out, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const auto word = load<std::uint32_t, order>(in + 4 * i);
        std::memcpy(out + i, &word, sizeof word);
    }
}

template <std::endian order>
KIV_VECTORISED void decodeDoubles(const std::byte *in, float *out, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) out[i] = float(std::bit_cast<double>(load<std::uint64_t, order>(in + 8 * i)));
}

using Decoder = void (*)(const std::byte *in, float *out, std::size_t count);

template <std::endian order>
Decoder integerDecoder(const AudioSampleEncoding &encoding) {
    switch (encoding.bytes) {
        case 1:
            return encoding.unsigned8 ? decodeIntegers<std::uint8_t, order, 0x80> : decodeIntegers<std::uint8_t, order>;
        case 2:
            return decodeIntegers<std::uint16_t, order>;
        case 3:
            return decode24<order>;
        default:
            return decodeIntegers<std::uint32_t, order>;
    }
}

template <std::endian order>
Decoder decoder(const AudioSampleEncoding &encoding) {
    if (encoding.kind == AudioSampleEncoding::Kind::integer) return integerDecoder<order>(encoding);
    return encoding.bytes == 4 ? decodeFloats<order> : decodeDoubles<order>;
}

// What is read at a time: small enough to stay, with its floats, in a core's own cache until it is decoded. It holds whole
// parts of a residue.
constexpr std::int64_t blockBytes = std::int64_t(1) << 18;
static_assert(blockBytes % (8 * SampleResidue::partSamples) == 0);

}  // namespace

void decodeSamples(std::span<const std::byte> in, const AudioSampleEncoding &encoding, std::span<float> out) {
    assert(in.size() == out.size() * std::size_t(encoding.bytes));
    const Decoder decode = encoding.bigEndian ? decoder<big>(encoding) : decoder<little>(encoding);
    decode(in.data(), out.data(), out.size());
}

AudioEditorBuffer readSamples(const SourceReader &reader, AudioPlace place, const AudioSampleEncoding &encoding,
                              std::int64_t channels, std::int64_t sampleRate) {
    const std::int64_t samples = place.frames * channels;
    SampleMemory memory{std::size_t(samples)};
    std::unique_ptr<SampleResidue> residue;
    if (SampleResidue::isNeeded(encoding)) residue = std::make_unique<SampleResidue>(encoding, samples);
    ScratchBlocks blocks{std::size_t(blockBytes)};
    parallelFor(samples, blockBytes / encoding.bytes, [&](std::int64_t lo, std::int64_t hi) {
        const auto block = blocks.take();
        const auto bytes = block.bytes().first(std::size_t((hi - lo) * encoding.bytes));
        const std::span decoded(memory.data() + lo, std::size_t(hi - lo));
        reader.read(place.start + lo * encoding.bytes, bytes);
        decodeSamples(bytes, encoding, decoded);
        if (residue) residue->keep(lo, bytes, encoding, decoded);
        reader.count(std::int64_t(bytes.size()));
    });
    if (residue && residue->isEmpty()) residue.reset();
    return {std::move(memory), channels, sampleRate, std::move(residue)};
}

}  // namespace kiv
