#include <gtest/gtest.h>

#include "Audio/Files/FileBytes.h"
#include "Audio/Files/SampleWrapping.h"

// Files of other kinds whose samples are exchanged in their wrapping.
namespace kiv {
namespace {

using namespace fileBytes;

Bytes le64(std::uint64_t value) { return word<std::uint64_t>(value, std::endian::little); }

Bytes cafChunk(std::string_view id, const Bytes &payload) { return text(id) + be64(payload.size()) + payload; }
Bytes caf(std::string_view format, unsigned flags, const Bytes &chunks) {
    return text("caff") + be32(0x10000) +
           cafChunk("desc", be64(0x40E5888000000000) + text(format) + be32(flags) + be32(4) + be32(1) + be32(2) + be32(16)) +
           chunks;
}
Bytes cafData(const Bytes &samples) { return cafChunk("data", be32(7) + samples); }
Bytes au(unsigned size, const Bytes &note, const Bytes &samples) {
    return text(".snd") + be32(24 + note.size()) + be32(size) + be32(3) + be32(44100) + be32(2) + note + samples;
}
Bytes w64Chunk(std::string_view id, const Bytes &payload) {
    const Bytes chunk = text(id) + hex("F3ACD3118CD100C04F8EDB8A") + le64(payload.size() + 24) + payload;
    return chunk + zeros((8 - chunk.size() % 8) % 8);
}
Bytes w64(const Bytes &chunks) {
    return text("riff") + hex("2E91CF11A5D628DB04C10000") + le64(40 + chunks.size()) + text("wave") +
           hex("F3ACD3118CD100C04F8EDB8A") + chunks;
}
Bytes rf64(std::uint64_t samples, const Bytes &chunks) {
    const std::uint64_t rest = 4 + 36 + chunks.size();
    return text("RF64") + le32(0xFFFFFFFF) + text("WAVE") +
           chunk("ds64", le64(rest) + le64(samples) + le64(samples / 4) + le32(0)) + chunks;
}
Bytes rifx(const Bytes &chunks) { return text("RIFX") + be32(chunks.size() + 4) + text("WAVE") + chunks; }
Bytes beFmt() { return be16(1) + be16(2) + be32(44100) + be32(176400) + be16(4) + be16(16); }
Bytes open(std::string_view id, const Bytes &payload) { return text(id) + le32(0xFFFFFFFF) + payload; }

AudioFileContents found(const Bytes &file) {
    const MemorySource source(file);
    AudioFileContents contents;
    auto wrapped = findWrapping(SourceReader(source));
    if (!wrapped) return contents;
    contents.buffer = readSamples(SourceReader(source), wrapped->audio, wrapped->wrapping.encoding, wrapped->wrapping.channels,
                                  wrapped->sampleRate);
    contents.wrapping = std::move(wrapped->wrapping);
    return contents;
}

const Bytes four = hex("0001 0002 0003 0004"), two = hex("0003 0004");
const Bytes fourLittle = hex("0100 0200 0300 0400"), twoLittle = hex("0300 0400");
const Fmt stereo{.channels = 2};

TEST(Wrapping, IsKeptAndItsSizesFollowTheSamples) {
    const auto fmtAndFact = [](unsigned frames) { return chunk("fmt ", fmt(stereo)) + chunk("fact", le32(frames)); };
    const std::pair<Bytes, Bytes> rows[] = {
        {au(8, zeros(8), four), au(4, zeros(8), two)},
        {au(0xFFFFFFFF, text("A note.."), four), au(0xFFFFFFFF, text("A note.."), two)},
        {caf("lpcm", 0, cafChunk("info", zeros(5)) + cafData(four) + cafChunk("uuid", {})),
         caf("lpcm", 0, cafChunk("info", zeros(5)) + cafData(two) + cafChunk("uuid", {}))},
        {caf("lpcm", 2, cafData(fourLittle)), caf("lpcm", 2, cafData(twoLittle))},
        {caf("lpcm", 2, text("data") + be64(~0ull) + be32(0) + fourLittle),
         caf("lpcm", 2, text("data") + be64(~0ull) + be32(0) + twoLittle)},
        {w64(w64Chunk("fmt ", fmt(stereo)) + w64Chunk("data", fourLittle)),
         w64(w64Chunk("fmt ", fmt(stereo)) + text("data") + hex("F3ACD3118CD100C04F8EDB8A") + le64(28) + twoLittle)},
        {w64(w64Chunk("fmt ", fmt(stereo)) + w64Chunk("data", fourLittle) + w64Chunk("bext", zeros(3))),
         w64(w64Chunk("fmt ", fmt(stereo)) + w64Chunk("data", twoLittle) + w64Chunk("bext", zeros(3)))},
        {rf64(8, fmtAndFact(2) + open("data", fourLittle) + chunk("bext", zeros(3))),
         rf64(4, fmtAndFact(1) + open("data", twoLittle) + chunk("bext", zeros(3)))},
        {rifx(beChunk("fmt ", beFmt()) + beChunk("data", four)), rifx(beChunk("fmt ", beFmt()) + beChunk("data", two))},
    };
    for (const auto &[before, after] : rows) {
        AudioFileContents contents = found(before);
        ASSERT_TRUE(contents.wrapping) << show(before);
        EXPECT_EQ(contents.buffer.samples(), (std::vector<float>{1 / 32768.0f, 2 / 32768.0f, 3 / 32768.0f, 4 / 32768.0f}));
        EXPECT_EQ(show(AudioFileCodec::wrappedImage(contents).bytes()), show(before));
        contents.buffer = contents.buffer.part({1, 2});
        contents.wrapping->countsFrames = false;
        EXPECT_EQ(show(AudioFileCodec::wrappedImage(contents).bytes()), show(after));
    }
}

TEST(Wrapping, FitsOnlyWhatItSaysNothingWrongOf) {
    const Bytes desc = caf("lpcm", 0, cafData(four));
    const auto withMark = found(desc + cafChunk("mark", zeros(8)));
    const auto plain = found(desc + cafChunk("info", zeros(8)));
    const AudioEditorBuffer shorter = plain.buffer.part({0, 1}), mono(std::vector<float>{0, 0}, 1, 44100);
    EXPECT_TRUE(plain.wrapping->fits(shorter) && withMark.wrapping->fits(plain.buffer));
    EXPECT_FALSE(withMark.wrapping->fits(shorter) || plain.wrapping->fits(mono));
    AudioFileContents part = AudioFileCodec::bareContents(shorter, withMark);
    EXPECT_EQ(show(AudioFileCodec::wrappedImage(part).bytes()), show(caf("lpcm", 0, cafData(hex("0001 0002")))));
}

TEST(Wrapping, OfWhatIsNotWholeOrCompressedIsNotKept) {
    const Bytes format = chunk("fmt ", fmt(stereo));
    const Bytes rows[] = {
        au(9, {}, four),
        au(7, {}, four),
        caf("alac", 0, cafData(four)),
        caf("lpcm", 0, cafData(four) + text("cut off")),
        caf("lpcm", 0, text("data") + be64(99) + be32(0) + four),
        caf("lpcm", 0, cafData(four) + cafData(four)),
        rf64(9, format + open("data", fourLittle)),
        rf64(8, open("data", fourLittle) + format + zeros(7)),
        rf64(8, chunk("fmt ", fmt({.tag = 2, .channels = 2})) + open("data", fourLittle)),
        rifx(beChunk("data", four) + zeros(12)),
        wavOf(20),
    };
    for (const Bytes &file : rows) EXPECT_FALSE(found(file).wrapping) << show(file);
}

}  // namespace
}  // namespace kiv
