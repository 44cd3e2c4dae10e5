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

// Cuts records at offsets given in order out of a chunk, in one pass: a file may hold very many.
void cutRecords(AudioFileChunk &smpl, const std::vector<std::size_t> &records) {
    const auto cutBefore = [&](std::size_t offset) {
        return std::size_t(std::upper_bound(records.begin(), records.end(), offset) - records.begin());
    };
    const auto isCut = [&](const AudioFilePositionField &field) {
        const std::size_t before = cutBefore(field.offset);
        return before > 0 && field.offset < records[before - 1] + SmplChunk::record;
    };
    std::erase_if(smpl.fields, isCut);
    for (AudioFilePositionField &field : smpl.fields)
        field.offset -= std::uint32_t(cutBefore(field.offset) * SmplChunk::record);
    const auto all = std::span<const std::byte>(smpl.data);
    Bytes kept(all.begin(), all.begin() + std::ptrdiff_t(records[0]));
    for (std::size_t i = 0; i < records.size(); ++i) {
        const std::size_t behind = records[i] + SmplChunk::record, next = i + 1 < records.size() ? records[i + 1] : all.size();
        append(kept, all.subspan(behind, next - behind));
    }
    smpl.data = std::move(kept);
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

std::vector<std::uint32_t> removeWavLoops(AudioFileContents &contents) {
    std::vector<std::uint32_t> positions;
    for (AudioFileChunk &chunk : contents.chunks) {
        const auto loops = loopsOf(chunk, contents.positions);
        if (loops.empty()) continue;
        for (const LoopFields &loop : loops) positions.insert(positions.end(), {loop.startIndex(), loop.endIndex()});
        setCount(chunk, SmplChunk::records(chunk.data) - loops.size());
        std::vector<std::size_t> records;
        for (const LoopFields &loop : loops) records.push_back(loop.record());
        cutRecords(chunk, records);
    }
    std::sort(positions.begin(), positions.end());
    return positions;
}

}  // namespace kiv
