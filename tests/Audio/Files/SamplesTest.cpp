#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "Audio/Files/FileBytes.h"
#include "Audio/Files/SampleDecoding.h"
#include "Audio/Files/SampleEncoding.h"

// The conversions between a file's samples and 32-bit floats.
namespace kiv {
namespace {

using namespace fileBytes;
using Kind = AudioSampleEncoding::Kind;

AudioSampleEncoding integers(int bytes, bool bigEndian = false, bool unsigned8 = false) {
    return {.bytes = bytes, .validBits = 8 * bytes, .bigEndian = bigEndian, .unsigned8 = unsigned8};
}
AudioSampleEncoding floats(int bytes, bool bigEndian = false) {
    return {.kind = Kind::floating, .bytes = bytes, .validBits = 8 * bytes, .bigEndian = bigEndian};
}

std::vector<AudioSampleEncoding> allEncodings() {
    std::vector<AudioSampleEncoding> all{integers(1, false, true), integers(1, true)};
    for (const bool bigEndian : {false, true})
        for (const auto &encoding : {integers(2, bigEndian), integers(3, bigEndian), integers(4, bigEndian),
                                     floats(4, bigEndian), floats(8, bigEndian)})
            all.push_back(encoding);
    return all;
}

std::vector<float> decoded(const Bytes &bytes, const AudioSampleEncoding &encoding) {
    std::vector<float> samples(bytes.size() / std::size_t(encoding.bytes));
    decodeSamples(bytes, encoding, samples);
    return samples;
}

Bytes encoded(const std::vector<float> &samples, const AudioSampleEncoding &encoding) {
    Bytes bytes(samples.size() * std::size_t(encoding.bytes));
    encodeSamples(samples, encoding, bytes);
    return bytes;
}

constexpr float nan = std::numeric_limits<float>::quiet_NaN(), infinity = std::numeric_limits<float>::infinity();

TEST(Samples, DecodeAsTheirEncodingSays) {
    struct Row {
        AudioSampleEncoding encoding;
        const char *bytes;
        std::vector<float> samples;
    };
    const Row rows[] = {
        {integers(1, false, true), "00 80 81 ff", {-1, 0, 1.0f / 128, 127.0f / 128}},
        {integers(1, true), "80 00 01 7f", {-1, 0, 1.0f / 128, 127.0f / 128}},
        {integers(2), "0080 ffff 0000 0100 ff7f", {-1, -0x1p-15f, 0, 0x1p-15f, 32767 * 0x1p-15f}},
        {integers(2, true), "8000 ffff 0001 7fff", {-1, -0x1p-15f, 0x1p-15f, 32767 * 0x1p-15f}},
        {integers(3), "000080 ffffff 010000 ffff7f 563412", {-1, -0x1p-23f, 0x1p-23f, 8388607 * 0x1p-23f, 0x123456 * 0x1p-23f}},
        {integers(3, true),
         "800000 ffffff 000001 7fffff 123456 edcba9",
         {-1, -0x1p-23f, 0x1p-23f, 8388607 * 0x1p-23f, 0x123456 * 0x1p-23f, -0x123457 * 0x1p-23f}},
        // The last two lie halfway between floats, and go to the even one.
        {integers(4),
         "00000080 ffffffff 00000040 ffffff7f 41000001 c1000001",
         {-1, -0x1p-31f, 0.5f, 1, 0x1000041 * 0x1p-31f, 0x10000c0 * 0x1p-31f}},
        {integers(4, true), "80000000 00000001 7fffffff", {-1, 0x1p-31f, 1}},
        {floats(4), "0000803f 000000c0", {1, -2}},
        {floats(4, true), "3f800000 c0000000", {1, -2}},
        {floats(8), "000000000000f03f 00000000000000c0 9a9999999999b93f", {1, -2, 0.1f}},
        {floats(8, true), "3ff0000000000000 c000000000000000 7fefffffffffffff", {1, -2, infinity}},
    };
    for (const Row &row : rows)
        EXPECT_EQ(decoded(hex(row.bytes), row.encoding), row.samples) << row.encoding.description() << " " << row.bytes;
}

TEST(Samples, EncodeRoundedHalfAwayFromZeroAndClipped) {
    struct Row {
        AudioSampleEncoding encoding;
        std::vector<float> samples;
        const char *bytes;
    };
    const Row rows[] = {
        {integers(2), {1, -1, 1.5f, -1.5f, nan, infinity, -infinity}, "ff7f 0080 ff7f 0080 0000 0000 0000"},
        {integers(2, true), {0.5f / 32768, -0.5f / 32768, 0.49f / 32768, 1.5f / 32768}, "0001 ffff 0000 0002"},
        {integers(2), {32767.5f / 32768, 32766.5f / 32768, -32767.5f / 32768}, "ff7f ff7f 0080"},
        {integers(1, false, true), {0, -1, 1, nan, 0.5f / 128, -0.5f / 128, 1e30f}, "80 00 ff 80 81 7f ff"},
        {integers(1, true), {0, -1, 1, nan, 0.5f / 128}, "00 80 7f 00 01"},
        {integers(3), {1, -1, 0.5f * 0x1p-23f, -0x1p-23f, nan}, "ffff7f 000080 010000 ffffff 000000"},
        {integers(3, true), {1, -1, 0x123456 * 0x1p-23f}, "7fffff 800000 123456"},
        {integers(4),
         {1, -1, 2, -2, nan, 0x1p-31f, 0x1p-32f, 0x1p-33f, 1 - 0x1p-24f},
         "ffffff7f 00000080 ffffff7f 00000080 00000000 01000000 01000000 00000000 80ffff7f"},
        {integers(4, true), {-0x1p-31f, -1e-45f}, "ffffffff 00000000"},
        {floats(8), {0.5f, -infinity}, "000000000000e03f 000000000000f0ff"},
        {floats(8, true), {0.5f, 1e-45f}, "3fe0000000000000 36a0000000000000"},
    };
    for (const Row &row : rows)
        EXPECT_EQ(show(encoded(row.samples, row.encoding)), show(hex(row.bytes))) << row.encoding.description();
}

// What rounding is, spelled out.
std::int64_t expectedInteger(float sample, int bytes) {
    const double fullScale = std::ldexp(1, 8 * bytes - 1);
    if (!std::isfinite(sample)) return 0;
    return std::int64_t(std::clamp(std::round(double(sample) * fullScale), -fullScale, fullScale - 1));
}

std::int64_t integerAt(const Bytes &bytes, std::size_t index, int width) {
    std::uint32_t value = 0;
    for (int i = 0; i < width; ++i)
        value |= std::to_integer<std::uint32_t>(bytes[index * std::size_t(width) + std::size_t(i)]) << (8 * i);
    return std::int32_t(value << (32 - 8 * width)) >> (32 - 8 * width);
}

// Around every half between two integers, and over random bit patterns of all magnitudes.
TEST(Samples, RoundExactlyNearHalves) {
    std::mt19937 random(7);
    for (const int bytes : {1, 2, 3, 4}) {
        const double fullScale = std::ldexp(1, 8 * bytes - 1);
        const double step = std::max(1.0, fullScale / 40000);
        std::vector<float> samples;
        for (double integer = -fullScale - 2; integer < fullScale + 2; integer += step) {
            const auto half = float((std::floor(integer) + 0.5) / fullScale);
            samples.insert(samples.end(), {half, std::nextafter(half, -2.0f), std::nextafter(half, 2.0f)});
        }
        for (int i = 0; i < 200000; ++i) samples.push_back(std::bit_cast<float>(std::uint32_t(random())));
        const Bytes result = encoded(samples, integers(bytes));
        for (std::size_t i = 0; i < samples.size(); ++i)
            ASSERT_EQ(integerAt(result, i, bytes), expectedInteger(samples[i], bytes)) << samples[i] << " in " << bytes;
    }
}

// All integers of 8 and 16 bits, and random bytes for the rest, come back as they were; so do the bits of floats, of NaNs too.
TEST(Samples, ComeBackBitForBit) {
    for (const AudioSampleEncoding &encoding : allEncodings()) {
        const bool exact = encoding.kind == Kind::integer ? encoding.bytes <= 3 : encoding.bytes == 4;
        if (!exact) continue;
        Bytes bytes;
        for (unsigned i = 0; encoding.bytes == 2 && i < 65536; ++i) append(bytes, le16(i));
        append(bytes, noise(std::size_t(encoding.bytes) * 10007, 3));
        EXPECT_TRUE(encoded(decoded(bytes, encoding), encoding) == bytes) << encoding.description();
    }
    const Bytes odd = hex("0100807f 0100a0ff ffffffff 000080ff 00000080 01000000");
    EXPECT_EQ(show(encoded(decoded(odd, floats(4)), floats(4))), show(odd));
}

// Loops of several samples at a time must not lose those left over.
TEST(Samples, ConvertAnyCount) {
    for (const AudioSampleEncoding &encoding : allEncodings()) {
        const auto width = std::size_t(encoding.bytes);
        std::vector<float> samples(600);
        for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = float(i % 7) / 8 - 0.25f;
        const Bytes all = encoded(samples, encoding);
        for (const std::size_t count : {0, 1, 2, 3, 5, 6, 7, 255, 257, 511, 599}) {
            const Bytes some(all.begin(), all.begin() + std::ptrdiff_t(count * width));
            const std::vector<float> head(samples.begin(), samples.begin() + std::ptrdiff_t(count));
            EXPECT_TRUE(encoded(head, encoding) == some) << encoding.description() << " " << count;
            EXPECT_EQ(decoded(some, encoding), head) << encoding.description() << " " << count;
        }
    }
}

}  // namespace
}  // namespace kiv
