#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>

#include "Audio/Files/FileBytes.h"
#include "Audio/Files/SavingDifferences.h"

// Every file that can be made or found, opened and saved without an edit, must come back as it was, but for what is listed.
namespace kiv {
namespace {

using namespace fileBytes;
using enum SavingDifference;

struct CorpusFile {
    std::string name;
    Bytes bytes;
    std::set<SavingDifference> expected;
};

struct Encoding {
    const char *name;
    int bytes;
    Bytes (*file)(unsigned channels, unsigned frames, const Bytes &before, const Bytes &samples, const Bytes &behind);
};

template <unsigned tag, unsigned bits>
Bytes wavFile(unsigned channels, unsigned frames, const Bytes &before, const Bytes &samples, const Bytes &behind) {
    return riff("WAVE", chunk("fmt ", fmt({.tag = tag, .channels = channels, .bits = bits})) + chunk("fact", le32(frames)) +
                            before + chunk("data", samples) + behind);
}
template <unsigned tag, unsigned bits, unsigned validBits>
Bytes extensibleFile(unsigned channels, unsigned, const Bytes &before, const Bytes &samples, const Bytes &behind) {
    const Bytes format = extensible({.tag = tag, .channels = channels, .rate = 96000, .bits = bits}, validBits, 3);
    return riff("WAVE", before + chunk("fmt ", format) + chunk("data", samples) + behind);
}
template <unsigned bits>
Bytes aiffFile(unsigned channels, unsigned frames, const Bytes &before, const Bytes &samples, const Bytes &behind) {
    const Comm common{.channels = channels, .frames = frames, .bits = bits, .rate = extended(48000)};
    return form("AIFF", before + beChunk("COMM", comm(common)) + ssnd(samples) + behind);
}
constexpr const char *compressionTypes[] = {"NONE", "twos", "sowt", "in24", "in32", "fl32", "FL64"};
template <unsigned type, unsigned bits>
Bytes aifcFile(unsigned channels, unsigned frames, const Bytes &before, const Bytes &samples, const Bytes &behind) {
    const Comm common{.channels = channels, .frames = frames, .bits = bits, .rate = extended(11025.125)};
    return form("AIFC", beChunk("FVER", be32(0xA2805140)) + before + ssnd(samples) +
                            beChunk("COMM", compressed(common, compressionTypes[type])) + behind);
}

// clang-format off
const Encoding encodings[] = {
    {"wav 8", 1, wavFile<1, 8>},      {"wav 12", 2, wavFile<1, 12>},     {"wav 16", 2, wavFile<1, 16>},
    {"wav 24", 3, wavFile<1, 24>},    {"wav 32", 4, wavFile<1, 32>},      {"wav float", 4, wavFile<3, 32>},
    {"wav double", 8, wavFile<3, 64>}, {"wav 20 in 24", 3, extensibleFile<1, 24, 20>},
    {"wav extensible float", 4, extensibleFile<3, 32, 32>},
    {"aiff 8", 1, aiffFile<8>},       {"aiff 12", 2, aiffFile<12>},      {"aiff 16", 2, aiffFile<16>},
    {"aiff 24", 3, aiffFile<24>},     {"aiff 32", 4, aiffFile<32>},
    {"aifc NONE", 2, aifcFile<0, 16>}, {"aifc twos", 2, aifcFile<1, 16>}, {"aifc sowt", 3, aifcFile<2, 24>},
    {"aifc in24", 3, aifcFile<3, 24>}, {"aifc in32", 4, aifcFile<4, 32>},  {"aifc fl32", 4, aifcFile<5, 32>},
    {"aifc FL64", 8, aifcFile<6, 64>},
};
// clang-format on

// Chunks before and behind the audio, of which none gives a reason for a difference.
struct Mix {
    const char *name;
    Bytes before, behind, beBefore, beBehind;
};

std::vector<Mix> mixes() {
    const Bytes wavMarks = chunk("cue ", cues({{1, 3, 3}, {2, 5, 0}, {3, 0, 7}, {1, 9, 4}}));
    const Bytes regions = chunk("LIST", text("adtl") + chunk("labl", le32(1) + text("a mark")) + ltxt(1, 5) + ltxt(2, 0));
    const Bytes markers = beChunk("MARK", be16(3) + marker(1, 2, "begin") + marker(2, 9, "end") + marker(7, 31, ""));
    return {
        {"plain", {}, {}, {}, {}},
        {"chunks", chunk("bext", noise(603, 1)) + chunk("JUNK", zeros(28)),
         chunk("LIST", text("INFO") + chunk("IART", text("me"))) + chunk("id3 ", noise(77, 2)),
         beChunk("NAME", text("odd")) + beChunk("APPL", noise(40, 3)),
         beChunk("ANNO", text("words")) + beChunk("ID3 ", noise(31, 4))},
        {"marks", wavMarks, regions, markers, beChunk("COMT", be16(1) + comment(2, "here it ends"))},
        {"loop", chunk("smpl", smpl({{2, 8}, {9, 3}}) + text("own")), wavMarks, markers, beChunk("INST", instrument(1, 1, 2))},
        {"tail", {}, chunk("wxyz", noise(5, 5)) + text("tail"), {}, beChunk("wxyz", noise(5, 5)) + text("1234567")},
    };
}

void addEncodings(std::vector<CorpusFile> &corpus) {
    unsigned seed = 0;
    for (const Encoding &encoding : encodings)
        for (const unsigned channels : {1u, 2u, 5u})
            for (const Mix &mix : mixes()) {
                const unsigned frames = 33 + seed % 2;
                const Bytes samples = noise(std::size_t(encoding.bytes) * channels * frames, ++seed);
                const bool isWav = std::string_view(encoding.name).starts_with("wav");
                corpus.push_back({encoding.name + std::string(" ") + mix.name + " " + std::to_string(channels),
                                  encoding.file(channels, frames, isWav ? mix.before : mix.beBefore, samples,
                                                isWav ? mix.behind : mix.beBehind),
                                  {}});
            }
}

Bytes withBytes(Bytes file, std::size_t offset, const Bytes &bytes) {
    std::copy(bytes.begin(), bytes.end(), file.begin() + std::ptrdiff_t(offset));
    return file;
}
Bytes cutShort(Bytes file, std::size_t bytes) {
    file.resize(file.size() - bytes);
    return file;
}

// Faulty and unfinished files. In wavOf() the byte rate is at 28, the data chunk's size at 40; in aiffOf() the frames are at
// 22, the sound chunk's size at 42 and its offset at 46.
void addFaults(std::vector<CorpusFile> &corpus) {
    const Bytes wav = wavOf(20), aiff = aiffOf(20);
    const Bytes wavMarks =
        wavOf(20, chunk("cue ", cues({{1, 30, 30}, {2, 4, 4}})) + chunk("LIST", text("adtl") + ltxt(2, 50) + ltxt(1, 5)) +
                      chunk("smpl", smpl({{3, 0xFFFFFFFF}, {99, 98}})));
    const Bytes eight = riff("WAVE", chunk("fmt ", fmt({.bits = 8})) + chunk("data", noise(21, 1)));
    const CorpusFile faults[] = {
        {"stale",
         wavOf(20, chunk("PEAK", zeros(16)) + chunk("md5 ", zeros(5)) + chunk("MD5 ", zeros(3))),
         {staleChunk, formSize}},
        {"stale aiff", aiffOf(20, beChunk("levl", zeros(16)) + beChunk("peak", zeros(1))), {staleChunk, formSize}},
        {"form size 0", withBytes(wav, 4, le32(0)), {formSize}},
        {"form size of a stream", withBytes(aiff, 4, be32(0xFFFFFFFF)), {formSize}},
        {"form size without the tail", withBytes(wavOf(20, text("abc")), 4, le32(76)), {formSize}},
        {"data size 0", withBytes(wav, 40, le32(0)), {chunkSize}},
        {"data size of a stream", withBytes(wav, 40, le32(0xFFFFFFFF)), {chunkSize}},
        {"sound size of a stream", withBytes(aiff, 42, be32(0xFFFFFFFF)), {chunkSize}},
        {"cut off in the audio", cutShort(wav, 6), {formSize, chunkSize}},
        {"cut off in a frame", cutShort(wav, 5), {formSize, chunkSize, incompleteFrame}},
        {"cut off aiff", cutShort(aiff, 5), {formSize, chunkSize, incompleteFrame, commonFrames}},
        {"cut off in a chunk", cutShort(wavOf(20, chunk("abcd", noise(20, 1))), 3), {formSize, chunkSize, padByte}},
        {"no pad byte", cutShort(eight, 1), {padByte}},
        {"pad byte not 0", withBytes(eight, eight.size() - 1, byte(7)), {padByte}},
        {"positions beyond the end", wavMarks, {positionBeyondEnd}},
        {"marker beyond the end", aiffOf(20, beChunk("MARK", be16(1) + marker(1, 21, "x"))), {positionBeyondEnd}},
        {"wrong byte rate", withBytes(wav, 28, le32(1)), {rateAndAlign}},
        {"no block align", withBytes(wav, 32, le16(0)), {rateAndAlign}},
        {"wrong fact", wavOf(20, chunk("fact", le32(19))), {factFrames}},
        {"no whole frame",
         riff("WAVE", chunk("fmt ", fmt({})) + chunk("data", byte(1)) + chunk("note", zeros(9))),
         {incompleteFrame}},
        {"no whole frame before another audio chunk",
         riff("WAVE", chunk("fmt ", fmt({})) + chunk("data", zeros(1)) + chunk("data", noise(8, 1)) + text("tail")),
         {}},
        {"no audio", riff("WAVE", chunk("note", zeros(9)) + chunk("fmt ", fmt({})) + chunk("data", {})), {}},
        {"no sound chunk", form("AIFF", beChunk("COMM", comm({}))), {}},
        {"fewer frames than said", withBytes(aiff, 22, be32(21)), {commonFrames}},
        {"more samples than said", withBytes(aiff, 22, be32(19)), {incompleteFrame, formSize}},
        {"offset", withBytes(aiff, 46, be32(2)), {soundHeader, commonFrames, formSize}},
        {"block size", withBytes(aiff, 50, be32(512)), {soundHeader}},
        {"several audio and format chunks",
         wavOf(20, chunk("data", noise(9, 1)) + chunk("fmt ", zeros(20)) + chunk("fact", le32(20)) + chunk("fact", le32(5))),
         {}},
    };
    corpus.insert(corpus.end(), std::begin(faults), std::end(faults));
}

Bytes fileBytesOf(const std::filesystem::path &path) {
    std::ifstream stream(path, std::ios::binary);
    const std::string content{std::istreambuf_iterator<char>(stream), {}};
    return text(content);
}

// Sound files that come with packages which the tests install anyway.
std::vector<std::filesystem::path> packagedFiles() {
    const std::unique_ptr<FILE, int (*)(FILE *)> list(
        popen("dpkg -L libpython3.11-testsuite alsa-utils python3-scipy 2>/dev/null", "r"), pclose);
    std::vector<std::filesystem::path> found;
    std::array<char, 4096> line;
    while (list && std::fgets(line.data(), int(line.size()), list.get())) {
        std::string path = line.data();
        path.erase(path.find_last_not_of('\n') + 1);
        const std::string extension = std::filesystem::path(path).extension();
        if (extension == ".wav" || extension == ".aif" || extension == ".aiff" || extension == ".aifc")
            found.emplace_back(path);
    }
    return found;
}

std::vector<CorpusFile> madeFiles() {
    std::vector<CorpusFile> corpus;
    addEncodings(corpus);
    addFaults(corpus);
    return corpus;
}

// Opens and saves; a second time must change nothing more.
ComparedFiles savedUnedited(const Bytes &file) {
    const AudioFileContents contents = read(file);
    const Bytes saved = written(contents);
    ComparedFiles compared = compareSaved(file, saved, contents);
    const Bytes again = written(read(saved));
    if (compared.differences.empty() && saved != file) compared.fault = "it differs where nothing was found to differ";
    if (again != saved) compared.fault = "saving it a second time changes it again";
    return compared;
}

TEST(Corpus, MadeFilesComeBackAsTheyWereButForWhatIsListed) {
    const std::vector<CorpusFile> corpus = madeFiles();
    std::set<SavingDifference> seen;
    std::int64_t identical = 0;
    for (const CorpusFile &file : corpus) {
        const ComparedFiles compared = savedUnedited(file.bytes);
        EXPECT_EQ(compared.fault, "") << file.name;
        EXPECT_EQ(compared.differences, file.expected) << file.name;
        identical += compared.differences.empty();
        seen.insert(compared.differences.begin(), compared.differences.end());
    }
    EXPECT_GE(corpus.size(), 200u);
    EXPECT_EQ(seen.size(), documentedDifferences().size()) << "a listed difference that no file shows";
    std::printf("corpus: %zu made files, %lld saved byte for byte, the others with listed differences\n", corpus.size(),
                static_cast<long long>(identical));
}

TEST(Corpus, PackagedFilesComeBackAsTheyWereButForWhatIsListed) {
    const auto paths = packagedFiles();
    ASSERT_FALSE(paths.empty()) << "the packages of the test section are not installed";
    int readable = 0, identical = 0;
    for (const auto &path : paths) {
        const Bytes file = fileBytesOf(path);
        if (outcome(file) != "read") continue;
        ++readable;
        const ComparedFiles compared = savedUnedited(file);
        EXPECT_EQ(compared.fault, "") << path;
        identical += compared.differences.empty();
        for (const SavingDifference difference : compared.differences)
            std::printf("  %s: %s\n", path.filename().c_str(), documentedDifferences().at(difference).c_str());
    }
    EXPECT_GT(readable, 20);
    std::printf("corpus: %d of %zu packaged files are ours, %d saved byte for byte\n", readable, paths.size(), identical);
}

TEST(Corpus, DifferencesAreInTheDocument) {
    const Bytes document =
        fileBytesOf(std::filesystem::path(KIV_TEST_DATA).parent_path().parent_path() / "docs/what-saving-changes.md");
    const std::string_view words(reinterpret_cast<const char *>(document.data()), document.size());
    for (const auto &[difference, sentence] : documentedDifferences())
        EXPECT_NE(words.find("**" + sentence), std::string_view::npos) << sentence;
    EXPECT_EQ(std::size_t(std::count(words.begin(), words.end(), '*')), 4 * documentedDifferences().size());
}

}  // namespace
}  // namespace kiv
