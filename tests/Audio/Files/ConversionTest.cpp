#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Audio/Files/AudioFileConversion.h"
#include "Audio/Files/FileBytes.h"
#include "Audio/Files/PackedWrapping.h"
#include "Audio/Files/TagsAtEnd.h"

// Saving in another format: what goes along, what is said to be left, and that the editor finds its positions again.
namespace kiv {
namespace {

using namespace fileBytes;
using AudioFileCodec::converted;
using testing::ElementsAre;
using testing::IsEmpty;
using Container = AudioSaveFormat::Container;

Bytes label(unsigned cue, std::string_view name) { return chunk("labl", le32(cue) + text(name) + zeros(1)); }

// Two named markers, the second a region of 5 frames, an alternating loop on D sharp 25 cents up, texts, and what only WAV has.
Bytes richWav() {
    Bytes smplChunk = smpl({{10, 39}});
    putWord(std::span(smplChunk), 12, std::endian::little, 63u);
    putWord(std::span(smplChunk), 16, std::endian::little, 0x40000000u);
    putWord(std::span(smplChunk), 40, std::endian::little, 1u);
    return wavOf(100, chunk("cue ", cues({{7, 50, 50}, {3, 20, 20}})) + chunk("smpl", smplChunk) +
                          chunk("LIST", text("adtl") + label(3, "verse") + label(7, "odd") + ltxt(3, 5)) +
                          chunk("LIST", text("INFO") + chunk("INAM", text("Song") + zeros(1)) + chunk("ICMT", hex("E9 00")) +
                                            chunk("IENG", text("Me") + zeros(1))) +
                          chunk("bext", zeros(3)) + chunk("PEAK", zeros(2)) + chunk("id3 ", text("ID3")));
}

Bytes richAiff() {
    return aiffOf(100, beChunk("MARK", be16(3) + marker(5, 30, "verse") + marker(1, 10, "s") + marker(2, 40, "e")) +
                           beChunk("INST", hex("3E E7 10 60 01 7F 0006") + be16(2) + be16(1) + be16(2) + zeros(6)) +
                           beChunk("NAME", text("Song")) + beChunk("COMT", be16(1) + comment(0, "hm")) +
                           beChunk("MIDI", zeros(2)));
}

TEST(Conversion, KeepsAllThatSaysTheSameInTheOtherFormat) {
    const auto aiff = converted(read(richWav()), {Container::aiff, 24});
    EXPECT_THAT(aiff.left, ElementsAre("“IENG”", "“bext”"));
    const Bytes loopMarkers = marker(4, 10, "Loop Start") + marker(5, 40, "Loop End");
    EXPECT_EQ(
        show(written(aiff.contents)),
        show(form("AIFF", beChunk("COMM", comm({.frames = 100, .bits = 24})) + ssnd(zeros(300)) +
                              beChunk("MARK", be16(5) + marker(1, 50, "odd") + marker(2, 20, "verse") +
                                                  marker(3, 25, "verse End") + loopMarkers) +
                              beChunk("INST", hex("3F E7 00 7F 01 7F 0000") + be16(2) + be16(4) + be16(5) + zeros(6)) +
                              beChunk("NAME", text("Song")) + beChunk("ANNO", hex("C3A9")) + beChunk("ID3 ", text("ID3")))));
    const auto wav = converted(read(richAiff()), {Container::wav, 16});
    EXPECT_THAT(wav.left, ElementsAre("“MIDI”"));
    Bytes smplChunk = smpl({{10, 39}});
    putWord(std::span(smplChunk), 12, std::endian::little, 62u);
    putWord(std::span(smplChunk), 16, std::endian::little, 0x40000000u);
    putWord(std::span(smplChunk), 40, std::endian::little, 1u);
    EXPECT_EQ(show(written(wav.contents)),
              show(wavOf(100, chunk("cue ", cues({{1, 30, 30}})) + chunk("LIST", text("adtl") + label(1, "verse")) +
                                  chunk("smpl", smplChunk) + chunk("inst", hex("3E E7 06 10 60 01 7F")) +
                                  chunk("LIST", text("INFO") + chunk("INAM", text("Song") + zeros(1)) +
                                                    chunk("ICMT", text("hm") + zeros(1))))));
}

// What a decoder told of a compressed file, with and without the ID3 tag that it stands in.
TEST(Conversion, CarriesOrNamesWhatADecodedFileSays) {
    AudioFileContents decoded;
    decoded.format.container = AudioContainer::coreAudio;
    decoded.buffer = AudioEditorBuffer(std::vector<float>{0}, 1, 44100);
    const FlacMetadataBlock picture{FlacMetadataBlock::picture, text("picture")};
    decoded.tags = {{{"TITLE", "Song"}, {"COMPOSER", "Bach"}}, {picture}, {}, {"chapters"}, {}, {}};
    for (const auto container : {Container::wav, Container::aiff}) {
        EXPECT_THAT(converted(decoded, {container, 16}).left, ElementsAre("pictures", "chapters", "COMPOSER"));
        AudioFileContents tagged = decoded;
        tagged.tags.id3 = text("ID3 and all");
        tagged.tags.inId3 = {2, 1, 1};
        const auto whole = converted(tagged, {container, 16});
        EXPECT_THAT(whole.left, IsEmpty());
        EXPECT_EQ(whole.contents.chunks.back().data, tagged.tags.id3);
        EXPECT_THAT(converted(tagged, {Container::flac, 16}).left, ElementsAre("chapters"));
    }
    const auto flac = converted(decoded, {Container::flac, 16});
    EXPECT_THAT(flac.left, ElementsAre("chapters"));
    ASSERT_EQ(flac.contents.flacMetadata.size(), 2u);
    EXPECT_EQ(flac.contents.flacMetadata[1], picture);
}

// An MP3 file whose tags at the end say more than the one in front.
TEST(Conversion, CarriesOrNamesWhatTagsAtTheEndSay) {
    const auto item = [](std::string_view key, unsigned flags, std::string_view value) {
        return le32(value.size()) + le32(flags) + text(key) + zeros(1) + text(value);
    };
    const Bytes items = item("Title", 0, "Other") + item("Mood", 0, "Sad") + item("Year", 0, "1999") +
                        item("Cover Art (Front)", 2, std::string_view("a.png\0picture", 13)) + item("File", 2, "x");
    const Bytes ape = items + text("APETAGEX") + le32(2000) + le32(items.size() + 32) + le32(5) + zeros(12);
    Bytes id3v1 = text("TAG") + zeros(125);
    std::ranges::copy(text("Me "), id3v1.begin() + 33);
    id3v1[127] = std::byte{0xFF};
    AudioFileContents decoded;
    decoded.format.container = AudioContainer::coreAudio;
    decoded.buffer = AudioEditorBuffer(std::vector<float>{0}, 1, 44100);
    decoded.tags = {{{"TITLE", "Song"}, {"COMPOSER", "Bach"}},
                    {{FlacMetadataBlock::picture, text("a picture")}},
                    text("ID3"),
                    {"chapters"},
                    {2, 1, 1},
                    {}};
    const Bytes file = zeros(99) + ape + id3v1;
    addTagsAtEnd(decoded.tags, MemorySource(file));
    const std::vector<std::pair<std::string, std::string>> texts{
        {"TITLE", "Song"}, {"COMPOSER", "Bach"}, {"MOOD", "Sad"}, {"DATE", "1999"}, {"ARTIST", "Me"}};
    EXPECT_EQ(decoded.tags.texts, texts);
    EXPECT_THAT(converted(decoded, {Container::wav, 16}).left, ElementsAre("“File”", "MOOD"));
    EXPECT_THAT(converted(decoded, {Container::aiff, 16}).left, ElementsAre("“File”", "MOOD", "DATE"));
    EXPECT_THAT(converted(decoded, {Container::flac, 16}).left, ElementsAre("chapters", "“File”"));
}

TEST(Conversion, NamesWhatIsCutOffLongMarkerNames) {
    const auto named = [](std::size_t length) {
        return read(
            wavOf(9, chunk("cue ", cues({{1, 5, 5}})) + chunk("LIST", text("adtl") + label(1, std::string(length, 'x')))));
    };
    EXPECT_THAT(converted(named(255), {Container::aiff, 16}).left, IsEmpty());
    EXPECT_THAT(converted(named(256), {Container::aiff, 16}).left, ElementsAre("the ends of long marker names"));
}

// An RF64 file is a WAV file but for its sizes; of a CAF file go markers with their names, and texts.
TEST(Conversion, OfFilesOfOtherKindsKeepsWhatTheySay) {
    const Bytes behind = chunk("cue ", cues({{1, 1, 1}})) + chunk("bext", text("all!")) + chunk("smpl", smpl({{0, 1}}));
    const Bytes rf64 = text("RF64") + le32(0xFFFFFFFF) + text("WAVE") + chunk("ds64", zeros(28)) + chunk("fmt ", fmt({})) +
                       chunk("data", zeros(4)) + behind;
    const auto wav = converted(AudioFileCodec::readWrapped(MemorySource(rf64)).value(), {Container::wav, 16});
    EXPECT_THAT(wav.left, IsEmpty());
    EXPECT_EQ(show(written(wav.contents)), show(wavOf(2, behind)));
    const auto sized = [](std::string_view id, const Bytes &payload) { return text(id) + be64(payload.size()) + payload; };
    const Bytes desc = be64(0x40E5888000000000) + text("lpcm") + be32(0) + be32(2) + be32(1) + be32(1) + be32(16);
    const Bytes mark = be32(0) + be32(1) + zeros(4) + be64(0x3FF0000000000000) + be32(7) + zeros(12);
    const Bytes caf = text("caff") + be32(0x10000) + sized("desc", desc) + sized("mark", mark) +
                      sized("strg", be32(1) + be32(7) + be64(0) + text("verse") + zeros(1)) +
                      sized("info", be32(1) + text("title") + zeros(1) + text("Song") + zeros(1)) + sized("uuid", zeros(16)) +
                      sized("data", zeros(8));
    const auto aiff = converted(AudioFileCodec::readWrapped(MemorySource(caf)).value(), {Container::aiff, 16});
    EXPECT_THAT(aiff.left, ElementsAre("“uuid”"));
    EXPECT_EQ(show(written(aiff.contents)),
              show(aiffOf(2, beChunk("MARK", be16(1) + marker(1, 1, "verse")) + beChunk("NAME", text("Song")))));
}

// As another program decodes them: two frames, and what stands around them.
AudioFileCodec::Conversion ofPacked(const Bytes &file, const AudioSaveFormat &format, const char *typeName) {
    AudioFileContents contents;
    contents.format.container = AudioContainer::coreAudio;
    if (file[0] == std::byte('F')) contents.format.typeName = "AIFC";
    contents.coreAudioSettings.emplace();
    contents.buffer = AudioEditorBuffer(std::vector<float>{0, 0}, 1, 44100);
    contents.format.typeName = std::string_view(typeName).ends_with("AIFC") ? "AIFC" : "WAV";
    keepAroundPacked(contents, 2, MemorySource(file));
    EXPECT_EQ(contents.format.typeName, typeName);
    EXPECT_FALSE(contents.canSaveInPlace());
    return converted(std::move(contents), format);
}

TEST(Conversion, OfCompressedSamplesKeepsWhatStandsAroundThem) {
    const Bytes around = chunk("cue ", cues({{1, 1, 1}})) + chunk("bext", text("all!")) + chunk("smpl", smpl({{0, 1}}));
    const auto fmtOf = [](unsigned tag, unsigned align) { return fmt({.tag = tag, .blockAlign = int(align)}); };
    const auto wav = [](const Bytes &format, const Bytes &rest) {
        return riff("WAVE", chunk("fmt ", format) + chunk("data", zeros(2)) + rest);
    };
    const auto cueIn = [](unsigned block, unsigned offset) {
        return chunk("cue ", le32(1) + le32(1) + le32(0) + text("data") + le32(0) + le32(block) + le32(offset));
    };
    const Bytes names = beChunk("MARK", be16(1) + marker(1, 1, "verse")) + beChunk("NAME", text("Song"));
    const std::tuple<Bytes, AudioSaveFormat, const char *, Bytes> rows[] = {
        {wav(fmtOf(7, 1), around), {Container::wav, 16}, "\u00B5-law WAV", wavOf(2, around)},
        {wav(fmtOf(99, 1), around), {Container::wav, 16}, "WAV format 99", wavOf(2, around)},
        {wav(fmtOf(2, 256) + le16(2) + le16(500), cueIn(0, 1)),
         {Container::wav, 16},
         "Microsoft ADPCM WAV",
         wavOf(2, cueIn(0, 1))},
        {wav(fmtOf(6, 1), cueIn(1, 0)), {Container::wav, 16}, "A-law WAV", wavOf(2, cueIn(0, 1))},
        {form("AIFC", beChunk("COMM", compressed({.frames = 2}, "ulaw")) + ssnd(zeros(2)) + names),
         {Container::aiff, 16},
         "\u00B5-law AIFC",
         aiffOf(2, names)},
    };
    for (const auto &[file, format, typeName, saved] : rows) {
        const auto conversion = ofPacked(file, format, typeName);
        EXPECT_THAT(conversion.left, IsEmpty());
        EXPECT_EQ(show(written(conversion.contents)), show(saved));
    }
    EXPECT_THAT(ofPacked(wav(fmtOf(7, 1), around), {Container::flac, 16}, "\u00B5-law WAV").left,
                ElementsAre("markers", "“bext”", "the instrument’s settings"));
}

TEST(Conversion, TakesAPitchFurtherOffThanHalfAKeyForHalfAKey) {
    for (const auto &[detune, note] : {std::pair{"7F", 59u}, {"80", 60u}}) {
        const Bytes inst = beChunk("INST", hex("3C") + hex(detune) + hex("00 7F 01 7F 0000") + zeros(12));
        const auto wav = converted(read(aiffOf(1, inst)), {Container::wav, 16}).contents;
        Bytes smplChunk = zeros(36);
        putWord(std::span(smplChunk), 12, std::endian::little, note);
        putWord(std::span(smplChunk), 16, std::endian::little, 0x80000000u);
        EXPECT_EQ(show(wav.chunks[2].data), show(smplChunk));
    }
}

TEST(Conversion, WithinAFormatChangesOnlyWhatSaysWhatTheSamplesAre) {
    const Bytes around = chunk("bext", zeros(3)) + chunk("cue ", cues({{1, 5, 5}}));
    const auto wav = converted(read(riff("WAVE", around + chunk("fmt ", extensible({}, 12, 4)) + chunk("data", le16(0x1230)) +
                                                     chunk("smpl", smpl({{0, 0}})))),
                               {Container::wav, 32, true});
    EXPECT_EQ(show(written(wav.contents)),
              show(riff("WAVE", chunk("bext", zeros(3)) + chunk("cue ", cues({{1, 1, 1}})) +
                                    chunk("fmt ", fmt({.tag = 3, .bits = 32})) + chunk("data", le32(0x3E118000)) +
                                    chunk("smpl", smpl({{0, 0}})))));
    EXPECT_THAT(wav.left, IsEmpty());
    const Bytes markers = beChunk("MARK", be16(1) + marker(1, 1, "x"));
    const Bytes aifc =
        form("AIFC", beChunk("FVER", be32(0xA2805140)) + markers +
                         beChunk("COMM", compressed({.frames = 1, .rate = extended(22050.4)}, "sowt")) + ssnd(le16(0x1234)));
    const auto aiff = converted(read(aifc), {Container::aiff, 8});
    EXPECT_THAT(aiff.left, ElementsAre("the exact sample rate"));
    EXPECT_EQ(show(written(aiff.contents)),
              show(form("AIFF",
                        markers + beChunk("COMM", comm({.frames = 1, .bits = 8, .rate = extended(22050)})) + ssnd(hex("12")))));
}

TEST(Conversion, ToFlacTakesTheTextsAndBackAgain) {
    auto flac = converted(read(richWav()), {Container::flac, 24});
    EXPECT_THAT(flac.left, ElementsAre("markers", "“IENG”", "“bext”", "the instrument’s settings", "“ID3”"));
    EXPECT_EQ(flac.contents.format.bitsDescription, "24-bit");
    EXPECT_THAT(editorPositions(flac.contents).markers, ElementsAre(50, 20, 25)) << "as the editor goes on showing them";
    EXPECT_FALSE(flac.contents.loop);
    ASSERT_EQ(flac.contents.flacMetadata.size(), 1u);
    const auto flac16 = converted(flac.contents, {Container::flac, 16});
    EXPECT_EQ(flac16.contents.flacMetadata, flac.contents.flacMetadata);
    flac.contents.flacMetadata.push_back({FlacMetadataBlock::picture, {}});
    const auto wav = converted(flac.contents, {Container::wav, 8});
    EXPECT_THAT(wav.left, ElementsAre("pictures"));
    const Bytes fmt8 = chunk("fmt ", fmt({.bits = 8})), data = chunk("data", Bytes(100, std::byte{128}));
    EXPECT_EQ(show(written(wav.contents)),
              show(riff("WAVE", fmt8 + data + chunk("cue ", cues({{1, 50, 50}, {2, 20, 20}, {3, 25, 25}})) +
                                    chunk("LIST", text("INFO") + chunk("INAM", text("Song") + zeros(1)) +
                                                      chunk("ICMT", hex("C3A9 00"))))));
    AudioFileContents wordy;
    wordy.format.container = AudioContainer::coreAudio;
    wordy.tags.texts = {{"COMMENT", std::string(FlacMetadataBlock::mostBytes, 'x')}, {"TITLE", "Song"}};
    const auto tagged = converted(wordy, {Container::flac, 16});
    EXPECT_THAT(tagged.left, ElementsAre("COMMENT"));
    EXPECT_EQ(show(tagged.contents.flacMetadata.at(0).data),
              show(le32(16) + text("Kiv Audio Editor") + le32(1) + le32(10) + text("TITLE=Song")));
}

// Whatever the formats, and however often, the editor's markers keep their number and order.
TEST(Conversion, KeepsTheOrderOfThePositions) {
    const AudioSaveFormat formats[] = {
        {Container::wav, 8}, {Container::wav, 32, true}, {Container::aiff, 16}, {Container::flac, 24}, {Container::aiff, 32}};
    for (const Bytes &file : {richWav(), richAiff()})
        for (const AudioSaveFormat &first : formats)
            for (const AudioSaveFormat &second : formats) {
                const AudioFileContents before = read(file);
                auto contents = converted(converted(before, first).contents, second).contents;
                EXPECT_EQ(editorPositions(contents).markers, editorPositions(before).markers);
                const bool holdsLoop = contents.loop.has_value();
                EXPECT_EQ(holdsLoop, first.container != Container::flac && second.container != Container::flac);
                if (second.container == Container::flac) continue;
                const auto again = editorPositions(read(written(contents)));
                EXPECT_EQ(again.loop, editorPositions(contents).loop);
                EXPECT_THAT(again.markers, testing::UnorderedElementsAreArray(editorPositions(before).markers));
                EXPECT_TRUE(second.matches(contents.format));
                EXPECT_EQ(written(converted(contents, second).contents), written(contents));
            }
}

TEST(Conversion, TellsOfSpeakersThatAreNotTheUsualOnes) {
    const std::pair<unsigned, unsigned> usual[] = {{1, 4}, {2, 3}, {2, 0}}, unusual[] = {{1, 1}, {2, 0x600}, {6, 0x3F}};
    const auto left = [](std::pair<unsigned, unsigned> row) {
        const Bytes format = extensible({.channels = row.first}, 16, row.second);
        return converted(read(riff("WAVE", chunk("fmt ", format) + chunk("data", zeros(12)))), {Container::wav, 24}).left;
    };
    for (const auto &row : usual) EXPECT_THAT(left(row), IsEmpty()) << row.first;
    for (const auto &row : unusual) EXPECT_THAT(left(row), ElementsAre("which speaker each channel is for"));
}

TEST(Conversion, ProposesTheFormatThatComesNearest) {
    const auto wavFile = [](unsigned tag, unsigned bits) {
        return read(riff("WAVE", chunk("fmt ", fmt({.tag = tag, .bits = bits})) + chunk("data", {})));
    };
    const auto decoded = [](const char *identifier, const char *bits, const char *description) {
        AudioFileContents contents;
        contents.format = {.container = AudioContainer::coreAudio, .encoding = {}, .bitsDescription = description};
        contents.coreAudioSettings = {{formatIdentifierKey, identifier}, {bitDepthKey, bits}};
        return contents;
    };
    const Comm twelve{.bits = 12};
    const std::pair<AudioFileContents, AudioSaveFormat> rows[] = {
        {wavFile(1, 8), {Container::wav, 8}},
        {wavFile(1, 20), {Container::wav, 24}},
        {wavFile(3, 64), {Container::wav, 32, true}},
        {read(form("AIFF", beChunk("COMM", comm(twelve)))), {Container::aiff, 16}},
        {read(form("AIFC", beChunk("COMM", compressed({}, "fl32")))), {Container::wav, 32, true}},
        {decoded("flac", "16", "16-bit"), {Container::flac, 16}},
        {decoded("flac", "20", "20-bit"), {Container::flac, 24}},
        {decoded("flac", "32", "32-bit"), {Container::wav, 32}},
        {decoded("lpcm", "32", "32-bit float"), {Container::wav, 32, true}},
        {decoded(".mp3", "0", ""), {Container::wav, 24}},
        {decoded("alac", "16", "16-bit"), {Container::wav, 16}},
    };
    for (const auto &[contents, format] : rows) EXPECT_EQ(AudioFileCodec::nearestSaveFormat(contents), format);
}

TEST(PartOfASound, OfAFileThatIsNotWrittenIsAWavFile) {
    const std::pair<const char *, unsigned> rows[] = {{"0", 16}, {"16", 16}, {"20", 24}};
    for (const auto &[depth, bits] : rows) {
        AudioFileContents contents;
        contents.format.container = AudioContainer::coreAudio;
        contents.coreAudioSettings = {{formatIdentifierKey, ".mp3"}, {bitDepthKey, depth}};
        const auto part = AudioFileCodec::partContents({std::vector<float>{0}, 1, 44100}, contents);
        EXPECT_EQ(show(written(part)), show(riff("WAVE", chunk("fmt ", fmt({.bits = bits})) + chunk("data", zeros(bits / 8)))));
    }
}

TEST(PartOfASound, HasTheExtensionOfTheFileOrOneThatSaysWhatItIs) {
    const std::tuple<const char *, const char *, const char *> rows[] = {
        {"flac", "FLAC", "FLAC"}, {"flac", "", "flac"}, {".mp3", "mp3", "wav"}, {".mp3", "", "wav"}};
    for (const auto &[identifier, extension, expected] : rows) {
        AudioFileContents contents;
        contents.format.container = AudioContainer::coreAudio;
        contents.format.typeName = "FLAC";
        contents.format.fileExtension = extension;
        contents.coreAudioSettings = {{formatIdentifierKey, identifier}, {bitDepthKey, "16"}};
        EXPECT_EQ(AudioFileCodec::partContents(AudioEditorBuffer(1, 44100), contents).format.fileExtension, expected);
    }
}

}  // namespace
}  // namespace kiv
