#include <gtest/gtest.h>

#include <limits>

#include "Audio/Files/FileBytes.h"

namespace kiv {
namespace {

using namespace fileBytes;

Bytes aiff(const Comm &c, const Bytes &samples) { return form("AIFF", beChunk("COMM", comm(c)) + ssnd(samples)); }
Bytes aifc(const Comm &c, std::string_view type, const Bytes &samples) {
    return form("AIFC", beChunk("FVER", be32(0xA2805140)) + beChunk("COMM", compressed(c, type)) + ssnd(samples));
}

TEST(AiffReader, ReadsFormatSamplesAndChunks) {
    const auto contents = read(aiff({.channels = 2, .frames = 2, .rate = extended(22050.5)}, hex("8000 0000 4000 0001")));
    EXPECT_EQ(contents.format.container, AudioContainer::aiff);
    EXPECT_EQ(contents.format.typeName + " " + contents.format.bitsDescription + " " + contents.format.fileExtension,
              "AIFF 16-bit aiff");
    EXPECT_EQ(contents.format.sampleRate, 22050.5);
    EXPECT_EQ(contents.buffer.sampleRate(), 22051);
    EXPECT_EQ(contents.buffer.samples(), (std::vector<float>{-1, 0, 0.5f, 0x1p-15f}));
    ASSERT_EQ(contents.chunks.size(), 2u);
    EXPECT_EQ(contents.chunks[1], (AudioFileChunk{.id = "SSND", .data = {}, .fields = {}, .sizeInFile = 16}));
}

TEST(AiffReader, TakesTheEncodingFromTheCompressionType) {
    using Kind = AudioSampleEncoding::Kind;
    const std::pair<const char *, AudioSampleEncoding> rows[] = {
        {"NONE", {Kind::integer, 2, 12, true, false}},  {"twos", {Kind::integer, 2, 12, true, false}},
        {"sowt", {Kind::integer, 2, 12, false, false}}, {"in24", {Kind::integer, 3, 24, true, false}},
        {"in32", {Kind::integer, 4, 32, true, false}},  {"fl32", {Kind::floating, 4, 32, true, false}},
        {"FL32", {Kind::floating, 4, 32, true, false}}, {"fl64", {Kind::floating, 8, 64, true, false}},
        {"FL64", {Kind::floating, 8, 64, true, false}},
    };
    for (const auto &[type, encoding] : rows) {
        const auto contents = read(aifc({.frames = 3, .bits = 12}, type, zeros(24)));
        EXPECT_EQ(contents.format.encoding, encoding) << type;
        EXPECT_EQ(contents.format.typeName + " " + contents.format.fileExtension, "AIFC aifc");
        EXPECT_EQ(contents.buffer.frames(), 3);
    }
    EXPECT_EQ(read(aiff({.frames = 1, .bits = 8}, hex("80"))).buffer.samples(), std::vector<float>{-1});
}

TEST(AiffReader, SaysWhatItCannotRead) {
    const double huge = std::numeric_limits<double>::max();
    const Bytes infinite = hex("7fff 8000000000000000"), notANumber = hex("7fff c000000000000000");
    const auto withRate = [](const Bytes &rate) { return aiff({.rate = rate}, {}); };
    const std::string bad = "The file could not be read: bad COMM chunk.";
    const std::pair<Bytes, std::string> rows[] = {
        {form("8SVX", {}), "not ours"},
        {form("AIFF", {}), "The file could not be read: no COMM chunk."},
        {form("AIFF", beChunk("COMM", zeros(17))), "The file could not be read: no COMM chunk."},
        {form("AIFC", beChunk("COMM", comm({}))), "The file could not be read: bad AIFC COMM chunk."},
        {aiff({.channels = 0}, {}), bad},
        {aiff({.channels = 0xFFFF}, {}), bad},
        {aiff({.bits = 0}, {}), bad},
        {withRate(zeros(10)), bad},
        {withRate(extended(-44100)), bad},
        {withRate(infinite), bad},
        {withRate(notANumber), bad},
        {withRate(extended(huge)), "read"},
        {withRate(hex("7ffe ffffffffffffffff")), bad},
        {withRate(hex("0000 0000000000000001")), bad},
        {withRate(extended(0.25)), "read"},
        {aiff({.bits = 33}, {}), "not ours"},
        {aifc({}, "ulaw", {}), "not ours"},
        {aifc({}, "\xFF\xFE\xFD\xFC", {}), "not ours"},
    };
    for (const auto &[file, expected] : rows) EXPECT_EQ(outcome(file), expected) << show(file);
    const std::pair<double, std::int64_t> rates[] = {{0.25, 1}, {3e9 + 0.5, 3'000'000'001}, {huge, std::int64_t(1) << 53}};
    for (const auto &[rate, whole] : rates) EXPECT_EQ(read(withRate(extended(rate))).buffer.sampleRate(), whole);
}

TEST(AiffReader, HasTheFramesThatAreThereAndSaid) {
    const Bytes common = beChunk("COMM", comm({.frames = 4}));
    const auto sound = [](std::uint32_t offset, const Bytes &rest) { return beChunk("SSND", be32(offset) + zeros(4) + rest); };
    const std::pair<Bytes, std::vector<float>> rows[] = {
        {common, {}},
        {common + beChunk("SSND", zeros(7)), {}},
        {common + sound(0, hex("4000 2000")), {0.5f, 0.25f}},
        {common + sound(0, hex("4000 2000 1000 0800 0400")), {0.5f, 0.25f, 0.125f, 0.0625f}},
        {common + sound(3, hex("ffffff 4000 20")), {0.5f}},
        {common + sound(0xFFFFFFF0, hex("4000")), {}},
        {common + text("SSND") + be32(0) + zeros(8) + hex("4000 2000"), {0.5f, 0.25f}},
        {common + text("SSND") + be32(0xFFFFFFFF) + zeros(8) + hex("4000"), {0.5f}},
    };
    for (const auto &[chunks, samples] : rows) {
        const auto contents = read(form("AIFF", chunks));
        EXPECT_EQ(contents.buffer.samples(), samples) << show(chunks);
        EXPECT_EQ(contents.buffer.channels(), 1);
    }
}

TEST(AiffReader, CollectsMarkersAndTheSustainLoop) {
    const Bytes markers = be16(4) + marker(5, 10, "odd") + marker(6, 90, "even") + marker(5, 40, "") + marker(8, 5000, "past");
    const auto contents = read(aiffOf(100, beChunk("INST", instrument(1, 5, 6)) + beChunk("MARK", markers)));
    EXPECT_EQ(contents.positions, (std::vector<std::int64_t>{10, 90, 40, 100}));
    EXPECT_EQ(contents.loop, (AudioFileLoop{2, 1}));
    std::vector<std::uint32_t> offsets;
    for (const AudioFilePositionField &field : contents.chunks[3].fields) {
        EXPECT_TRUE(field.bigEndian && field.index == offsets.size());
        offsets.push_back(field.offset);
    }
    EXPECT_EQ(offsets, (std::vector<std::uint32_t>{4, 14, 26, 34}));
}

TEST(AiffReader, TellsHowMuchIsMissing) {
    Bytes file = aiffOf(100, {});
    EXPECT_EQ(read(file).missingFrames, 0);
    for (const auto &[declared, missing] : {std::pair{140u, 40}, {0xFFFFFFFFu, 0}, {0x3F800000u, 0}}) {
        putWord(std::span(file), 22, std::endian::big, declared);
        EXPECT_EQ(read(file).missingFrames, missing) << declared;
    }
}

TEST(AiffReader, ReadsWhatIsThereOfTruncatedMarkersAndLoops) {
    const Bytes two = be16(2) + marker(1, 10, "a") + marker(2, 20, "b");
    struct Row {
        Bytes chunks;
        std::size_t positions;
        bool loop;
    };
    const Row rows[] = {
        {beChunk("MARK", zeros(1)), 0, false},
        {beChunk("MARK", be16(0xFFFF) + marker(1, 10, "a") + be16(2) + be16(0)), 1, false},
        {beChunk("MARK", be16(2) + marker(1, 10, "a") + be16(2) + be32(20)), 2, false},
        {beChunk("MARK", be16(2) + marker(1, 10, "a") + be16(2) + be32(20) + byte(200)), 2, false},
        {beChunk("MARK", two) + beChunk("INST", instrument(1, 1, 2)), 2, true},
        {beChunk("MARK", two) + beChunk("INST", instrument(1, 2, 1)), 2, false},
        {beChunk("MARK", two) + beChunk("INST", instrument(0, 1, 2)), 2, false},
        {beChunk("MARK", two) + beChunk("INST", instrument(1, 1, 3)), 2, false},
        {beChunk("MARK", two) + text("INST") + be32(20) + hex("3C00007F017F0000") + be16(1) + be16(1) + be16(2), 2, false},
    };
    for (const Row &row : rows) {
        const auto contents = read(aiffOf(100, row.chunks));
        EXPECT_EQ(contents.positions.size(), row.positions) << show(row.chunks);
        EXPECT_EQ(contents.loop.has_value(), row.loop) << show(row.chunks);
    }
}

}  // namespace
}  // namespace kiv
