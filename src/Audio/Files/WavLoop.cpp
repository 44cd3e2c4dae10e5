#include <algorithm>

#include "Audio/Files/ByteFields.h"
#include "Audio/Files/LoopChunks.h"
#include "Audio/Files/WavMetadata.h"

namespace kiv {
namespace {

constexpr auto order = std::endian::little;
using Kind = AudioFilePositionField::Kind;

// Where the loop record whose start is the position at an index begins.
std::optional<std::size_t> recordOf(const AudioFileChunk &smpl, std::int64_t start) {
    const auto field = std::find_if(smpl.fields.begin(), smpl.fields.end(),
                                    [&](const auto &each) { return each.index == start && each.kind == Kind::frame; });
    if (field == smpl.fields.end()) return std::nullopt;
    return field->offset - SmplChunk::recordStart;
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

void removeWavLoop(AudioFileContents &contents, AudioFileLoop loop) {
    for (AudioFileChunk &chunk : contents.chunks) {
        const auto record = chunk.id == "smpl" ? recordOf(chunk, loop.start) : std::nullopt;
        if (!record) continue;
        setCount(chunk, SmplChunk::records(chunk.data) - 1);
        cutOut(chunk, *record, SmplChunk::record);
    }
}

}  // namespace kiv
