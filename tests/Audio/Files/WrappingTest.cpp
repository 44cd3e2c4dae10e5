#include <gtest/gtest.h>

#include "Audio/Files/AudioFileCodec.h"
#include "Audio/Files/FileBytes.h"

// Files of other kinds whose samples are exchanged in their wrapping.
namespace kiv {
namespace {

using namespace fileBytes;

Bytes le64(std::uint64_t value) { return word<std::uint64_t>(value, std::endian::little); }

Bytes cafChunk(std::string_view id, const Bytes &payload) { return text(id) + be64(payload.size()) + payload; }
Bytes cafDesc(std::string_view format, unsigned flags) {
    return cafChunk("desc", be64(0x40E5888000000000) + text(format) + be32(flags) + be32(4) + be32(1) + be32(2) + be32(16));
}
Bytes caf(std::string_view format, unsigned flags, const Bytes &chunks) {
    return text("caff") + be32(0x10000) + cafDesc(format, flags) + chunks;
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
    return AudioFileCodec::readWrapped(source).value_or(AudioFileContents());
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
        EXPECT_EQ(show(AudioFileCodec::wrappedImage(contents).bytes()), show(after));
    }
}

Bytes extensibleBe(const Bytes &guid) {
    return be16(0xFFFE) + be16(2) + be32(44100) + be32(176400) + be16(4) + be16(16) + be16(22) + be16(16) + be32(3) + guid;
}
Bytes mono(const Bytes &chunks) {
    return text("caff") + be32(0x10000) +
           cafChunk("desc", be64(0x40E5888000000000) + text("lpcm") + be32(0) + be32(2) + be32(1) + be32(1) + be32(16)) +
           chunks;
}
Bytes monoFmt(bool isBig) {
    return isBig ? be16(1) + be16(1) + be32(44100) + be32(88200) + be16(2) + be16(16) : fmt({.channels = 1});
}

TEST(Wrapping, FollowsTheSoundToOtherChannels) {
    const Bytes samples = hex("0001 0003"), little = hex("0100 0300");
    // A second description, and a chunk that only another kind has, are nothing that a reader looks at.
    const Bytes second = beChunk("fmt ", be16(1));
    const Bytes other = cafChunk("fmt ", be16(1)) + cafChunk("fact", be32(9)) + cafChunk("desc", be32(1));
    const std::pair<Bytes, Bytes> rows[] = {
        {rifx(beChunk("fmt ", beFmt()) + second + beChunk("data", four)),
         rifx(beChunk("fmt ", monoFmt(true)) + second + beChunk("data", samples))},
        {caf("lpcm", 0, other + cafData(four)), mono(other + cafData(samples))},
        {au(8, {}, four), text(".snd") + be32(24) + be32(4) + be32(3) + be32(44100) + be32(1) + samples},
        {caf("lpcm", 0, cafChunk("chan", zeros(12)) + cafData(four)), mono(cafData(samples))},
        {rf64(8, chunk("fmt ", fmt(stereo)) + open("data", fourLittle)),
         text("RF64") + le32(0xFFFFFFFF) + text("WAVE") + chunk("ds64", le64(76) + le64(4) + le64(2) + le32(0)) +
             chunk("fmt ", monoFmt(false)) + open("data", little)},
        {rifx(beChunk("fmt ", extensibleBe(hex("0001000000001000800000AA00389B71"))) + beChunk("data", four)),
         rifx(beChunk("fmt ", be16(0xFFFE) + be16(1) + be32(44100) + be32(88200) + be16(2) + be16(16) + be16(22) + be16(16) +
                                  be32(0) + hex("0001000000001000800000AA00389B71")) +
              beChunk("data", samples))},
    };
    for (const auto &[before, after] : rows) {
        AudioFileContents contents = found(before);
        ASSERT_TRUE(contents.wrapping) << show(before);
        contents.buffer = AudioEditorBuffer(std::vector<float>{1 / 32768.0f, 3 / 32768.0f}, 1, 44100);
        EXPECT_EQ(show(AudioFileCodec::wrappedImage(contents).bytes()), show(after));
    }
}

// A marker of a CAF file: its frame is a 64-bit float.
Bytes cafMarker(std::uint64_t frame, unsigned id) { return zeros(4) + be64(frame) + be32(id) + zeros(12); }
constexpr std::uint64_t one = 0x3FF0000000000000, oneAndABit = 0x3FF8000000000000, two64 = 0x4000000000000000;
Bytes beCue(unsigned frame) { return be32(1) + be32(7) + be32(frame) + text("data") + zeros(8) + be32(frame); }
Bytes beSmpl(unsigned loops, const Bytes &records) { return zeros(28) + be32(loops) + zeros(4) + records; }

// Two frames are there, and one goes in before them.
TEST(Wrapping, HoldsPositionsThatFollowEdits) {
    const Bytes fmtLe = chunk("fmt ", fmt(stereo)), fmtBe = beChunk("fmt ", beFmt());
    const auto label = [](unsigned length) {
        return text("ltxt") + be32(20) + be32(7) + be32(length) + text("rgn ") + zeros(8);
    };
    const auto withCue = [&](unsigned frame) {
        return fmtLe + chunk("cue ", cues({{.position = frame, .sampleOffset = frame}}));
    };
    struct Row {
        Bytes before, after;
        std::vector<std::int64_t> positions;
    } rows[] = {
        {rf64(8, withCue(1) + open("data", fourLittle)), rf64(12, withCue(2) + open("data", zeros(4) + fourLittle)), {1}},
        {rifx(fmtBe + beChunk("LIST", text("adtl") + label(1)) + beChunk("cue ", beCue(1)) +
              beChunk("smpl", beSmpl(1, zeros(8) + be32(0) + be32(1) + zeros(8))) + beChunk("data", four)),
         rifx(fmtBe + beChunk("LIST", text("adtl") + label(1)) + beChunk("cue ", beCue(2)) +
              beChunk("smpl", beSmpl(1, zeros(8) + be32(1) + be32(2) + zeros(8))) + beChunk("data", zeros(4) + four)),
         {1, 0, 2, 2}},
        {w64(w64Chunk("fmt ", fmt(stereo)) + w64Chunk("data", fourLittle) + w64Chunk("cue ", cues({{3, 1, 1}})) +
             w64Chunk("smpl", smpl({{0, 1}}))),
         w64(w64Chunk("fmt ", fmt(stereo)) + w64Chunk("data", zeros(4) + fourLittle) + w64Chunk("cue ", cues({{3, 2, 2}})) +
             w64Chunk("smpl", smpl({{1, 2}}))),
         {1, 0, 2}},
        {caf("lpcm", 0,
             cafChunk("mark", be32(0) + be32(2) + cafMarker(one, 1) + cafMarker(oneAndABit, 2)) +
                 cafChunk("regn", be32(0) + be32(1) + zeros(8) + be32(1) + cafMarker(0, 3)) + cafData(four)),
         caf("lpcm", 0,
             cafChunk("mark", be32(0) + be32(2) + cafMarker(two64, 1) + cafMarker(two64, 2)) +
                 cafChunk("regn", be32(0) + be32(1) + zeros(8) + be32(1) + cafMarker(one, 3)) + cafData(zeros(4) + four)),
         {1, 1, 0}},
    };
    for (const auto &[before, after, positions] : rows) {
        AudioFileContents contents = found(before);
        ASSERT_TRUE(contents.wrapping) << show(before);
        EXPECT_EQ(contents.positions, positions);
        EXPECT_EQ(show(AudioFileCodec::wrappedImage(contents).bytes()), show(before));
        contents.buffer = contents.buffer.replacing({0, 0}, AudioEditorBuffer(std::vector<float>(2), 2, 44100));
        for (std::int64_t &position : contents.positions) ++position;
        EXPECT_EQ(show(AudioFileCodec::wrappedImage(contents).bytes()), show(after));
    }
}

TEST(Wrapping, OfAWavFileTakesALoopAndGivesItBack) {
    const Bytes big = beChunk("fmt ", beFmt()) + beChunk("data", four);
    const Bytes wide = w64Chunk("fmt ", fmt(stereo)) + w64Chunk("data", fourLittle);
    const Bytes loop = zeros(28) + le32(1) + zeros(4) + zeros(8) + le32(0) + le32(1) + zeros(8);
    const std::tuple<Bytes, Bytes, Bytes> rows[] = {
        {rifx(big), rifx(big + beChunk("smpl", beSmpl(1, zeros(8) + be32(0) + be32(1) + zeros(8)))),
         rifx(big + beChunk("smpl", beSmpl(0, {})))},
        {w64(wide), w64(wide + w64Chunk("smpl", loop)), w64(wide + w64Chunk("smpl", zeros(36)))},
    };
    for (const auto &[plain, looped, emptied] : rows) {
        AudioFileContents contents = AudioFileCodec::addingLoop(found(plain), 0, 2);
        EXPECT_EQ(show(AudioFileCodec::wrappedImage(contents).bytes()), show(looped));
        contents = found(looped);
        ASSERT_TRUE(contents.loop);
        contents = AudioFileCodec::removingLoop(std::move(contents));
        EXPECT_EQ(show(AudioFileCodec::wrappedImage(contents).bytes()), show(emptied));
    }
    EXPECT_FALSE(found(caf("lpcm", 0, cafData(four))).canStoreLoop());
}

TEST(Wrapping, FitsOnlyWhatItSaysNothingWrongOf) {
    const Bytes desc = caf("lpcm", 0, cafData(four));
    const auto withClock = found(desc + cafChunk("mark", be32(3) + be32(1) + cafMarker(0, 1)));
    const auto withTracks = found(rf64(8, chunk("fmt ", fmt(stereo)) + open("data", fourLittle) + chunk("chna", zeros(4))));
    const auto plain = found(desc + cafChunk("info", zeros(8)));
    const AudioEditorBuffer shorter = plain.buffer.part({0, 1}), mono(std::vector<float>{0, 0}, 1, 44100);
    EXPECT_TRUE(plain.wrapping->fits(shorter) && withClock.wrapping->fits(plain.buffer) && plain.wrapping->fits(mono));
    EXPECT_FALSE(withClock.wrapping->fits(shorter) || withTracks.wrapping->fits(mono));
    AudioFileContents part = AudioFileCodec::bareContents(shorter, withClock);
    EXPECT_EQ(show(AudioFileCodec::wrappedImage(part).bytes()), show(caf("lpcm", 0, cafData(hex("0001 0002")))));
}

// Of what is cut off, what is there; what is no chunk stays, and samples behind the number of frames are zeros that fill up.
TEST(Wrapping, OfWhatIsNotWholeIsSetRight) {
    const Bytes format = chunk("fmt ", fmt(stereo));
    const std::pair<Bytes, Bytes> rows[] = {
        {au(9, {}, four), au(8, {}, four)},
        {au(7, {}, four), au(4, {}, hex("0001 0002")) + hex("04")},
        {caf("lpcm", 0, cafData(four) + text("cut off")), {}},
        {caf("lpcm", 0, cafData(four) + text("xxxx") + be64(99) + text("behind")), {}},
        {caf("lpcm", 0, text("data") + be64(99) + be32(7) + four), caf("lpcm", 0, cafData(four))},
        {rf64(9, format + open("data", fourLittle)), rf64(8, format + open("data", fourLittle))},
        {rifx(beChunk("fmt ", beFmt()) + beChunk("data", four) + hex("00")), {}},
        {rifx(beChunk("fmt ", beFmt()) + text("data") + be32(0) + four),
         rifx(beChunk("fmt ", beFmt()) + beChunk("data", four))},
        {rifx(beChunk("fmt ", beFmt()) + text("data") + be32(0) + beChunk("INFO", four)), {}},
        {rf64(0, format + chunk("data", {}) + fourLittle), rf64(8, format + chunk("data", fourLittle))},
        {w64(w64Chunk("fmt ", fmt(stereo)) + w64Chunk("data", {}) + fourLittle),
         w64(w64Chunk("fmt ", fmt(stereo)) + w64Chunk("data", fourLittle))},
        {rf64(3, format + open("data", hex("010203 00")) + hex("FEDC")), rf64(0, format + open("data", hex("FEDC")))},
        {rifx(beChunk("fmt ", beFmt()) + beChunk("data", hex("0102")) + text("end")),
         rifx(beChunk("fmt ", beFmt()) + beChunk("data", {}) + text("end"))},
    };
    for (const auto &[before, after] : rows) {
        const AudioFileContents contents = found(before);
        ASSERT_TRUE(contents.wrapping) << show(before);
        const Bytes written = AudioFileCodec::wrappedImage(contents).bytes();
        EXPECT_EQ(show(written), show(after.empty() ? before : after));
        EXPECT_EQ(show(AudioFileCodec::wrappedImage(found(written)).bytes()), show(written));
    }
}

// What would be read as samples where there are none: a tail that is no chunk, and a description that the samples would
// swallow.
TEST(Wrapping, OfNoSamplesIsRefusedWhereOthersWouldAppear) {
    const Bytes format = beChunk("fmt ", beFmt()), less = beChunk("data", hex("0102"));
    for (const Bytes &file : {rifx(format + less + text("tail")), rifx(less + format + text("tail"))}) {
        const AudioFileContents contents = found(file);
        ASSERT_TRUE(contents.wrapping) << show(file);
        EXPECT_TRUE(contents.buffer.isEmpty());
        EXPECT_THROW(AudioFileCodec::wrappedImage(contents), AudioFileError);
    }
}

TEST(Wrapping, OfWhatIsCompressedIsNotKept) {
    const Bytes rows[] = {
        text(".snd") + be32(24) + be32(0) + be32(2) + be32(44100) + be32(0x10000),
        caf("alac", 0, cafData(four)),
        caf("alac", 0, cafDesc("lpcm", 0) + cafData(four)),
        caf("lpcm", 0, cafData(four) + cafData(four)),
        rf64(8, chunk("fmt ", fmt({.tag = 2, .channels = 2})) + open("data", fourLittle)),
        rifx(beChunk("data", four) + zeros(12)),
        wavOf(20),
    };
    for (const Bytes &file : rows) EXPECT_FALSE(found(file).wrapping) << show(file);
}

}  // namespace
}  // namespace kiv
