#include "Audio/Files/ChunkScan.h"

#include <algorithm>
#include <utility>

#include "Audio/Files/ByteFields.h"

namespace kiv {
namespace {

constexpr std::int64_t headerSize = 8;

// Far more than any real file has. A file that some device or rescue tool filled up with zeros is one empty chunk every eight
// bytes, each of which would take ten times that in memory: behind this many, only the format and the audio are told apart.
constexpr std::size_t mostChunks = 65536;

// A size that a streaming writer left for later and never came back to.
bool isUnfinished(std::uint32_t declaredSize) { return declaredSize == 0 || declaredSize == 0xFFFFFFFF; }

// The bytes at a place, read some at a time: empty chunks stand close together.
class Window {
public:
    explicit Window(const SourceReader &reader) : reader_(reader) {}

    // headerSize bytes, which must lie inside the source.
    std::span<const std::byte> at(std::int64_t offset) {
        if (offset < start_ || offset + headerSize > start_ + std::int64_t(bytes_.size())) {
            bytes_.resize(std::size_t(std::min(most, reader_.size() - offset)));
            reader_.read(offset, bytes_);
            reader_.count(0);  // a wish to cancel is heard
            start_ = offset;
        }
        return std::span(bytes_).subspan(std::size_t(offset - start_), headerSize);
    }

private:
    static constexpr std::int64_t most = 4096;
    const SourceReader &reader_;
    std::int64_t start_ = 0;
    Bytes bytes_;
};

class Scan {
public:
    Scan(const SourceReader &reader, std::endian order, std::string_view formatId, std::string_view audioId)
        : reader_(reader), window_(reader), order_(order), formatId_(formatId), audioId_(audioId) {}

    ChunkScan run() {
        std::int64_t at = 12;
        while (reader_.size() - at >= headerSize && !isComplete()) at = chunkAt(at);
        scan_.end = std::min(at, reader_.size());
        return std::move(scan_);
    }

private:
    bool isFull() const { return scan_.chunks.size() >= mostChunks; }
    bool isComplete() const { return isFull() && scan_.audio && hasFormat_; }

    std::int64_t chunkAt(std::int64_t at) {
        const auto header = window_.at(at);
        const std::string id = idAt(header, 0);
        const std::uint32_t declaredSize = u32At(header, 4, order_);
        const std::int64_t left = reader_.size() - at - headerSize;
        // Only the first chunk of this name is the audio: the next one may really be empty.
        const bool isAudio = id == audioId_ && !scan_.audio, isFormat = id == formatId_ && !hasFormat_;
        const std::int64_t size = isAudio && isUnfinished(declaredSize) ? left : std::min<std::int64_t>(declaredSize, left);
        const std::int64_t next = at + headerSize + size + (size & 1);
        if (isFull() && !isAudio && !isFormat) return addToRun(at, next);
        if (isAudio) scan_.audio = scan_.chunks.size();
        hasFormat_ = hasFormat_ || isFormat;
        const std::int64_t missing = isLeftOpen(declaredSize) ? 0 : declaredSize - size;
        scan_.chunks.push_back({id, at + headerSize, size, missing});
        return next;
    }

    std::int64_t addToRun(std::int64_t at, std::int64_t next) {
        if (!scan_.chunks.back().id.empty()) scan_.chunks.push_back({{}, at, 0, 0});
        RawChunk &run = scan_.chunks.back();
        run.size = std::min(next, reader_.size()) - run.start;
        return next;
    }

    const SourceReader &reader_;
    Window window_;
    const std::endian order_;
    const std::string_view formatId_, audioId_;
    ChunkScan scan_;
    bool hasFormat_ = false;
};

}  // namespace

// They leave about as much as 31 or 32 bits can say.
bool isLeftOpen(std::int64_t declaredBytes) {
    return declaredBytes == 0 || (declaredBytes >= 0x7F000000 && declaredBytes <= 0x80000000) || declaredBytes >= 0xFFFFF000;
}

const RawChunk *ChunkScan::first(std::string_view id) const {
    const auto found = std::find_if(chunks.begin(), chunks.end(), [&](const RawChunk &chunk) { return chunk.id == id; });
    return found == chunks.end() ? nullptr : &*found;
}

ChunkScan scanChunks(const SourceReader &reader, std::endian order, std::string_view formatId, std::string_view audioId) {
    return Scan(reader, order, formatId, audioId).run();
}

std::vector<AudioFileChunk> readChunks(const SourceReader &reader, const ChunkScan &scan) {
    std::vector<AudioFileChunk> chunks;
    chunks.reserve(scan.chunks.size());
    for (std::size_t i = 0; i < scan.chunks.size(); ++i) {
        const RawChunk &raw = scan.chunks[i];
        chunks.push_back({.id = raw.id, .data = {}, .fields = {}, .sizeInFile = raw.size});
        if (i != scan.audio) chunks.back().data = reader.bytes(raw.start, raw.size);
    }
    return chunks;
}

}  // namespace kiv
