#include <gtest/gtest.h>

#include "Audio/Files/FileBytes.h"

namespace kiv {
namespace {

using namespace fileBytes;
using Field = AudioFilePositionField;
using FieldKind = AudioFilePositionField::Kind;

const AudioFileChunk &chunkNamed(const AudioFileContents &contents, std::string_view id) {
    for (const AudioFileChunk &each : contents.chunks)
        if (each.id == id) return each;
    throw std::out_of_range(std::string(id));
}

TEST(WavReader, ReadsFormatSamplesAndChunksInOrder) {
    const Bytes samples = le16(0x8000) + le16(0) + le16(0x4000) + le16(1);
    const auto contents = read(riff("WAVE", chunk("junk", text("odd")) + chunk("fmt ", fmt({.channels = 2, .rate = 48000})) +
                                                chunk("data", samples) + chunk("x\xFFyz", text("ab"))));
    EXPECT_EQ(contents.format.container, AudioContainer::wav);
    EXPECT_EQ(contents.format.encoding, (AudioSampleEncoding{.bytes = 2, .validBits = 16}));
    EXPECT_EQ(contents.format.sampleRate, 48000);
    EXPECT_EQ(contents.format.typeName + " " + contents.format.bitsDescription + " " + contents.format.fileExtension,
              "WAV 16-bit wav");
    EXPECT_EQ(contents.buffer.channels(), 2);
    EXPECT_EQ(contents.buffer.sampleRate(), 48000);
    EXPECT_EQ(contents.buffer.samples(), (std::vector<float>{-1, 0, 0.5f, 0x1p-15f}));
    ASSERT_EQ(contents.chunks.size(), 4u);
    EXPECT_EQ(contents.chunks[0], (AudioFileChunk{.id = "junk", .data = text("odd"), .fields = {}, .sizeInFile = 3}));
    EXPECT_EQ(contents.chunks[1].id, "fmt ");
    EXPECT_EQ(contents.chunks[2], (AudioFileChunk{.id = "data", .data = {}, .fields = {}, .sizeInFile = 8}));
    EXPECT_EQ(displayText(contents.chunks[3].id), "x\uFFFDyz");
    EXPECT_TRUE(contents.positions.empty() && contents.trailing.empty() && !contents.loop);
}

TEST(WavReader, TakesTheWidthFromBlockAlignAndTheTagFromTheSubFormat) {
    struct Row {
        Bytes format;
        int bytes, validBits;
        const char *description;
    };
    const Row rows[] = {
        {fmt({.bits = 8}), 1, 8, "8-bit"},
        {fmt({.channels = 2, .bits = 12, .blockAlign = 4}), 2, 12, "12-bit"},
        {fmt({.channels = 2, .bits = 24, .blockAlign = 5}), 3, 24, "24-bit"},
        {fmt({.bits = 20, .blockAlign = 0}), 3, 20, "20-bit"},
        {fmt({.bits = 24, .blockAlign = 2}), 2, 16, "16-bit"},
        {extensible({.bits = 24}, 20, 4), 3, 20, "20-bit"},
        {extensible({.bits = 24}, 0, 4), 3, 24, "24-bit"},
        {fmt({.tag = 3, .bits = 32}), 4, 32, "32-bit float"},
        {extensible({.tag = 3, .bits = 64}, 64, 4), 8, 64, "64-bit float"},
    };
    for (const Row &row : rows) {
        const auto contents = read(riff("WAVE", chunk("fmt ", row.format) + chunk("data", zeros(48))));
        EXPECT_EQ(contents.format.encoding->bytes, row.bytes) << row.description;
        EXPECT_EQ(contents.format.encoding->validBits, row.validBits) << row.description;
        EXPECT_EQ(contents.format.encoding->unsigned8, row.bytes == 1) << row.description;
        EXPECT_EQ(contents.format.bitsDescription, row.description);
        EXPECT_EQ(contents.buffer.frames(), 48 / (row.bytes * contents.buffer.channels()));
    }
}

TEST(WavReader, SaysWhatItCannotRead) {
    const Bytes data = chunk("data", zeros(8));
    const auto wave = [](const Bytes &chunks) { return riff("WAVE", chunks); };
    const auto unreadable = [](const char *why) { return "The file could not be read: " + std::string(why) + "."; };
    const std::pair<Bytes, std::string> rows[] = {
        {text("RIFF"), "not ours"},
        {riff("AVI ", data), "not ours"},
        {text("RIFX") + le32(4) + text("WAVE"), "not ours"},
        {wave({}), unreadable("no format chunk")},
        {wave(chunk("fmt ", zeros(15)) + data), unreadable("no format chunk")},
        {wave(chunk("fmt ", fmt({}))), unreadable("no audio data")},
        {wave(chunk("fmt ", fmt({.tag = 2}))), unreadable("no audio data")},
        {wave(chunk("fmt ", fmt({.channels = 0})) + data), unreadable("bad format chunk")},
        {wave(chunk("fmt ", fmt({.rate = 0})) + data), unreadable("bad format chunk")},
        {wave(chunk("fmt ", fmt({.tag = 2, .bits = 4})) + data), "not ours"},
        {wave(chunk("fmt ", fmt({.bits = 40})) + data), "not ours"},
        {wave(chunk("fmt ", fmt({.bits = 0, .blockAlign = 0})) + data), "not ours"},
        {wave(chunk("fmt ", fmt({.tag = 3, .bits = 24})) + data), "not ours"},
        {wave(chunk("fmt ", fmt({.tag = 0xFFFE})) + data), "not ours"},
    };
    for (const auto &[file, expected] : rows) EXPECT_EQ(outcome(file), expected) << show(file);
}

// The size in the form's header is not looked at; one that was never filled in means all there is; one that is too large is
// cut.
TEST(WavReader, BelievesTheBytesMoreThanTheSizes) {
    const Bytes head = text("RIFF") + le32(0) + text("WAVE") + chunk("fmt ", fmt({}));
    for (const std::uint32_t size : {0u, 0xFFFFFFFFu, 1000u})
        EXPECT_EQ(read(head + text("data") + le32(size) + le16(1) + le16(2) + le16(3)).buffer.frames(), 3) << size;
    const auto partial = read(riff("WAVE", chunk("fmt ", fmt({.channels = 2})) + chunk("data", zeros(11)) + chunk("abcd", {})));
    EXPECT_EQ(partial.buffer.frames(), 2);
    EXPECT_EQ(partial.chunks.size(), 3u);
    EXPECT_EQ(read(wavOf(1, text("tail"))).trailing, text("tail"));
    // Only the first chunk of the name is the audio.
    const auto two = read(wavOf(2, chunk("data", {}) + chunk("data", text("more"))));
    EXPECT_EQ(two.buffer.frames(), 2);
    EXPECT_EQ(two.chunks[3].data, text("more"));
}

TEST(WavReader, CollectsCuesThenLoopsThenRegions) {
    const Bytes list = text("adtl") + chunk("labl", le32(7) + text("abc")) + ltxt(7, 20) + ltxt(99, 5) + ltxt(8, 5000);
    const auto contents = read(wavOf(1000, chunk("LIST", list) + chunk("smpl", smpl({{500, 400}, {100, 199}, {0, 9}})) +
                                               chunk("cue ", cues({{7, 100, 100}, {8, 300, 0}, {9, 5, 2000}, {10, 0, 0}}))));
    EXPECT_EQ(contents.positions, (std::vector<std::int64_t>{100, 300, 1000, 0, 500, 401, 100, 200, 0, 10, 120, 1000}));
    EXPECT_EQ(contents.loop, (AudioFileLoop{6, 7}));
    EXPECT_EQ(chunkNamed(contents, "cue ").fields, (std::vector<Field>{{.offset = 8, .index = 0},
                                                                       {.offset = 24, .index = 0},
                                                                       {.offset = 32, .index = 1},
                                                                       {.offset = 72, .index = 2},
                                                                       {.offset = 80, .index = 3},
                                                                       {.offset = 96, .index = 3}}));
    const auto &loops = chunkNamed(contents, "smpl").fields;
    EXPECT_EQ(loops.size(), 6u);
    EXPECT_EQ(loops[2], (Field{.offset = 68, .index = 6}));
    EXPECT_EQ(loops[3], (Field{.offset = 72, .index = 7, .kind = FieldKind::inclusiveEnd}));
    EXPECT_EQ(chunkNamed(contents, "LIST").fields,
              (std::vector<Field>{{.offset = 32, .index = 10, .from = 0, .kind = FieldKind::length},
                                  {.offset = 88, .index = 11, .from = 1, .kind = FieldKind::length}}));
}

// A file that was cut off says so; one whose writer never knew its length does not.
TEST(WavReader, TellsHowMuchIsMissing) {
    const struct {
        std::uint32_t declared;
        std::int64_t missing;
    } rows[] = {{200, 0},
                {0, 0},
                {1000, 400},
                {0x70000000, 0x38000000 - 100},
                {0x7F000000, 0},
                {0x7FFFF000, 0},
                {0xC0000000, 0x60000000 - 100},
                {0xFFFFFFFF, 0},
                {0xFFFFFFD8, 0}};
    for (const auto &[declared, missing] : rows) {
        Bytes file = wavOf(100, {});
        putWord(std::span(file), file.size() - 204, std::endian::little, declared);
        EXPECT_EQ(read(file).missingFrames, missing) << std::hex << declared;
    }
}

// Counts and sizes larger than what is there are cut to what fits.
TEST(WavReader, ReadsWhatIsThereOfTruncatedMetadata) {
    Bytes manyCues = cues({{1, 10, 0}, {2, 20, 0}}), manyLoops = smpl({{1, 2}});
    putWord(std::span(manyCues), 0, std::endian::little, 0xFFFFFFFFu);
    putWord(std::span(manyLoops), 28, std::endian::little, 0xFFFFFFFFu);
    manyCues.resize(manyCues.size() - 1);
    const Bytes cutRegion = text("adtl") + text("ltxt") + le32(20) + le32(1) + le32(4);
    const std::pair<Bytes, std::vector<std::int64_t>> rows[] = {
        {chunk("cue ", manyCues), {10}},
        {chunk("cue ", zeros(3)), {}},
        {chunk("cue ", le32(5)), {}},
        {chunk("smpl", manyLoops), {1, 3}},
        {chunk("smpl", zeros(35)), {}},
        {chunk("cue ", cues({{1, 10, 0}})) + chunk("LIST", cutRegion), {10}},
        {chunk("cue ", cues({{1, 10, 0}})) + chunk("LIST", text("adtl") + text("ltxt") + le32(7) + zeros(8)), {10}},
        {chunk("cue ", cues({{1, 10, 0}})) + chunk("LIST", text("adtl") + text("labl") + le32(0xFFFFFFFF) + ltxt(1, 2)), {10}},
        {chunk("LIST", text("adtl")) + chunk("LIST", text("INFO") + ltxt(1, 2)), {}},
        {chunk("smpl", smpl({{5, 0xFFFFFFFF}})), {5, 100}},
    };
    for (const auto &[chunks, positions] : rows) EXPECT_EQ(read(wavOf(100, chunks)).positions, positions) << show(chunks);
}

}  // namespace
}  // namespace kiv
