#include <gtest/gtest.h>

#include "Audio/Files/FileBytes.h"

namespace kiv {
namespace {

using namespace fileBytes;

AudioEditorBuffer sound(std::vector<float> samples, std::int64_t channels = 1) { return {samples, channels, 44100}; }

// What is written of a file after its buffer was exchanged.
Bytes rewritten(const Bytes &file, AudioEditorBuffer buffer) {
    AudioFileContents contents = read(file);
    contents.buffer = std::move(buffer);
    return written(contents);
}

// As many frames as wanted without the memory for them: a sound put behind itself shares its samples.
AudioEditorBuffer hugeSound(std::int64_t frames) {
    AudioEditorBuffer result(std::vector<float>(1 << 20), 1, 44100);
    while (result.frames() < frames) result = result.replacing({result.frames(), result.frames()}, result);
    return result.part({0, frames});
}

std::string failure(const AudioFileContents &contents) {
    try {
        return std::to_string(AudioFileCodec::nativeImage(contents).size());
    } catch (const AudioFileError &error) {
        return error.what();
    }
}

TEST(Writers, PutAnEditedSoundIntoTheFileAsItWas) {
    const auto wav = [](unsigned channels, unsigned frames, const Bytes &samples) {
        return riff("WAVE", chunk("abcd", text("xyz")) + chunk("fmt ", fmt({.channels = channels}) + text("extra!")) +
                                chunk("fact", le32(frames) + text("more")) + chunk("data", samples) +
                                chunk("LIST", text("INFOabcd")));
    };
    const auto aifc = [](unsigned channels, unsigned frames, const Bytes &samples) {
        const Comm common{.channels = channels, .frames = frames, .rate = extended(22050.5)};
        return form("AIFC", beChunk("FVER", be32(0xA2805140)) + ssnd(samples) + beChunk("COMM", compressed(common, "sowt")) +
                                beChunk("NAME", text("a song")));
    };
    const Bytes before = le16(1) + le16(2) + le16(3) + le16(4), after = le16(0x4000) + le16(0x8000) + le16(0x7FFF);
    EXPECT_EQ(show(rewritten(wav(2, 2, before), sound({0.5f, -1, 1}))), show(wav(1, 3, after)));
    EXPECT_EQ(show(rewritten(aifc(2, 2, before), sound({0.5f, -1, 1}))), show(aifc(1, 3, after)));
}

TEST(WavWriter, ClearsTheChannelMaskOnlyWhenTheChannelsChange) {
    const auto file = [](unsigned channels, unsigned mask) {
        return riff("WAVE", chunk("fmt ", extensible({.channels = channels}, 16, mask)) + chunk("data", zeros(4)));
    };
    EXPECT_EQ(show(rewritten(file(2, 3), sound({0, 0}))), show(file(1, 0)));
    EXPECT_EQ(show(rewritten(file(2, 4), sound({0, 0}))), show(file(1, 4)));
    EXPECT_EQ(show(written(read(file(2, 7)))), show(file(2, 7)));
}

TEST(WavWriter, KeepsShortFactsAndSizesThatDoNotFit) {
    const Bytes file = riff("WAVE", chunk("fmt ", fmt({.channels = 40000, .blockAlign = 0})) + chunk("fact", text("abc")) +
                                        chunk("data", zeros(80000)));
    const Bytes result = written(read(file));
    EXPECT_EQ(read(result).chunks[1].data, text("abc"));
    EXPECT_EQ(show(Bytes(result.begin() + 28, result.begin() + 34)), show(le32(44100u * 80000u) + le16(0)));
    EXPECT_EQ(read(result).buffer.frames(), 1);
}

// An empty data chunk reads as "up to the end of the file". Where others follow, it holds a byte that makes no frame; where any
// byte is a frame, it comes last.
TEST(WavWriter, KeepsOthersOutOfAnEmptyDataChunk) {
    const auto file = [](unsigned bits, const Bytes &chunks) {
        return riff("WAVE", chunk("fmt ", fmt({.bits = bits})) + chunks);
    };
    const Bytes others = chunk("note", text("ab")) + chunk("data", text("cdef")) + text("tail");
    const Bytes empty = file(16, chunk("data", zeros(1)) + others);
    EXPECT_EQ(show(written(read(empty))), show(empty));
    EXPECT_EQ(show(rewritten(file(8, chunk("data", byte(9)) + chunk("note", text("ab"))), sound({}))),
              show(file(8, chunk("note", text("ab")) + chunk("data", {}))));
    for (const Bytes &behind : {chunk("data", text("cdef")), text("tail")})
        EXPECT_THROW(rewritten(file(8, chunk("data", byte(9)) + behind), sound({})), AudioFileError);
}

TEST(AiffWriter, MakesASoundChunkWhenThereIsAudioToWrite) {
    const auto head = [](unsigned frames) { return beChunk("COMM", comm({.frames = frames})) + beChunk("NAME", text("none")); };
    EXPECT_EQ(show(written(read(form("AIFF", head(0))))), show(form("AIFF", head(0))));
    EXPECT_EQ(show(rewritten(form("AIFF", head(0)), sound({0.5f}))), show(form("AIFF", head(1) + ssnd(hex("4000")))));
}

TEST(Writers, RefuseWhatDoesNotFitOrHasNoEncoding) {
    const std::string tooLarge = "The audio is too large for this file format (4 GB limit).";
    struct Row {
        Bytes file;
        std::int64_t frames;
        std::string outcome;
    };
    const auto wav = [](const Bytes &more) { return riff("WAVE", chunk("fmt ", fmt({})) + chunk("data", zeros(2)) + more); };
    // 44 bytes of headers: the whole file is less than 8 bytes over 4 GB.
    const Row rows[] = {
        {wav({}), 0x80000000 - 20, "4294967300"},
        {wav({}), 0x80000000 - 18, tooLarge},
        {wav(text("abc")), 0x80000000 - 20, "4294967303"},
        {wav(text("abcd")), 0x80000000 - 20, tooLarge},
        {wav({}), 0x80000000, tooLarge},
        {aiffOf(1), 0x80000000 - 24, "4294967302"},
        {aiffOf(1), 0x80000000 - 23, tooLarge},
    };
    for (const Row &row : rows) {
        AudioFileContents contents = read(row.file);
        contents.buffer = hugeSound(row.frames);
        EXPECT_EQ(failure(contents), row.outcome) << show(row.file);
    }
    const std::string cannotSay = "The audio could not be written in this file's format (the file was left untouched).";
    for (const auto &[file, channels, rate] : {std::tuple{wav({}), 0x10000, std::int64_t(1)},
                                               {wav({}), 1, std::int64_t(1) << 32},
                                               {aiffOf(1), 0x8000, std::int64_t(1)}}) {
        AudioFileContents contents = read(file);
        contents.buffer = AudioEditorBuffer(channels, rate);
        EXPECT_EQ(failure(contents), cannotSay) << channels << " " << rate;
    }
    AudioFileContents decoded = read(wav({}));
    decoded.format.encoding.reset();
    EXPECT_EQ(failure(decoded), "This audio format is not supported (no PCM encoding).");
    decoded.format.container = AudioContainer::coreAudio;
    EXPECT_EQ(failure(decoded), "This audio format is not supported (no PCM encoding).");
}

TEST(Patched, RewritesFieldsThatAreThere) {
    using Kind = AudioFilePositionField::Kind;
    struct Row {
        AudioFilePositionField field;
        const char *bytes;
    };
    const std::vector<std::int64_t> positions{0x1234, 0, -5, 0x1FFFFFFFF, 0x1000};
    const Row rows[] = {
        {{.offset = 1, .index = 0}, "ee 34120000 eeee"},
        {{.offset = 1, .index = 0, .bigEndian = true}, "ee 00001234 eeee"},
        {{.offset = 0, .index = 0, .kind = Kind::inclusiveEnd}, "33120000 eeeeee"},
        {{.offset = 0, .index = 1, .kind = Kind::inclusiveEnd}, "00000000 eeeeee"},
        {{.offset = 0, .index = 2}, "00000000 eeeeee"},
        {{.offset = 0, .index = 3}, "ffffffff eeeeee"},
        {{.offset = 0, .index = 0, .from = 4, .kind = Kind::length}, "34020000 eeeeee"},
        {{.offset = 0, .index = 4, .from = 0, .kind = Kind::length}, "00000000 eeeeee"},
        {{.offset = 0, .index = 0, .from = 99, .kind = Kind::length}, "34120000 eeeeee"},
        {{.offset = 3, .index = 0}, "eeeeee 34120000"},
        {{.offset = 4, .index = 0}, "eeeeeeeeeeeeee"},
        {{.offset = 0xFFFFFFFF, .index = 0}, "eeeeeeeeeeeeee"},
        {{.offset = 0, .index = 5}, "eeeeeeeeeeeeee"},
    };
    for (const Row &row : rows) {
        const AudioFileChunk chunk{.id = "abcd", .data = hex("eeeeeeeeeeeeee"), .fields = {row.field}};
        EXPECT_EQ(show(AudioFileCodec::patched(chunk, positions)), show(hex(row.bytes)));
    }
    EXPECT_TRUE(AudioFileCodec::patched({.id = "tiny", .data = zeros(3), .fields = {{.offset = 0}}}, positions) == zeros(3));
}

// A cue in both its places, a loop up to the very end, a region: all follow moved positions.
TEST(Writers, MoveEveryStoredPosition) {
    const auto file = [](unsigned cue, FrameRange loop, unsigned region) {
        return wavOf(100, chunk("cue ", cues({{1, cue, cue}})) + chunk("smpl", smpl({loop})) +
                              chunk("LIST", text("adtl") + ltxt(1, region)));
    };
    AudioFileContents contents = read(file(50, {10, 99}, 20));
    EXPECT_EQ(contents.positions, (std::vector<std::int64_t>{50, 10, 100, 70}));
    EXPECT_EQ(show(written(contents)), show(file(50, {10, 99}, 20)));
    contents.positions = {60, 20, 0, 95};
    EXPECT_EQ(show(written(contents)), show(file(60, {20, 0}, 35)));
}

// 0 as the sample offset sends a reader to the position slot, which may hold something else.
TEST(WavWriter, SaysFrame0InBothPlacesOfACue) {
    AudioFileContents contents = read(wavOf(100, chunk("cue ", cues({{1, 7, 50}, {2, 8, 60}}))));
    contents.positions = {0, 61};
    EXPECT_EQ(show(written(contents)), show(wavOf(100, chunk("cue ", cues({{1, 0, 0}, {2, 8, 61}})))));
    EXPECT_EQ(read(written(contents)).positions, contents.positions);
}

TEST(BareContents, KeepOnlyWhatTheAudioNeeds) {
    const Bytes chunks = chunk("JUNK", zeros(4)) + chunk("fmt ", fmt({.bits = 24})) + chunk("fact", le32(9)) +
                         chunk("data", zeros(6)) + chunk("cue ", cues({{1, 1, 1}})) + chunk("data", zeros(2)) +
                         chunk("smpl", smpl({{0, 1}})) + text("tail");
    const auto bare = AudioFileCodec::bareContents(sound({0.5f}), read(riff("WAVE", chunks)));
    EXPECT_TRUE(bare.positions.empty() && !bare.loop);
    EXPECT_EQ(show(written(bare)),
              show(riff("WAVE", chunk("fmt ", fmt({.bits = 24})) + chunk("fact", le32(1)) + chunk("data", hex("000040")))));
}

}  // namespace
}  // namespace kiv
