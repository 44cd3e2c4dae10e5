#include "Audio/Files/SampleEncoding.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "Audio/Files/ByteFields.h"
#include "Support/Vectorised.h"

namespace kiv {
namespace {

constexpr auto little = std::endian::little, big = std::endian::big;

template <std::unsigned_integral Word, std::endian order>
void store(std::byte *at, Word word) {
    word = inOrder<order>(word);
    std::memcpy(at, &word, sizeof word);
}

// The sample brought to −1 … 1, or 0 where it is not finite. On the bits, where magnitudes compare like integers: the loops
// around this then have no branch and vectorise.
float clipped(float sample) {
    const auto bits = std::bit_cast<std::uint32_t>(sample);
    const std::uint32_t magnitude = bits & 0x7FFFFFFF;
    const std::uint32_t finite = 0u - std::uint32_t(magnitude < 0x7F800000);
    constexpr auto one = std::bit_cast<std::uint32_t>(1.0f);
    return std::bit_cast<float>((bits & 0x80000000) | (std::min(magnitude, one) & finite));
}

// Rounded half away from zero to so many bits, full scale being 2^(bits − 1). Clipping first gives the same as rounding first,
// for the limits are whole numbers. The product is exact: a power of two, in range. So is the fraction, and thereby its
// comparison with a half, which adding a half before cutting off would not be in 32-bit float.
template <int bits>
std::int32_t rounded(float sample) {
    constexpr std::int32_t fullScale = 1 << (bits - 1);
    const float value = clipped(sample) * float(fullScale);
    const auto whole = std::int32_t(value);
    const float fraction = value - float(whole);
    return std::min(whole + (fraction >= 0.5f) - (fraction <= -0.5f), fullScale - 1);
}

// 2^31 is no 32-bit integer, so the upper limit comes before the conversion, and in double. The product has a float's 24 bits:
// adding a half to it is exact unless it is below 2^−28, where the sum is too small to matter.
template <>
std::int32_t rounded<32>(float sample) {
    const double value = double(clipped(sample)) * 0x1p31;
    return std::int32_t(std::min(value, 0x1p31 - 1) + std::copysign(0.5, value));
}

template <std::unsigned_integral Word, std::endian order, Word flipped = 0>
KIV_VECTORISED void encodeIntegers(const float *in, std::byte *out, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        store<Word, order>(out + sizeof(Word) * i, Word(rounded<8 * sizeof(Word)>(in[i])) ^ flipped);
}

// Four samples of three bytes make three words of four.
template <std::endian order>
void storeFour24(const std::uint32_t *in, std::byte *out) {
    const std::uint32_t a = in[0] << 8, b = in[1] << 8, c = in[2] << 8, d = in[3] << 8;
    if constexpr (order == little) {
        store<std::uint32_t, order>(out, a >> 8 | b << 16);
        store<std::uint32_t, order>(out + 4, b >> 16 | c << 8);
        store<std::uint32_t, order>(out + 8, c >> 24 | d);
    } else {
        store<std::uint32_t, order>(out, a | b >> 24);
        store<std::uint32_t, order>(out + 4, b << 8 | c >> 16);
        store<std::uint32_t, order>(out + 8, c << 16 | d >> 8);
    }
}

// By way of a few whole integers, so that the rounding and the packing are each a loop that vectorises.
template <std::endian order>
KIV_VECTORISED void encode24(const float *in, std::byte *out, std::size_t count) {
    constexpr std::size_t block = 256;
    std::array<std::uint32_t, block> integers;
    std::array<std::byte, 3 * block> packed;
    for (std::size_t at = 0; at < count; at += block) {
        const std::size_t here = std::min(block, count - at);
        for (std::size_t i = 0; i < here; ++i) integers[i] = std::uint32_t(rounded<24>(in[at + i]));
        for (std::size_t i = here; i % 4 != 0; ++i) integers[i] = 0;
        for (std::size_t i = 0; i < here; i += 4) storeFour24<order>(integers.data() + i, packed.data() + 3 * i);
        std::memcpy(out + 3 * at, packed.data(), 3 * here);
    }
}

// Moved as integers, as in decoding.
template <std::endian order>
KIV_VECTORISED void encodeFloats(const float *in, std::byte *out, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        std::uint32_t word;
        std::memcpy(&word, in + i, sizeof word);
        store<std::uint32_t, order>(out + 4 * i, word);
    }
}

template <std::endian order>
KIV_VECTORISED void encodeDoubles(const float *in, std::byte *out, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        store<std::uint64_t, order>(out + 8 * i, std::bit_cast<std::uint64_t>(double(in[i])));
}

using Encoder = void (*)(const float *in, std::byte *out, std::size_t count);

template <std::endian order>
Encoder integerEncoder(const AudioSampleEncoding &encoding) {
    switch (encoding.bytes) {
        case 1:
            return encoding.unsigned8 ? encodeIntegers<std::uint8_t, order, 0x80> : encodeIntegers<std::uint8_t, order>;
        case 2:
            return encodeIntegers<std::uint16_t, order>;
        case 3:
            return encode24<order>;
        default:
            return encodeIntegers<std::uint32_t, order>;
    }
}

template <std::endian order>
Encoder encoder(const AudioSampleEncoding &encoding) {
    if (encoding.kind == AudioSampleEncoding::Kind::integer) return integerEncoder<order>(encoding);
    return encoding.bytes == 4 ? encodeFloats<order> : encodeDoubles<order>;
}

}  // namespace

void encodeSamples(std::span<const float> in, const AudioSampleEncoding &encoding, std::span<std::byte> out) {
    assert(out.size() == in.size() * std::size_t(encoding.bytes));
    const Encoder encode = encoding.bigEndian ? encoder<big>(encoding) : encoder<little>(encoding);
    encode(in.data(), out.data(), in.size());
}

}  // namespace kiv
