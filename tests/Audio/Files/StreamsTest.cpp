#include <gtest/gtest.h>

#include <atomic>
#include <system_error>

#include "Audio/Files/FileBytes.h"

// Sources and sinks that are large, slow to end, or fail, and jobs that are cancelled.
namespace kiv {
namespace {

using namespace fileBytes;

AudioEditorBuffer ramp(std::int64_t frames, std::int64_t channels) {
    std::vector<float> samples(static_cast<std::size_t>(frames * channels));
    for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = float(i % 65521) / 65536;
    return {samples, channels, 44100};
}

struct CountingSink : ByteSink {
    std::int64_t failAfter = INT64_MAX;
    Progress *cancelAfterFirst = nullptr;
    Bytes bytes{};

    void write(std::span<const std::byte> more) override {
        if (std::int64_t(bytes.size() + more.size()) > failAfter)
            throw std::system_error(std::make_error_code(std::errc::no_space_on_device), "writing");
        append(bytes, more);
        if (cancelAfterFirst) cancelAfterFirst->cancel();
    }
};

// A source whose bytes are computed, that may end early or fail from some place on.
struct MadeUpSource : ByteSource {
    std::int64_t length = 0;
    Bytes head{};
    std::int64_t endsAt = INT64_MAX, failsAt = INT64_MAX;
    Progress *cancelled = nullptr;

    std::int64_t size() const override { return length; }
    std::size_t read(std::int64_t offset, std::span<std::byte> out) const override {
        if (cancelled) cancelled->cancel();
        const std::int64_t end = offset + std::int64_t(out.size());
        if (end > failsAt) throw std::system_error(std::make_error_code(std::errc::io_error), "reading");
        for (std::size_t i = 0; i < out.size(); ++i, ++offset)
            out[i] = offset < std::int64_t(head.size()) ? head[std::size_t(offset)] : std::byte{0};
        return std::size_t(std::clamp<std::int64_t>(endsAt - (end - std::int64_t(out.size())), 0, std::int64_t(out.size())));
    }
};

MadeUpSource madeUp(std::int64_t length, const Bytes &head) {
    MadeUpSource source;
    source.length = length;
    source.head = head;
    return source;
}

std::string outcomeOf(const ByteSource &source, Progress *progress = nullptr) {
    try {
        return AudioFileCodec::readNative(source, progress) ? "read" : "not ours";
    } catch (const std::exception &error) {
        return error.what();
    }
}

// More than one batch, in pieces that end anywhere, and frames larger than a block.
TEST(Image, WritesEverySampleInOrder) {
    for (const std::int64_t channels : {1, 3, 40000}) {
        const AudioEditorBuffer sound = ramp(3'000'000 / channels + 1, channels);
        const std::int64_t cut = sound.frames() / 3;
        AudioFileContents contents = read(riff("WAVE", chunk("fmt ", fmt({.bits = 24})) + chunk("data", {})));
        contents.buffer = sound.replacing({cut, cut}, sound.part({0, sound.frames() - cut}));
        Progress progress;
        CountingSink sink;
        const auto image = AudioFileCodec::wavImage(contents);
        image.writeTo(sink, &progress);
        Bytes expected(static_cast<std::size_t>(contents.buffer.frames() * channels * 3));
        AudioFileCodec::encodeSamples(contents.buffer, {0, contents.buffer.frames()}, *contents.format.encoding, expected);
        ASSERT_EQ(std::int64_t(sink.bytes.size()), image.size());
        EXPECT_TRUE(std::equal(expected.begin(), expected.end(), sink.bytes.begin() + 44)) << channels;
        EXPECT_EQ(progress.fraction(), 1);
        EXPECT_TRUE(image.bytes() == sink.bytes);
        EXPECT_EQ(read(sink.bytes).buffer.frames(), contents.buffer.frames());
    }
}

TEST(Image, PassesOnWhatTheSinkThrowsAndStopsWhenCancelled) {
    AudioFileContents contents = read(wavOf(1));
    contents.buffer = ramp(8'000'000, 1);
    const auto image = AudioFileCodec::wavImage(contents);
    CountingSink full;
    full.failAfter = 6'000'000;
    EXPECT_THROW(image.writeTo(full), std::system_error);
    Progress progress;
    CountingSink sink;
    sink.cancelAfterFirst = &progress;
    EXPECT_THROW(image.writeTo(sink, &progress), Cancelled);
    EXPECT_LT(sink.bytes.size(), 100u);
}

TEST(Reading, SaysWhatTheSourceSays) {
    const Bytes head = riff("WAVE", chunk("fmt ", fmt({})) + text("data") + le32(20'000'000));
    MadeUpSource failing = madeUp(20'000'044, head), shrinking = failing, early = failing, last = failing;
    failing.failsAt = 10'000'000;
    shrinking.endsAt = 15'000'000;
    early.endsAt = 30;
    last.endsAt = 20'000'043;
    const std::string reading = std::system_error(std::make_error_code(std::errc::io_error), "reading").what();
    EXPECT_EQ(outcomeOf(failing), "The file could not be read: " + reading + ".");
    for (const MadeUpSource &source : {shrinking, early, last})
        EXPECT_EQ(outcomeOf(source), "The file could not be read: it became shorter while it was read.") << source.endsAt;
}

TEST(Reading, CountsAndCanBeCancelled) {
    Progress progress;
    const Bytes head = riff("WAVE", chunk("fmt ", fmt({})) + text("data") + le32(20'000'000));
    MadeUpSource source = madeUp(20'000'044, head);
    EXPECT_EQ(outcomeOf(source, &progress), "read");
    EXPECT_GT(progress.fraction(), 0.999);
    Progress ended;
    source.cancelled = &ended;
    EXPECT_EQ(outcomeOf(source, &ended), "cancelled");
}

// A file filled up with zeros is an empty chunk every eight bytes. It must not cost many times its size, and comes back whole.
TEST(Reading, BoundsTheChunksOfAFileFullOfZeros) {
    const Bytes head = wavOf(1);
    const auto contents = AudioFileCodec::readNative(madeUp(50'000'000, head)).value();
    EXPECT_LE(contents.chunks.size(), 65536u);
    const Bytes again = written(contents);
    ASSERT_EQ(again.size(), 50'000'000u);
    EXPECT_TRUE(std::equal(head.begin() + 8, head.end(), again.begin() + 8));
    EXPECT_EQ(std::count(again.begin() + 46, again.end(), std::byte{0}), 50'000'000 - 46);
}

// Behind very many chunks the format and the audio are found all the same, and everything stays where it was.
TEST(Reading, FindsTheAudioBehindAnyNumberOfChunks) {
    Bytes many, note = chunk("note", {});
    for (int i = 0; i < 70000; ++i) append(many, note);
    const Bytes wav =
        riff("WAVE", many + chunk("fmt ", fmt({})) + note + chunk("data", le16(1) + le16(2)) + note + text("tail"));
    const Bytes aiff = form("AIFF", many + note + ssnd(be16(1)) + note + beChunk("COMM", comm({.frames = 1})));
    EXPECT_EQ(read(wav).buffer.frames(), 2);
    const Bytes large = wavOf(1, chunk("JUNK", noise(9'000'001, 1)));  // read and written in steps
    for (const Bytes &file : {wav, aiff, large}) EXPECT_TRUE(written(read(file)) == file);
}

// Ids chosen to collide, regions on each: time must stay in proportion.
TEST(Reading, StaysQuickWithHundredsOfThousandsOfCues) {
    Bytes many = le32(400'000), regions = text("adtl");
    for (unsigned i = 0; i < 400'000; ++i) {
        append(many, le32(i * 65536) + le32(i) + zeros(16));
        append(regions, text("ltxt") + le32(8) + le32(i * 65536) + le32(1));
    }
    const auto start = std::chrono::steady_clock::now();
    const auto contents = read(wavOf(2, chunk("cue ", many) + chunk("LIST", regions)));
    EXPECT_EQ(contents.positions.size(), 800'000u);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

// Bytes of one half of a file, chunks of random names, sizes and order, cut anywhere: nothing but our errors, and what is read
// is written so that it reads and writes the same again.
class ChunkSoup {
public:
    explicit ChunkSoup(unsigned seed) : random_(seed) {}

    Bytes file() {
        const bool isWav = below(2) == 0;
        Bytes chunks = isWav ? wavHead() : aiffHead();
        for (unsigned i = below(8); i > 0; --i) chunks = chunks + anyChunk(isWav);
        Bytes file = isWav ? riff("WAVE", chunks) : form(below(2) ? "AIFC" : "AIFF", chunks);
        for (unsigned i = below(6); i > 0; --i) file[below(file.size())] = std::byte(below(256));
        if (below(3) == 0) file.resize(below(file.size()) + 1);
        return file;
    }

private:
    unsigned below(std::size_t limit) { return unsigned(random_() % limit); }
    Bytes wavHead() {
        return chunk("fmt ", below(4) ? fmt({.tag = below(4), .channels = below(4), .bits = 8 * below(6)})
                                      : extensible({.channels = 1 + below(3)}, below(17), below(8)));
    }
    Bytes aiffHead() {
        const char *types[] = {"NONE", "sowt", "in24", "fl32", "fl64", "what"};
        const Comm common{.channels = 1 + below(3), .frames = below(100), .bits = 1 + below(34)};
        return beChunk("COMM", below(2) ? comm(common) : compressed(common, types[below(6)]));
    }
    Bytes payload() {
        switch (below(7)) {
            case 0:
                return cues({{below(4), below(90), below(90)}, {below(4), below(90), 0}});
            case 1:
                return smpl({{below(90), below(90)}, {below(90), below(90)}});
            case 2:
                return text("adtl") + ltxt(below(4), below(90)) + chunk("labl", noise(below(9), below(9)));
            case 3:
                return be16(below(4)) + marker(below(3), below(90), "abc") + marker(below(3), below(90), "de");
            case 4:
                return instrument(below(3), below(3), below(3));
            case 5:
                return be16(below(4)) + comment(below(3), "abc") + comment(below(3), "de");
            default:
                return noise(below(60), below(1000));
        }
    }
    Bytes anyChunk(bool isWav) {
        const char *ids[] = {"data", "data", "SSND", "SSND", "cue ", "smpl", "LIST", "MARK",
                             "INST", "COMT", "PEAK", "fact", "fmt ", "COMM", "x"};
        const std::string id = std::string(ids[below(15)]) + "   ";
        return isWav ? chunk(id.substr(0, 4), payload()) : beChunk(id.substr(0, 4), payload());
    }

    std::mt19937 random_;
};

TEST(Reading, SurvivesChunkSoupAndWritesItStably) {
    int readable = 0;
    for (unsigned seed = 0; seed < 20000; ++seed) {
        const Bytes file = ChunkSoup(seed).file();
        if (outcome(file) != "read") continue;
        ++readable;
        const Bytes once = written(read(file));
        ASSERT_TRUE(written(read(once)) == once) << seed << "\n" << show(file) << "\n" << show(once);
        const auto looped = AudioFileCodec::addingLoop(AudioFileCodec::removingLoop(read(file)), 0, 1);
        const auto again = read(written(looped));
        if (!looped.loop || again.buffer.isEmpty()) continue;
        ASSERT_EQ(editorPositions(again).loop, (FrameRange{0, 1})) << seed;
    }
    EXPECT_GT(readable, 2000);
}

}  // namespace
}  // namespace kiv
