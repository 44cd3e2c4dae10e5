#include <gtest/gtest.h>

#include "Audio/Files/AudioFileConversion.h"
#include "Editor/AudioEditorCore/AudioEditorOps.h"
#include "Formats/Tools.h"

// Other programs read what we write, and we read what they write: each kind of file at several depths, rates and channel
// counts.
namespace kiv {
namespace {

constexpr std::pair<std::int64_t, std::int64_t> shapes[] = {{1, 44100}, {2, 22051}, {6, 96000}};  // channels, rate

std::string named(const char *what, const KnownSound &sound) {
    return std::string(what) + " " + std::to_string(sound.bits) + " bits, " + std::to_string(sound.channels) + " channels, " +
           std::to_string(sound.rate) + " Hz";
}

struct Lossless {
    const char *name;     // of the file
    const char *command;  // makes it of in.wav
    std::vector<int> bits;
    std::string typeName, description;  // with N for the bits
    std::int64_t mostChannels = 6;
};

const Lossless lossless[] = {
    {"a.flac", "flac --silent -f --channel-map=none -o a.flac in.wav", {8, 16, 24, 32}, "FLAC", "N-bit"},
    {"named.wav", "flac --silent -f --channel-map=none -o named.wav in.wav", {16}, "FLAC", "N-bit"},
    {"a.oga", "flac --silent -f --ogg --channel-map=none -o a.oga in.wav", {16}, "FLAC", "N-bit"},
    {"a.caf", "ffmpeg -y -i in.wav -c:a pcm_sNbe a.caf", {16, 24, 32}, "CAF", "N-bit"},
    {"a.caf", "ffmpeg -y -i in.wav -c:a pcm_f64le a.caf", {24}, "CAF", "64-bit float"},
    {"a.au", "ffmpeg -y -i in.wav -c:a pcm_sNbe a.au", {16, 24, 32}, "AU", "N-bit"},
    {"a.au", "sox in.wav -e float -b 32 a.au", {24}, "AU", "32-bit float"},
    {"a.w64", "sox in.wav a.w64", {16, 24, 32}, "W64", "N-bit"},
    {"a.wav", "ffmpeg -y -i in.wav -c:a pcm_sNle -rf64 always a.wav", {16, 24, 32}, "RF64", "N-bit"},
    {"a.wav", "sox in.wav -B a.wav", {8, 16, 24, 32}, "RIFX", "N-bit"},
    {"a.wav", "sox in.wav -B -e float -b 32 a.wav", {24}, "RIFX", "32-bit float"},
    {"a.m4a", "ffmpeg -y -i in.wav -c:a alac a.m4a", {16, 24}, "ALAC", "N-bit"},
    {"alac.caf", "ffmpeg -y -i in.wav -c:a alac alac.caf", {16, 24}, "ALAC", "N-bit"},
    {"a.wv", "ffmpeg -y -i in.wav -c:a wavpack a.wv", {16}, "WavPack", "N-bit"},
    {"b.wv", "ffmpeg -y -i in.wav -c:a wavpack b.wv", {24}, "WavPack", "32-bit"},
    {"a.tta", "ffmpeg -y -i in.wav -c:a tta a.tta", {16, 24}, "TTA", "N-bit"},
    {"a.wav", "ffmpeg -y -i in.wav -c:a pcm_sNle a.wav", {16, 24, 32}, "WAV", "N-bit"},
    {"a.aiff", "sox in.wav a.aiff", {8, 16, 24, 32}, "AIFF", "N-bit"},
    {"a.mka", "ffmpeg -y -i in.wav -c:a pcm_sNle a.mka", {16, 24}, "pcm_sNle", "N-bit"},
};

std::string withBits(std::string text, int bits) {
    for (auto at = text.find('N'); at != std::string::npos; at = text.find('N', at + 1))
        text.replace(at, 1, std::to_string(bits));
    return text;
}

// What a file must start with to be one that we write.
bool isWritten(const Desk &desk, const std::string &name) {
    const std::string mark = readText(desk.path(name)).substr(0, 4);
    const bool isPlain =
        name != "alac.caf" && std::string("RIFF FORM caff .snd riff RF64 RIFX").find(mark) != std::string::npos;
    return mark == "fLaC" || isPlain;
}

enum class Sizes { right, wrong };

// A file of a kind that is not our own: unedited it stays as it is to the byte, but for wrong sizes; edited, other programs
// find the edits.
void expectWrittenBack(Desk &desk, const std::string &name, AudioFileContents contents, const std::string &what, Sizes sizes) {
    const std::string before = readText(desk.path(name));
    desk.write(name, contents);
    EXPECT_EQ(readText(desk.path(name)) == before, sizes == Sizes::right) << what;
    const std::int64_t channels = contents.buffer.channels();
    contents.buffer = contents.buffer.replacing({1000, 2001}, AudioEditorBuffer(channels, contents.buffer.sampleRate()));
    KnownSound edited{32, channels, contents.buffer.sampleRate(), wordsOf(contents.buffer)};
    desk.write(name, contents);
    expectSame(wordsOf(desk.read(name).buffer), edited, what + " again");
    // Of big-endian RIFF files the one reader does not swap the bytes, and the other knows few kinds of files.
    const bool isSwapped = contents.format.typeName == "RIFX";
    expectSame(desk.wordsFrom(isSwapped ? "sox " + name + " -t raw -e signed -b 32 -L raw"
                                        : "ffmpeg -y -i " + name + " -f s32le -c:a pcm_s32le raw"),
               edited, what + " by another program");
    EXPECT_TRUE(desk.run("sndfile-info " + name)) << what;
}

TEST(Formats, AreReadSampleForSampleFromOtherPrograms) {
    Desk desk;
    for (const auto &[channels, rate] : shapes)
        for (const Lossless &row : lossless)
            for (const int bits : row.bits) {
                if (channels > row.mostChannels) continue;
                const KnownSound sound = knownNoise(bits, channels, rate);
                const std::string what = named(row.command, sound);
                desk.write("in.wav", ourWav(sound));
                ASSERT_TRUE(desk.run(withBits(row.command, bits))) << what;
                const AudioFileContents contents = desk.read(row.name);
                EXPECT_EQ(contents.format.typeName, withBits(row.typeName, bits)) << what;
                EXPECT_EQ(contents.format.bitsDescription, withBits(row.description, bits)) << what;
                EXPECT_EQ(contents.buffer.sampleRate(), rate) << what;
                EXPECT_EQ(contents.canSaveInPlace(), isWritten(desk, row.name)) << what;
                EXPECT_EQ(contents.buffer.channels(), channels) << what;
                expectSame(wordsOf(contents.buffer), sound, what);
                EXPECT_EQ(desk.framesTold(row.name), contents.buffer.frames()) << what;
                // A pad byte is counted as samples by the program that makes these.
                const bool isPadCounted = row.typeName == "RF64" && sound.words.size() * std::size_t(bits / 8) % 2 != 0;
                const Sizes sizes = isPadCounted ? Sizes::wrong : Sizes::right;
                if (contents.wrapping) expectWrittenBack(desk, row.name, contents, what, sizes);
            }
}

// The library that decodes them takes such bytes for samples.
TEST(Formats, OfW64DoNotTakeWhatStandsBehindTheSamplesForSound) {
    Desk desk;
    const KnownSound sound = knownNoise(16, 2, 44100, 5000);
    desk.write("in.wav", ourWav(sound));
    const std::string junk = "junk\\363\\254\\323\\021\\214\\321\\000\\300\\117\\216\\333\\212\\040\\0\\0\\0\\0\\0\\0\\0";
    ASSERT_TRUE(desk.run("sox in.wav a.w64 && printf '" + junk + "behind:)' >> a.w64"));
    const AudioFileContents contents = desk.read("a.w64");
    expectSame(wordsOf(contents.buffer), sound, "a.w64");
    EXPECT_EQ(desk.framesTold("a.w64"), 5000);
    expectWrittenBack(desk, "a.w64", contents, "a.w64", Sizes::wrong);
}

struct Lossy {
    const char *name, *command;
    std::int64_t rate;
    const char *typeName;
    double decibels;                      // of the tone over what differs from it, sample for sample
    std::int64_t spare = 0, missing = 0;  // frames that may be too many or too few at the end
    std::vector<std::int64_t> channels = {1, 2};
};

const Lossy lossy[] = {
    {"a.mp3", "ffmpeg -y -i in.wav -b:a 192k a.mp3", 44100, "MP3", 30},
    {"named.flac", "ffmpeg -y -i in.wav -b:a 192k -f mp3 named.flac", 44100, "MP3", 30},
    {"a.mp2", "ffmpeg -y -i in.wav -b:a 192k a.mp2", 44100, "MP2", -100, 3000},
    {"a.ogg", "ffmpeg -y -i in.wav -c:a libvorbis -q:a 7 a.ogg", 44100, "Ogg Vorbis", 30},
    // The channel of the deep notes loses the highest of them; two channels exchanged would leave 2 dB.
    {"a.ogg", "ffmpeg -y -i in.wav -c:a libvorbis -q:a 7 a.ogg", 44100, "Ogg Vorbis", 15, 0, 0, {3, 5, 6, 8}},
    {"a.opus", "ffmpeg -y -i in.wav -c:a libopus -b:a 160k a.opus", 48000, "Opus", 25},
    {"a.m4a", "ffmpeg -y -i in.wav -c:a aac -b:a 192k a.m4a", 44100, "AAC", 25, 2048},
    {"a.wma", "ffmpeg -y -i in.wav -c:a wmav2 -b:a 192k a.wma", 44100, "WMA", -100, 8192, 2048},
    {"mpeg.wav", "ffmpeg -y -i in.wav -c:a libmp3lame -b:a 192k mpeg.wav", 44100, "MP3", -100, 3000},
    {"mpeg.wav", "ffmpeg -y -i in.wav -c:a mp2 -b:a 192k mpeg.wav", 44100, "MP2", -100, 3000},
    {"ms.wav", "ffmpeg -y -i in.wav -c:a adpcm_ms ms.wav", 44100, "WAV", 30, 3000},
    {"ima.wav", "ffmpeg -y -i in.wav -c:a adpcm_ima_wav ima.wav", 44100, "WAV", 30, 3000},
    {"mu.wav", "sox in.wav -e mu-law mu.wav", 44100, "WAV", 30},
    {"a.wav", "sox in.wav -e a-law a.wav", 44100, "WAV", 30},
    {"a.aifc", "ffmpeg -y -i in.wav -c:a pcm_mulaw -f aiff a.aifc", 44100, "AIFC", 30},
    {"a.gsm.wav", "sox in.wav -e gsm-full-rate -c 1 a.gsm.wav", 8000, "WAV", 10, 600},
};

double decibelsOver(const AudioEditorBuffer &buffer, const KnownSound &sound) {
    const std::vector<float> samples = buffer.samples();
    double power = 0, error = 0;
    for (std::size_t i = 0; i < std::min(sound.words.size(), samples.size()); ++i) {
        const double was = sound.words[i] * 0x1p-31, difference = double(samples[i]) - was;
        power += was * was;
        error += difference * difference;
    }
    return 10 * std::log10(power / error);
}

std::string refusal(Desk &desk, const AudioFileContents &contents) {
    try {
        desk.write("not", contents);
        return "written";
    } catch (const std::exception &error) {
        return error.what();
    }
}

// Delays that an encoder put in front and a file tells of are gone again: else no sample would be where it was.
TEST(Formats, ThatLoseSomethingAreReadWhereItWas) {
    Desk desk;
    for (const Lossy &row : lossy)
        for (const std::int64_t channels : row.channels) {
            const bool isMono = std::string_view(row.command).find("-c 1") != std::string_view::npos;
            if (isMono && channels != 1) continue;
            const KnownSound sound = knownTone(channels, row.rate, 50001);
            desk.write("in.wav", ourWav(sound));
            ASSERT_TRUE(desk.run(row.command));
            const AudioFileContents contents = desk.read(row.name);
            EXPECT_EQ(contents.format.typeName, row.typeName) << row.command;
            EXPECT_EQ(contents.buffer.channels(), channels) << row.command;
            EXPECT_EQ(contents.buffer.sampleRate(), row.rate) << row.command;
            EXPECT_GE(contents.buffer.frames(), 50001 - row.missing) << row.command;
            EXPECT_LE(contents.buffer.frames(), 50001 + row.spare) << row.command;
            EXPECT_GT(decibelsOver(contents.buffer, sound), row.decibels) << row.command << ", " << channels << " channels";
            EXPECT_EQ(desk.framesTold(row.name), contents.buffer.frames()) << row.command;
            EXPECT_EQ(refusal(desk, contents), std::string(row.typeName) + " files can't be written: choose a format.");
        }
}

TEST(Formats, OfSeveralOggStreamsAreReadToTheEnd) {
    Desk desk;
    desk.write("in.wav", ourWav(knownNoise(16, 2, 48000, 20000)));
    // What an Opus stream has to warm up with is heard at the joint.
    const std::pair<std::string, std::int64_t> rows[] = {{"libvorbis", 0}, {"libopus", 312}};
    for (const auto &[codec, mostMore] : rows) {
        ASSERT_TRUE(desk.run("ffmpeg -v error -y -i in.wav -c:a " + codec + " -f ogg a.ogg && cat a.ogg a.ogg > b.ogg"));
        ASSERT_TRUE(desk.run("ffmpeg -v error -y -i b.ogg -f f32le b.raw"));
        const auto theirs = std::int64_t(readText(desk.path("b.raw")).size()) / 8;
        const std::int64_t ours = desk.read("b.ogg").buffer.frames();
        EXPECT_TRUE(ours >= theirs && ours <= theirs + mostMore) << codec << ": " << ours << " of " << theirs;
        EXPECT_GT(theirs, 39000) << codec;
    }
}

struct Ours {
    const char *name;
    int bits;
    AudioFileContents (*make)(const KnownSound &sound);
    const char *readers;  // f: ffmpeg, s: sox, n: libsndfile, p: scipy, F: flac
};

// As saved in another format than the file's own.
using Container = AudioSaveFormat::Container;
AudioFileContents wav(const KnownSound &sound) {
    return AudioFileCodec::converted(ourFlac(sound), {Container::wav, sound.bits}).contents;
}
AudioFileContents floatWav(const KnownSound &sound) {
    return AudioFileCodec::converted(ourAiff(sound), {Container::wav, 32, true}).contents;
}
AudioFileContents aiff(const KnownSound &sound) {
    return AudioFileCodec::converted(ourWav(sound), {Container::aiff, sound.bits}).contents;
}
AudioFileContents flac(const KnownSound &sound) {
    return AudioFileCodec::converted(ourWav(sound), {Container::flac, sound.bits}).contents;
}
AudioFileContents doubleWav(const KnownSound &sound) {
    KnownSound wide = sound;
    wide.bits = 64;
    return ourWav(wide, 3);
}
template <char first>
AudioFileContents aifc(const KnownSound &sound) {
    return ourAiff(sound, first == 's' ? "sowt" : first == '3' ? "in32" : "fl32");
}

const Ours ours[] = {
    {"o.wav", 8, wav, "fsnp"},      {"o.wav", 16, wav, "fsnp"},       {"o.wav", 24, wav, "fsnp"},
    {"o.wav", 32, wav, "fsnp"},     {"o.wav", 24, floatWav, "fsp"},   {"o.wav", 24, doubleWav, "fsp"},
    {"o.aiff", 8, aiff, "fsn"},     {"o.aiff", 16, aiff, "fsn"},      {"o.aiff", 24, aiff, "fsn"},
    {"o.aiff", 32, aiff, "fsn"},    {"o.aifc", 16, aifc<'s'>, "fsn"}, {"o.aifc", 32, aifc<'3'>, "fn"},
    {"o.aifc", 24, aifc<'f'>, "f"}, {"o.flac", 8, ourFlac, "Ffsn"},   {"o.flac", 16, flac, "Ffsn"},
    {"o.flac", 24, flac, "Ffsn"},   {"o.flac", 32, ourFlac, "F"},     {"o.flac", 12, ourFlac, "f"},
    {"o.flac", 20, ourFlac, "f"},
};

std::string rawFrom(char reader, const std::string &name) {
    switch (reader) {
        case 'f':
            return "ffmpeg -y -i " + name + " -f s32le -c:a pcm_s32le raw";
        case 's':
            return "sox " + name + " -t raw -e signed -b 32 -L raw";
        case 'n':
            return "sndfile-convert -pcm32 " + name + " n.au && sox n.au -t raw -e signed -b 32 -L raw";
        case 'F':
            return "flac --silent -t " + name + " && flac --silent -d -f -o n.wav " + name +
                   " && sox n.wav -t raw -e signed -b 32 -L raw";
        default:
            return "/usr/bin/python3 -c \"import numpy, scipy.io.wavfile as w; d = w.read('" + name +
                   "')[1]; k = d.dtype; s = {'u1': 24, 'i2': 16, 'i4': 0}.get(k.str[1:]);"
                   "d = d.astype('f8') * 2**31 if s is None else (d.astype('i8') - (128 if k == 'u1' else 0)) << s;"
                   "numpy.asarray(d).astype('<i4').tofile('raw')\"";
    }
}

TEST(Formats, AreReadSampleForSampleByOtherPrograms) {
    constexpr std::pair<std::int64_t, std::int64_t> ourShapes[] = {{1, 8000},  {2, 22051}, {2, 44100},
                                                                   {1, 48000}, {6, 96000}, {8, 192000}};
    Desk desk;
    for (const auto &[channels, rate] : ourShapes)
        for (const Ours &row : ours) {
            const KnownSound sound = knownNoise(row.bits, channels, rate);
            desk.write(row.name, row.make(sound));
            for (const char reader : std::string(row.readers))
                expectSame(desk.wordsFrom(rawFrom(reader, row.name)), sound, named(row.name, sound) + " by " + reader);
            EXPECT_TRUE(desk.run("sndfile-info " + std::string(row.name))) << row.name;
        }
}

// From whatever kind of file, into every kind that a sound may be saved as.
TEST(Formats, TakeTheirTitleAlong) {
    Desk desk;
    desk.write("in.wav", ourWav(knownTone(2, 48000, 20000)));
    const AudioSaveFormat formats[] = {{Container::wav, 16}, {Container::aiff, 24}, {Container::flac, 16}};
    for (const std::string from : {"a.mp3", "a.ogg", "a.opus", "a.m4a", "a.caf", "a.flac", "a.wav", "a.aiff", "a.wma"}) {
        ASSERT_TRUE(desk.run("ffmpeg -y -i in.wav -metadata title=Song " + from)) << from;
        for (const AudioSaveFormat &format : formats) {
            desk.write("out", AudioFileCodec::converted(desk.read(from), format).contents);
            EXPECT_TRUE(desk.run("ffprobe -v error -show_entries format_tags out | grep -i TAG:title=Song")) << from;
        }
    }
}

TEST(Formats, FlacOfEveryDepthPassesItsOwnTest) {
    Desk desk;
    for (int bits = 4; bits <= 32; ++bits) {
        const KnownSound sound = knownNoise(bits, 1 + bits % 8, 44100 + bits, 4097);
        desk.write("o.flac", ourFlac(sound));
        EXPECT_TRUE(desk.run("flac --silent -t o.flac")) << bits;
        const AudioFileContents contents = desk.read("o.flac");
        EXPECT_EQ(contents.format.bitsDescription, std::to_string(bits) + "-bit");
        expectSame(wordsOf(contents.buffer), sound, std::to_string(bits));
    }
}

TEST(Formats, FlacKeepsItsTagsAndPicturesAndEveryUntouchedSample) {
    Desk desk;
    for (const int bits : {16, 24, 32}) {
        const KnownSound sound = knownNoise(bits, 2, 48000, 20000);
        desk.write("in.wav", ourWav(sound));
        writeText(desk.path("picture.png"), "\x89PNG\r\n\x1a\n and so on");
        ASSERT_TRUE(
            desk.run("flac --silent -f --tag=TITLE=Song --tag=ARTIST=Me --picture='3|image/png|front|1x1x24|picture.png' "
                     "-S 10x --padding=99 -o s.flac in.wav"));
        AudioFileContents contents = desk.read("s.flac");
        EXPECT_TRUE(contents.canSaveInPlace());
        ASSERT_EQ(contents.flacMetadata.size(), 2u);
        contents.buffer = contents.buffer.replacing({5000, 6000}, AudioEditorBuffer(2, 48000));
        desk.write("s.flac", contents);
        ASSERT_TRUE(
            desk.run("metaflac --list s.flac > list && metaflac --show-tag=TITLE s.flac | grep -x TITLE=Song && "
                     "metaflac --export-picture-to=p s.flac && cmp p picture.png && ! grep -E 'SEEKTABLE|PADDING' list"));
        const AudioFileContents again = desk.read("s.flac");
        EXPECT_EQ(again.flacMetadata, contents.flacMetadata);
        KnownSound expected = sound;
        expected.words.erase(expected.words.begin() + 10000, expected.words.begin() + 12000);
        expectSame(wordsOf(again.buffer), expected, std::to_string(bits));
        contents = again;
        contents.buffer = AudioEditorOps::scaled(again.buffer, {100, 9000}, 0.3);
        desk.write("s.flac", contents);
        Progress progress;
        EXPECT_TRUE(desk.holds("s.flac", contents, progress)) << "what came to stand between the steps is on one of them";
        contents.buffer = AudioEditorOps::scaled(again.buffer, {100, 9000}, 0.31);
        EXPECT_FALSE(desk.holds("s.flac", contents, progress));
        progress.cancel();
        EXPECT_THROW(desk.holds("s.flac", contents, progress), Cancelled);
    }
}
}  // namespace
}  // namespace kiv
