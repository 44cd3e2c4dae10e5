#include <gtest/gtest.h>

#include <random>

#include "Audio/Files/FileBytes.h"
#include "Audio/Files/SampleDecoding.h"
#include "Audio/Files/SampleEncoding.h"
#include "Audio/Files/SampleResidue.h"
#include "Editor/AudioEditorCore/AudioEditorOps.h"

// Samples that no edit has changed are written with the bits they were read with, wherever they have moved to.
namespace kiv {
namespace {

using namespace fileBytes;
using Kind = AudioSampleEncoding::Kind;

// The sound beside what must be written for each of its frames: the bytes that were read, or those of the computed sample.
class Followed {
public:
    Followed(const Bytes &file, const Bytes &samples) : contents_(read(file)), bytes_(samples) {}

    void edit(std::mt19937 &random) {
        const auto pick = [&](std::int64_t below) { return std::int64_t(random() % std::uint64_t(below)); };
        const AudioEditorBuffer before = contents_.buffer;
        const std::int64_t lo = pick(before.frames()), hi = lo + 1 + pick(std::min(before.frames() - lo, lengths_[pick(3)]));
        const std::int64_t kind = pick(before.frames() > 40000 ? 5 : 4);
        if (kind == 0) return put({lo, hi}, AudioEditorOps::scaled(before.part({lo, hi}), {0, hi - lo}, 0.7));
        if (kind == 3)
            return put({lo, hi}, AudioEditorOps::reversed(before, {lo, hi}).part({lo, hi}), mirrored(bytesOf({lo, hi})));
        if (kind == 4) return put({lo, hi}, AudioEditorBuffer(before.channels()), {});
        const AudioEditorBuffer clip = AudioEditorOps::slice(before, {lo, hi});
        const Bytes bytes = bytesOf({lo, hi});
        const std::int64_t at = pick(before.frames() + 1);
        put({at, at}, kind == 1 ? clip : AudioEditorOps::silenced(clip, {0, clip.frames()}),
            kind == 1 ? bytes : zeros(bytes.size()));
    }

    // Each channel alone, and that twice.
    void takeChannel(AudioEditorMonoSource source, std::int64_t copies) {
        const auto channel = source == AudioEditorMonoSource::left ? 0u : std::size_t(contents_.buffer.channels() - 1);
        const std::size_t width = frameBytes() / std::size_t(contents_.buffer.channels());
        Bytes bytes;
        for (std::size_t at = channel * width; at < bytes_.size(); at += frameBytes())
            for (std::int64_t copy = 0; copy < copies; ++copy) bytes.insert(bytes.end(), &bytes_[at], &bytes_[at] + width);
        bytes_ = bytes;
        contents_.buffer = AudioEditorOps::withChannels(AudioEditorOps::mono(contents_.buffer, source), copies);
    }
    // What another file of the same kind begins with.
    void paste(const Followed &other, std::int64_t frames) {
        put({100, 100}, AudioEditorOps::slice(other.contents_.buffer, {0, frames}), other.bytesOf({0, frames}));
    }

    std::int64_t wrongFrames() const {
        Bytes encoded(bytes_.size());
        encode(contents_.buffer, encoded);
        std::int64_t wrong = 0;
        for (std::size_t at = 0; at < encoded.size(); at += frameBytes())
            wrong += !std::equal(encoded.begin() + std::ptrdiff_t(at), encoded.begin() + std::ptrdiff_t(at + frameBytes()),
                                 bytes_.begin() + std::ptrdiff_t(at));
        return wrong;
    }

private:
    std::size_t frameBytes() const { return std::size_t(contents_.buffer.channels() * contents_.format.encoding->bytes); }
    void encode(const AudioEditorBuffer &buffer, Bytes &out) const {
        AudioFileCodec::encodeSamples(buffer, {0, buffer.frames()}, *contents_.format.encoding, out);
    }
    Bytes bytesOf(FrameRange range) const {
        return {bytes_.begin() + range.lo * std::ptrdiff_t(frameBytes()),
                bytes_.begin() + range.hi * std::ptrdiff_t(frameBytes())};
    }
    Bytes mirrored(const Bytes &bytes) const {
        Bytes result;
        for (auto at = bytes.end(); at != bytes.begin(); at -= std::ptrdiff_t(frameBytes()))
            result.insert(result.end(), at - std::ptrdiff_t(frameBytes()), at);
        return result;
    }
    void put(FrameRange range, const AudioEditorBuffer &computed) {
        Bytes bytes(std::size_t(computed.frames()) * frameBytes());
        encode(computed, bytes);
        put(range, computed, bytes);
    }
    void put(FrameRange range, const AudioEditorBuffer &with, const Bytes &bytes) {
        contents_.buffer = contents_.buffer.replacing(range, with);
        bytes_.erase(bytes_.begin() + range.lo * std::ptrdiff_t(frameBytes()),
                     bytes_.begin() + range.hi * std::ptrdiff_t(frameBytes()));
        bytes_.insert(bytes_.begin() + range.lo * std::ptrdiff_t(frameBytes()), bytes.begin(), bytes.end());
    }

    AudioFileContents contents_;
    Bytes bytes_;
    static constexpr std::int64_t lengths_[] = {3, 500, 30000};
};

TEST(Exactness, HoldsForUntouchedFramesThroughAnyEdits) {
    struct Row {
        const char *name;
        unsigned tag, bits;
        const char *compression;  // AIFC; none: WAV
    };
    const Row rows[] = {{"wav 32", 1, 32, nullptr},
                        {"wav double", 3, 64, nullptr},
                        {"aifc 32", 0, 32, "in32"},
                        {"aifc double", 0, 64, "FL64"},
                        {"wav 24", 1, 24, nullptr}};
    for (const Row &row : rows)
        for (const unsigned channels : {1u, 2u}) {
            const unsigned frames = 70001;
            const auto opened = [&](unsigned seed) {
                const Bytes samples = noise(std::size_t(frames) * channels * row.bits / 8, seed);
                const Comm common{.channels = channels, .frames = frames, .bits = row.bits};
                const Fmt format{.tag = row.tag, .channels = channels, .bits = row.bits};
                return Followed(row.compression
                                    ? form("AIFC", beChunk("COMM", compressed(common, row.compression)) + ssnd(samples))
                                    : riff("WAVE", chunk("fmt ", fmt(format)) + chunk("data", samples)),
                                samples);
            };
            Followed followed = opened(row.bits + channels);
            std::mt19937 random(row.bits + channels);
            EXPECT_EQ(followed.wrongFrames(), 0) << row.name << " unedited";
            for (int i = 0; i < 60; ++i) followed.edit(random);
            followed.paste(opened(7), 65001);
            EXPECT_EQ(followed.wrongFrames(), 0) << row.name;
            for (const auto source : {AudioEditorMonoSource::left, AudioEditorMonoSource::right})
                for (const std::int64_t copies : {1, 2, 3}) {
                    Followed channel = followed;
                    channel.takeChannel(source, copies);
                    EXPECT_EQ(channel.wrongFrames(), 0) << row.name << copies;
                }
        }
}

// Differences of every width, in a part that starts inside another, and for the other byte order.
TEST(Exactness, ResidueGivesBackEveryWord) {
    const std::uint64_t doubles[] = {0x3FF0000000000001, 0x3FF00000E0000001, 0x7FF4000000000001, 0x7FEFFFFFFFFFFFFF,
                                     0x0000000000000001, 0x8000000000000000, 0x3FB999999999999A, 0xFFF8000012345678};
    for (const std::uint64_t odd : doubles)
        for (const bool bigEndian : {false, true}) {
            const AudioSampleEncoding encoding{.kind = Kind::floating, .bytes = 8, .validBits = 64, .bigEndian = bigEndian};
            const auto order = bigEndian ? std::endian::big : std::endian::little;
            Bytes samples;
            for (int i = 0; i < 40000; ++i)
                append(samples, word<std::uint64_t>(i % 3 ? std::bit_cast<std::uint64_t>(0.5) : odd, order));
            std::vector<float> decoded(40000);
            decodeSamples(samples, encoding, decoded);
            SampleResidue residue(encoding, 40000);
            residue.keep(0, samples, encoding, decoded);
            Bytes encoded(8 * 39990);
            encodeSamples(std::span(decoded).subspan(10), encoding, encoded);
            restoreOriginals(residue, 10, encoding, encoded);
            EXPECT_TRUE(std::equal(encoded.begin(), encoded.end(), samples.begin() + 80)) << std::hex << odd;
        }
    EXPECT_FALSE(SampleResidue::isNeeded({.bytes = 3}) || SampleResidue::isNeeded({.kind = Kind::floating, .bytes = 4}));
}

}  // namespace
}  // namespace kiv
