#include "Audio/Files/WavMetadata.h"

#include <algorithm>

#include "Audio/Files/AudioFileCodec.h"
#include "Audio/Files/ByteFields.h"
#include "Audio/Files/LoopChunks.h"
#include "Audio/Files/PositionTable.h"

namespace kiv {
namespace {

constexpr auto order = std::endian::little;
using Kind = AudioFilePositionField::Kind;

AudioFilePositionField fieldAt(std::size_t offset, std::uint32_t index, Kind kind = Kind::frame, std::uint32_t from = 0) {
    return {.offset = std::uint32_t(offset), .index = index, .from = from, .kind = kind, .bigEndian = false};
}

class WavPositions {
public:
    WavPositions(AudioFileContents &contents, std::int64_t frames) : chunks_(contents.chunks), table_(contents, frames) {}

    // Cue points first, wherever they stand in the file, for regions are counted from them.
    void collect() {
        forEach("cue ", [this](AudioFileChunk &chunk) { readCues(chunk); });
        forEach("smpl", [this](AudioFileChunk &chunk) { readLoops(chunk); });
        forEach("LIST", [this](AudioFileChunk &chunk) { readRegions(chunk); });
    }

private:
    template <class Read>
    void forEach(std::string_view id, Read read) {
        for (AudioFileChunk &chunk : chunks_)
            if (chunk.id == id) read(chunk);
    }

    void readCues(AudioFileChunk &chunk) {
        using namespace CueChunk;
        if (chunk.data.size() < header) return;
        const std::size_t fitting = (chunk.data.size() - header) / record;
        const std::size_t count = std::min<std::size_t>(u32At(chunk.data, 0, order), fitting);
        chunk.fields.reserve(2 * count);
        for (std::size_t i = 0; i < count; ++i) readCue(chunk, header + i * record);
    }

    // Writers fill either place or both. Each that holds the value follows it.
    void readCue(AudioFileChunk &chunk, std::size_t record) {
        const std::size_t positionSlot = record + CueChunk::position, offsetSlot = record + CueChunk::sampleOffset;
        const std::uint32_t position = u32At(chunk.data, positionSlot, order);
        const std::uint32_t sampleOffset = u32At(chunk.data, offsetSlot, order);
        const std::uint32_t value = sampleOffset != 0 ? sampleOffset : position;
        const std::uint32_t index = table_.add(value);
        cues_.add(u32At(chunk.data, record, order), index);
        if (position == value) chunk.fields.push_back(fieldAt(positionSlot, index));
        if (sampleOffset == value) chunk.fields.push_back(fieldAt(offsetSlot, index));
    }

    void readLoops(AudioFileChunk &chunk) {
        const std::size_t count = SmplChunk::records(chunk.data);
        chunk.fields.reserve(2 * count);
        for (std::size_t i = 0; i < count; ++i) {
            const std::size_t record = SmplChunk::header + i * SmplChunk::record;
            const std::size_t startSlot = record + SmplChunk::recordStart, endSlot = record + SmplChunk::recordEnd;
            const std::uint32_t start = table_.add(u32At(chunk.data, startSlot, order));
            const std::uint32_t end = table_.add(std::int64_t(u32At(chunk.data, endSlot, order)) + 1);
            chunk.fields.push_back(fieldAt(startSlot, start));
            chunk.fields.push_back(fieldAt(endSlot, end, Kind::inclusiveEnd));
        }
    }

    void readRegions(AudioFileChunk &chunk) {
        const std::size_t size = chunk.data.size();
        if (size < 12 || idAt(chunk.data, 0) != "adtl") return;
        for (std::size_t at = 4; at < size && size - at >= 8;) {
            const std::size_t subSize = u32At(chunk.data, at + 4, order);
            const bool isWhole = subSize <= size - at - 8;
            if (isWhole && subSize >= 8 && idAt(chunk.data, at) == "ltxt") readRegion(chunk, at + 8);
            at += 8 + subSize + (subSize & 1);
        }
    }

    void readRegion(AudioFileChunk &chunk, std::size_t payload) {
        const auto cue = cues_.find(u32At(chunk.data, payload, order));
        if (!cue) return;
        const std::size_t lengthSlot = payload + 4;
        const std::uint32_t end = table_.add(table_.at(*cue) + u32At(chunk.data, lengthSlot, order));
        chunk.fields.push_back(fieldAt(lengthSlot, end, Kind::length, *cue));
    }

    std::vector<AudioFileChunk> &chunks_;
    PositionTable table_;
    PositionIds cues_;
};

}  // namespace

std::size_t SmplChunk::records(std::span<const std::byte> payload, std::endian fileOrder) {
    if (payload.size() < header) return 0;
    return std::min<std::size_t>(u32At(payload, loopCount, fileOrder), (payload.size() - header) / record);
}

Bytes patchedWavChunk(const AudioFileChunk &chunk, const std::vector<std::int64_t> &positions) {
    using namespace CueChunk;
    Bytes payload = AudioFileCodec::patched(chunk, positions);
    if (chunk.id != "cue ") return payload;
    for (const AudioFilePositionField &field : chunk.fields) {
        const bool isSampleOffset = field.offset >= header && (field.offset - header) % record == sampleOffset;
        if (isSampleOffset && field.offset + 4 <= payload.size() && u32At(payload, field.offset, order) == 0)
            putWord(std::span(payload), field.offset - sampleOffset + position, order, std::uint32_t(0));
    }
    return payload;
}

void collectWavPositions(AudioFileContents &contents, std::int64_t frames) {
    WavPositions(contents, frames).collect();
    contents.loop = wavLoop(contents);
}

}  // namespace kiv
