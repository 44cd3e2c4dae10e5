#include <gtest/gtest.h>

#include "Formats/Tools.h"

// Files that are not what they say, are damaged or cut off, or turn out wrong while they are written.
namespace kiv {
namespace {

// Lengths that are not true, and files that end too soon or are damaged on the way.
TEST(DamagedFormats, AreNotBelievedInWhatTheySayOfTheirLength) {
    Desk desk;
    const KnownSound sound = knownNoise(16, 2, 44100, 30000);
    desk.write("in.wav", ourWav(sound));
    ASSERT_TRUE(desk.run("flac --silent -f -o a.flac in.wav && sox in.wav a.au"));
    const auto changed = [&](const std::string &name, std::size_t at, const std::string &bytes) {
        writeText(desk.path("x-" + name), readText(desk.path(name)).replace(at, bytes.size(), bytes));
        return "x-" + name;
    };
    const auto cut = [&](const std::string &name, std::size_t bytes) {
        writeText(desk.path("x-" + name), readText(desk.path(name)).substr(0, bytes));
        return "x-" + name;
    };
    const auto frames = [&](const std::string &name) {
        const std::int64_t read = desk.read(name).buffer.frames();
        EXPECT_EQ(desk.framesTold(name), read) << name;
        return read;
    };
    // The last four bytes of the number of samples in STREAMINFO; the length in an AU file.
    for (const std::string &length : {std::string(4, '\0'), std::string("\0\0\0\1", 4), std::string("\7\0\0\0", 4)})
        EXPECT_EQ(frames(changed("a.flac", 22, length)), 30000);
    for (const std::string &length : {std::string(4, '\xff'), std::string("\7\0\0\0", 4)})
        EXPECT_EQ(frames(changed("a.au", 8, length)), 30000);
    EXPECT_EQ(frames(cut("a.flac", 60000)) % 4096, 0);
    EXPECT_GT(frames(cut("a.flac", 60000)), 8000);
    // A recorded stream starts at any block: the second and those behind, put after the metadata.
    const std::string whole = readText(desk.path("a.flac"));
    const std::size_t second = whole.find(std::string("\xFF\xF8\xC9\x18\x01", 5));
    ASSERT_NE(second, std::string::npos);
    writeText(desk.path("x.flac"), whole.substr(0, whole.find(std::string("\xFF\xF8\xC9\x18\x00", 5))) + whole.substr(second));
    EXPECT_EQ(frames("x.flac"), 30000 - 4096);
    const std::int64_t start = std::uint8_t(readText(desk.path("a.au"))[7]);
    EXPECT_EQ(frames(cut("a.au", 20003)), (20003 - start) / 4);
    const auto outcome = [&](const std::string &name) -> std::string {
        try {
            desk.read(name);
            return "";
        } catch (const AudioFileError &error) {
            return error.what();
        }
    };
    EXPECT_EQ(outcome(cut("a.flac", 10)), "The file could not be read: the FLAC data is damaged.");
    writeText(desk.path("x.txt"), "Dear diary, nothing happened.\n");
    EXPECT_EQ(outcome("x.txt"), "This audio format is not supported (unknown kind of file).");
}

// Each row makes x.flac of a.flac, which holds 30000 frames in blocks of 4096; what was lost is silent, and the rest is where
// it was.
TEST(DamagedFormats, FlacThatIsNotWholeIsReadAsFarAsItGoesAndSaysSo) {
    Desk desk;
    const KnownSound sound = knownNoise(16, 2, 44100, 30000);
    desk.write("in.wav", ourWav(sound));
    ASSERT_TRUE(desk.run("flac --silent -f --no-padding -o a.flac in.wav"));
    const std::string whole = readText(desk.path("a.flac")), noTotal = std::string(whole).replace(22, 4, 4, '\0');
    const auto block = [&](char number) { return whole.find(std::string("\xFF\xF8\xC9\x18", 4) + number); };
    const std::size_t third = block(2), fourth = block(3), last = whole.find("\xFF\xF8\x79\x18\x07");
    ASSERT_TRUE(third < fourth && fourth < last && last < whole.size());
    const auto hit = [&](std::size_t at) { return std::string(whole).replace(at, 6, "damage"); };
    const struct {
        const char *what;
        std::string bytes;
        std::int64_t frames, missing, damaged;
    } rows[] = {
        {"whole", whole, 30000, 0, 0},
        {"cut off in its last block", whole.substr(0, last + 100), 28672, 1328, 0},
        {"cut off before its fourth block", whole.substr(0, fourth), 3 * 4096, 30000 - 3 * 4096, 0},
        {"cut off without a length", noTotal.substr(0, last + 100), 28672, 4096, 0},
        {"a damaged block", hit(third + 500), 30000, 0, 4096},
        {"a damaged block header", hit(third), 30000, 0, 4096},
        {"the first block damaged", hit(block(0) + 500), 30000, 0, 4096},
        {"the last block damaged", hit(last + 500), 28672, 1328, 0},
        {"a block gone", whole.substr(0, third) + whole.substr(fourth), 30000, 0, 4096},
        {"bytes gone", std::string(whole).erase(third + 500, 6), 30000, 0, 4096},
    };
    for (const auto &row : rows) {
        writeText(desk.path("x.flac"), row.bytes);
        const AudioFileContents contents = desk.read("x.flac");
        EXPECT_EQ(contents.missingFrames, row.missing) << row.what;
        EXPECT_EQ(contents.damagedFrames, row.damaged) << row.what;
        const std::vector<std::int32_t> words = wordsOf(contents.buffer);
        ASSERT_EQ(words.size(), std::size_t(2 * row.frames)) << row.what;
        std::int64_t differences = 0;
        for (std::size_t i = 0; i < words.size(); ++i)
            if (words[i] != sound.words[i]) differences += words[i] == 0 ? 1 : 1000000;
        EXPECT_LE(differences, 2 * row.damaged) << row.what;
        EXPECT_EQ(desk.framesTold("x.flac"), row.frames) << row.what;
        // Saved, it is whole, and nothing of a block that was cut off stands behind it.
        desk.write("x.flac", contents);
        EXPECT_TRUE(desk.run("flac --silent -t x.flac")) << row.what;
    }
}

// Each row makes x.mp3 of a.mp3, which tells its length. What is wrong is told, and by nobody else.
TEST(DamagedFormats, Mp3ThatIsNotWholeIsReadAsFarAsItGoesAndSaysSo) {
    Desk desk;
    desk.write("in.wav", ourWav(knownTone(2, 44100, 300000)));
    ASSERT_TRUE(desk.run("ffmpeg -y -i in.wav -b:a 128k a.mp3 && ffmpeg -y -i in.wav -ar 22050 -b:a 128k other.mp3"));
    const std::string whole = readText(desk.path("a.mp3")), other = readText(desk.path("other.mp3"));
    std::mt19937 random(3);
    std::string noise(8000, '\0'), picture = "ID3" + std::string("\4\0\0\0\x7A\0\0", 7);
    for (char &byte : noise) byte = char(random());
    while (picture.size() < 10 + (0x7A << 14)) picture += noise;
    picture.resize(10 + (0x7A << 14));
    const struct {
        const char *what;
        std::string bytes;
        std::int64_t least, most;  // frames that are missing; below 0: it is no sound
    } rows[] = {
        {"whole", whole, 0, 0},
        {"behind a tag of two megabytes", picture + whole, 0, 0},
        {"with tags behind", whole + "TAG" + std::string(125, 'x'), 0, 0},
        {"cut off", whole.substr(0, whole.size() / 2), 140000, 155000},
        {"with noise in it", std::string(whole).replace(40000, noise.size(), noise), 15000, 30000},
        {"with a hole", std::string(whole).erase(40000, 8000), 15000, 30000},
        {"with another sound behind", whole + other, -1, -1},
        {"nothing but a tag", picture, -1, -1},
    };
    for (const auto &row : rows) {
        writeText(desk.path("x.mp3"), row.bytes);
        testing::internal::CaptureStderr();
        std::int64_t missing = -1;
        try {
            const AudioFileContents contents = desk.read("x.mp3");
            missing = contents.missingFrames;
            EXPECT_EQ(contents.buffer.frames() + missing, 300000) << row.what;
            EXPECT_EQ(desk.framesTold("x.mp3"), contents.buffer.frames()) << row.what;
        } catch (const AudioFileError &) {
        }
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << row.what;
        EXPECT_GE(missing, row.least) << row.what;
        EXPECT_LE(missing, row.most) << row.what;
    }
}

// Long enough for several cores: with and without a length told, with bits that stand in frames before, and with faults.
TEST(DamagedFormats, LongMpegIsWhatOneDecoderFindsInIt) {
    Desk desk;
    desk.write("in.wav", ourWav(knownTone(2, 44100, 2400000)));
    ASSERT_TRUE(
        desk.run("for a in 'cbr -b:a 128k' 'vbr -q:a 2' 'low -ac 1 -ar 22050 -b:a 8k' 'free -q:a 4 -write_xing 0'; do "
                 "set -- $a; n=$1; shift; ffmpeg -y -i in.wav $@ $n.mp3 || exit 1; done && "
                 "ffmpeg -y -i in.wav -b:a 192k a.mp2"));
    const std::string whole = readText(desk.path("cbr.mp3")), low = readText(desk.path("low.mp3"));
    const std::size_t middle = whole.size() / 2, late = middle + middle / 2;
    writeText(desk.path("hole.mp3"), std::string(whole).erase(middle - 3000, 5000));
    writeText(desk.path("late.mp3"), std::string(whole).replace(late, 5000, 5000, 'x'));
    writeText(desk.path("foreign.mp3"), std::string(whole).insert(late, low.substr(low.size() / 2, 300)));
    writeText(desk.path("cut.mp3"), whole.substr(0, late));
    for (const char *name :
         {"cbr.mp3", "vbr.mp3", "low.mp3", "free.mp3", "a.mp2", "hole.mp3", "late.mp3", "foreign.mp3", "cut.mp3"})
        EXPECT_TRUE(desk.read(name).buffer.samples() == desk.decodedAtOnce(name)) << name;
}

std::string tag(const std::string &mark, const std::string &size, const std::string &text) { return mark + size + text; }

// Tags of kinds that are not FLAC's own, with what looks like a block inside, which stand before and behind the sound.
TEST(DamagedFormats, FlacKeepsTheTagsAroundIt) {
    Desk desk;
    const KnownSound sound = knownNoise(16, 1, 44100, 10000);
    desk.write("in.wav", ourWav(sound));
    ASSERT_TRUE(desk.run("flac --silent -f -o a.flac in.wav"));
    const std::string whole = readText(desk.path("a.flac")), block = whole.substr(whole.find("\xFF\xF8\xC9\x08"), 2000);
    const std::string id3 = tag("ID3", std::string("\4\0\0\0\0\x10\0", 7), block + std::string(48, 'x'));
    const std::string id3v1 = tag("TAG", "", std::string(125, 'y'));
    const std::string ape = block + tag("APETAGEX", std::string("\xD0\7\0\0\xF0\7\0\0\1\0\0\0", 12), std::string(12, '\0'));
    const std::pair<std::string, std::string> rows[] = {{id3, ""}, {"", id3v1}, {id3 + id3, ape + id3v1}, {"", "and so on"}};
    for (const std::string &stream : {whole, std::string(whole).replace(22, 4, 4, '\0')})
        for (const auto &[before, behind] : rows) {
            writeText(desk.path("x.flac"), before + stream + behind);
            AudioFileContents contents = desk.read("x.flac");
            EXPECT_EQ(contents.missingFrames + contents.damagedFrames, 0);
            EXPECT_EQ(desk.framesTold("x.flac"), 10000);
            expectSame(wordsOf(contents.buffer), sound, "as read");
            contents.buffer = contents.buffer.part({0, 5000});
            desk.write("x.flac", contents);
            const std::string saved = readText(desk.path("x.flac"));
            EXPECT_TRUE(saved.starts_with(before + "fLaC") && saved.ends_with(behind));
            EXPECT_EQ(desk.wordsFrom("ffmpeg -y -i x.flac -f s32le -c:a pcm_s32le raw").size(), 5000u);
            expectSame(wordsOf(desk.read("x.flac").buffer), {16, 1, 44100, wordsOf(contents.buffer)}, "as saved");
        }
}

// Writes with a fault in the file, as a worn disk or a mistake of ours would.
class FaultyFiles : public Files {
public:
    FaultyFiles(Files &files, std::function<void(std::string &)> damage) : files_(files), damage_(std::move(damage)) {}
    void replace(const std::string &path, const std::function<void(ByteSink &)> &produce,
                 const std::function<void(const ByteSource &)> &check) override {
        const auto faulty = [&](ByteSink &sink) {
            MemorySink kept;
            produce(kept);
            const auto bytes = kept.take();
            std::string text(reinterpret_cast<const char *>(bytes.data()), bytes.size());
            damage_(text);
            sink.write(std::as_bytes(std::span(text)));
        };
        files_.replace(path, faulty, check);
    }
    std::unique_ptr<ByteSource> open(const std::string &path) override { return files_.open(path); }
    std::optional<FileSystem::Identity> identity(const std::string &path) override { return files_.identity(path); }
    std::vector<std::string> names(const std::string &folder) override { return files_.names(folder); }
    bool isWritable(const std::string &folder) override { return files_.isWritable(folder); }
    void createFolder(const std::string &path) override { files_.createFolder(path); }
    void moveToTrash(const std::string &path) override { files_.moveToTrash(path); }
    Recovery recoverInterrupted(const std::string &path) override { return files_.recoverInterrupted(path); }

private:
    Files &files_;
    std::function<void(std::string &)> damage_;
};

// Another FLAC file, sound in itself, that holds another sample somewhere, or one too many, or tells another rate.
TEST(DamagedFormats, ThatDoNotHoldWhatWasWrittenLeaveTheFileAsItWas) {
    Desk desk;
    LinuxFileSystem fileSystem;
    const auto files = makeFiles(fileSystem);
    ModuleDecoders decoders;
    constexpr std::int64_t frames = 256 * 4096 + 5000;  // more than one part of what is checked side by side
    struct Case {
        KnownSound sound;
        AudioFileContents contents;
    };
    const auto flacBytes = [](const AudioFileContents &contents) {
        const Bytes bytes = AudioFileCodec::fileImage(contents).bytes();
        return std::string(reinterpret_cast<const char *>(bytes.data()), bytes.size());
    };
    for (const int bits : {16, 20, 24, 32}) {
        const KnownSound sound = knownNoise(bits, 1, 44100, frames);
        AudioFileContents contents = ourFlac(sound);
        contents.trailing = {std::byte('T')};
        const auto other = [&](auto change) {
            KnownSound changed = sound;
            AudioFileContents instead = contents;
            change(changed, instead);
            instead.buffer = bufferOf(changed);
            return flacBytes(instead);
        };
        const std::int32_t step = std::int32_t(1u << (32 - bits));
        const auto sample = [&](std::size_t at) {
            return other([=](KnownSound &changed, AudioFileContents &) { changed.words[at] ^= step; });
        };
        const std::string right = flacBytes(contents);
        const auto image = AudioFileCodec::fileImage(contents);
        const auto size = std::size_t(image.samplesSize({130 * 4096, 131 * 4096}));
        const auto at = std::size_t(image.samplesOffset() + image.samplesSize({0, 130 * 4096}));
        const std::string exchanged =
            right.substr(0, at) + right.substr(at + size, size) + right.substr(at, size) + right.substr(at + 2 * size);
        const std::pair<const char *, std::string> rows[] = {
            {"the first sample", sample(0)},
            {"a sample where two parts meet", sample(256 * 4096)},
            {"the last sample", sample(frames - 1)},
            {"a sample too many", other([](KnownSound &s, AudioFileContents &) { s.words.push_back(0); })},
            {"a sample too few", other([](KnownSound &s, AudioFileContents &) { s.words.pop_back(); })},
            {"a sample between the ends", sample(100 * 4096 + 7)},
            {"two blocks exchanged", exchanged},
            {"another rate", other([](KnownSound &s, AudioFileContents &) { s.rate = 48000; })},
            {"another end", other([](KnownSound &, AudioFileContents &c) { c.trailing = {std::byte('U')}; })},
            {"a bit", std::string(right).replace(right.size() / 2, 1, 1, char(right[right.size() / 2] ^ 1))},
            {"cut off", right.substr(0, right.size() - 1)},
            {"nothing", ""},
        };
        for (const auto &[what, bytes] : rows) {
            writeText(desk.path("x.flac"), "as it was");
            FaultyFiles faulty(*files, [&](std::string &written) {
                EXPECT_TRUE(written == right);
                written = bytes;
            });
            Progress progress;
            std::string said;
            try {
                writeAudioFile(faulty, &decoders, desk.path("x.flac"), contents, progress);
            } catch (const AudioFileError &error) {
                said = error.what();
            }
            EXPECT_EQ(said, AudioFileError::writeCheckFailed().what()) << bits << " bits: " << what;
            EXPECT_EQ(readText(desk.path("x.flac")), "as it was") << what;
        }
    }
}

// Without a module its kinds of files are not supported, and nothing else changes.
TEST(DamagedFormats, WithoutTheirModuleAreNotSupported) {
    Desk desk;
    desk.write("in.wav", ourWav(knownTone(1, 44100, 3000)));
    ASSERT_TRUE(desk.run("ffmpeg -y -i in.wav a.m4a && flac --silent -f -o a.flac in.wav"));
    TestFolder empty;
    LinuxFileSystem fileSystem;
    const auto files = makeFiles(fileSystem);
    ModuleDecoders none(empty.path());
    const std::pair<const char *, const char *> rows[] = {{"in.wav", ""},
                                                          {"a.m4a", "This audio format is not supported (MPEG-4)."},
                                                          {"a.flac", "This audio format is not supported (FLAC)."}};
    for (const auto &[name, text] : rows) {
        Progress progress;
        std::string said;
        try {
            readAudioFile(*files, &none, desk.path(name), progress);
        } catch (const AudioFileError &error) {
            said = error.what();
        }
        EXPECT_EQ(said, text) << name;
    }
}

TEST(DamagedFormats, CanBeCancelledWhileTheyAreRead) {
    Desk desk;
    desk.write("in.wav", ourWav(knownTone(2, 44100, 400000)));
    ASSERT_TRUE(desk.run("flac --silent -f -o a.flac in.wav && ffmpeg -y -i in.wav a.mp3 && ffmpeg -y -i in.wav a.m4a"));
    LinuxFileSystem fileSystem;
    const auto files = makeFiles(fileSystem);
    ModuleDecoders decoders;
    for (const char *name : {"a.flac", "a.mp3", "a.m4a"}) {
        Progress progress;
        progress.cancel();
        EXPECT_THROW(readAudioFile(*files, &decoders, desk.path(name), progress), Cancelled) << name;
        Progress whole;
        readAudioFile(*files, &decoders, desk.path(name), whole);
        EXPECT_GT(whole.fraction(), 0.99) << name;
    }
}

}  // namespace
}  // namespace kiv
