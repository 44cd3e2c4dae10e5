#include <algorithm>

#include "Audio/Files/ByteFields.h"
#include "Audio/Files/LoopChunks.h"
#include "Audio/Files/WavMetadata.h"

namespace kiv {
namespace {

constexpr auto order = std::endian::little;
using Kind = AudioFilePositionField::Kind;

// A record's start, behind which always stands its end.
struct LoopFields {
    const AudioFilePositionField *start = nullptr;
    std::uint32_t startIndex() const { return start[0].index; }
    std::uint32_t endIndex() const { return start[1].index; }
    std::size_t record() const { return start->offset - SmplChunk::recordStart; }
};

// The loops of a chunk that have a length, as their records stand in it.
std::vector<LoopFields> loopsOf(const AudioFileChunk &chunk, const std::vector<std::int64_t> &positions) {
    std::vector<LoopFields> loops;
    for (std::size_t i = 0; chunk.id == "smpl" && i + 1 < chunk.fields.size(); i += 2) {
        const LoopFields loop{&chunk.fields[i]};
        if (positions[loop.startIndex()] < positions[loop.endIndex()]) loops.push_back(loop);
    }
    std::sort(loops.begin(), loops.end(), [](auto &a, auto &b) { return a.record() < b.record(); });
    return loops;
}

void setCount(AudioFileChunk &smpl, std::size_t count) {
    putWord(std::span(smpl.data), SmplChunk::loopCount, order, std::uint32_t(count));
}

}  // namespace

// The new record goes before any that are there: those were not taken for the file's loop, and the first is what samplers play.
bool addWavLoop(AudioFileContents &contents, AudioFileLoop loop) {
    AudioFileChunk &smpl = chunkOrNew(contents, "smpl", Bytes(SmplChunk::header));
    const std::size_t before = SmplChunk::records(smpl.data);
    if (smpl.data.size() < SmplChunk::header) smpl.data.resize(SmplChunk::header);
    openGap(smpl, SmplChunk::header, SmplChunk::record);
    setCount(smpl, before + 1);
    smpl.fields.push_back({.offset = SmplChunk::header + SmplChunk::recordStart, .index = std::uint32_t(loop.start)});
    smpl.fields.push_back(
        {.offset = SmplChunk::header + SmplChunk::recordEnd, .index = std::uint32_t(loop.end), .kind = Kind::inclusiveEnd});
    return true;
}

std::optional<AudioFileLoop> wavLoop(const AudioFileContents &contents) {
    for (const AudioFileChunk &chunk : contents.chunks)
        if (const auto loops = loopsOf(chunk, contents.positions); !loops.empty())
            return AudioFileLoop{loops[0].startIndex(), loops[0].endIndex()};
    return std::nullopt;
}

std::vector<std::uint32_t> removeWavLoop(AudioFileContents &contents) {
    for (AudioFileChunk &chunk : contents.chunks) {
        const auto loops = loopsOf(chunk, contents.positions);
        if (loops.empty()) continue;
        const LoopFields loop = loops[0];
        std::vector<std::uint32_t> positions{loop.startIndex(), loop.endIndex()};
        setCount(chunk, SmplChunk::records(chunk.data) - 1);
        cutOut(chunk, loop.record(), SmplChunk::record);
        std::sort(positions.begin(), positions.end());
        return positions;
    }
    return {};
}

}  // namespace kiv
