#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <string>

#include "Audio/Files/FileBytes.h"
#include "Audio/Files/SampleDecoding.h"
#include "Audio/Files/SampleResidue.h"
#include "Document/AudioFileReading.h"
#include "Document/AudioFileWriting.h"
#include "Platform/Linux/LinuxFileSystem.h"
#include "Platform/Linux/ModuleDecoders.h"
#include "Platform/Linux/World.h"

// Sounds whose samples are known, and other programs that read and write them.
namespace kiv {

constexpr AudioSampleEncoding wholeWords{.bytes = 4, .validBits = 32, .bigEndian = std::endian::native == std::endian::big};

// Samples of so many bits at the top of 32, interleaved.
struct KnownSound {
    int bits = 16;
    std::int64_t channels = 1, rate = 44100;
    std::vector<std::int32_t> words;
};

inline KnownSound knownNoise(int bits, std::int64_t channels, std::int64_t rate, std::size_t frames = 5003) {
    KnownSound sound{bits, channels, rate, {}};
    std::mt19937 random(unsigned(bits * 100 + channels));
    for (std::size_t i = 0; i < frames * std::size_t(channels); ++i)
        sound.words.push_back(std::int32_t(std::uint32_t(random()) >> (32 - bits) << (32 - bits)));
    return sound;
}

// A tone that every codec keeps, another in each channel.
inline KnownSound knownTone(std::int64_t channels, std::int64_t rate, std::size_t frames) {
    KnownSound sound{16, channels, rate, {}};
    for (std::size_t i = 0; i < frames; ++i)
        for (std::int64_t c = 0; c < channels; ++c)
            sound.words.push_back(std::int32_t(20000 * std::sin(double(i) * double(3 + c) * 200 / double(rate))) * 65536);
    return sound;
}

inline AudioEditorBuffer bufferOf(const KnownSound &sound) {
    SampleMemory memory{sound.words.size()};
    const std::span decoded(memory.data(), memory.size());
    const auto words = std::as_bytes(std::span(sound.words));
    decodeSamples(words, wholeWords, decoded);
    auto residue = std::make_unique<SampleResidue>(wholeWords, std::int64_t(sound.words.size()));
    residue->keep(0, words, wholeWords, decoded);
    return {std::move(memory), sound.channels, sound.rate, std::move(residue)};
}

inline std::vector<std::int32_t> wordsOf(const AudioEditorBuffer &buffer) {
    std::vector<std::int32_t> words(std::size_t(buffer.frames() * buffer.channels()));
    AudioFileCodec::encodeSamples(buffer, {0, buffer.frames()}, wholeWords, std::as_writable_bytes(std::span(words)));
    return words;
}

// Files in a folder of their own, and what the program does with them.
class Desk {
public:
    std::string path(const std::string &name) const { return folder_ / name; }

    // Runs a command in the folder. False when it fails, with what it said as a note in the test's output.
    bool run(const std::string &command) const {
        const std::string log = folder_ / "log";
        const bool works = std::system(("cd " + folder_.path() + " && (" + command + ") > log 2>&1").c_str()) == 0;
        if (!works) std::printf("%s\n%s\n", command.c_str(), readText(log).c_str());
        return works;
    }
    AudioFileContents read(const std::string &name) {
        Progress progress;
        return readAudioFile(*files_, &decoders_, path(name), progress).contents;
    }
    // From the start to the end by one decoder.
    std::vector<float> decodedAtOnce(const std::string &name) {
        const auto source = files_->open(path(name));
        const auto sound = decoders_.open(*source);
        std::vector<float> samples(std::size_t(sound->format().channels << 22));
        samples.resize(std::size_t(sound->read(std::span(samples)) * sound->format().channels));
        return samples;
    }
    std::int64_t framesTold(const std::string &name) {
        Progress progress;
        return summarizeAudioFile(*files_, &decoders_, path(name), progress).frames;
    }
    void write(const std::string &name, const AudioFileContents &contents) {
        Progress progress;
        writeAudioFile(*files_, &decoders_, path(name), contents, progress);
    }
    bool holds(const std::string &name, const AudioFileContents &contents, Progress &progress) {
        return holdsStill(*files_, &decoders_, path(name), contents, progress);
    }
    // A command that writes raw 32-bit words, of the machine's order, to the file "raw".
    std::vector<std::int32_t> wordsFrom(const std::string &command) {
        std::filesystem::remove(path("raw"));
        if (!run(command)) return {};
        const std::string bytes = readText(path("raw"));
        std::vector<std::int32_t> words(bytes.size() / 4);
        std::memcpy(words.data(), bytes.data(), 4 * words.size());
        return words;
    }

private:
    TestFolder folder_;
    LinuxFileSystem fileSystem_;
    std::unique_ptr<Files> files_ = makeFiles(fileSystem_);
    ModuleDecoders decoders_;
};

// Contents of a file of our own making without frames, into which the sound is put.
inline AudioFileContents ourContents(const Bytes &emptyFile, const KnownSound &sound) {
    AudioFileContents contents = fileBytes::read(emptyFile);
    contents.buffer = bufferOf(sound);
    return contents;
}

inline AudioFileContents ourWav(const KnownSound &sound, unsigned tag = 1) {
    using namespace fileBytes;
    const Fmt format{
        .tag = tag, .channels = unsigned(sound.channels), .rate = unsigned(sound.rate), .bits = unsigned(sound.bits)};
    return ourContents(riff("WAVE", chunk("fmt ", fmt(format)) + chunk("data", {})), sound);
}

inline AudioFileContents ourAiff(const KnownSound &sound, const char *compression = nullptr) {
    using namespace fileBytes;
    const Comm common{.channels = unsigned(sound.channels), .bits = unsigned(sound.bits), .rate = extended(double(sound.rate))};
    if (!compression) return ourContents(form("AIFF", beChunk("COMM", comm(common)) + ssnd({})), sound);
    return ourContents(
        form("AIFC", beChunk("FVER", be32(0xA2805140)) + beChunk("COMM", compressed(common, compression)) + ssnd({})), sound);
}

inline AudioFileContents ourFlac(const KnownSound &sound) {
    AudioFileContents contents;
    contents.format.container = AudioContainer::coreAudio;
    contents.format.sampleRate = double(sound.rate);
    contents.coreAudioSettings = {{formatIdentifierKey, "flac"}, {bitDepthKey, std::to_string(sound.bits)}};
    contents.buffer = bufferOf(sound);
    return contents;
}

// What came back of a sound; a failure names the first sample that differs.
inline void expectSame(const std::vector<std::int32_t> &words, const KnownSound &sound, const std::string &what) {
    ASSERT_EQ(words.size(), sound.words.size()) << what;
    const auto [was, is] = std::mismatch(sound.words.begin(), sound.words.end(), words.begin());
    EXPECT_TRUE(was == sound.words.end()) << what << ": sample " << was - sound.words.begin();
}

}  // namespace kiv
