#include "Audio/Files/SampleWrapping.h"

#include <algorithm>
#include <array>
#include <bit>

#include "Audio/Files/ByteFields.h"
#include "Audio/Files/FileFormats.h"

namespace kiv {
namespace {

using Kind = AudioSampleEncoding::Kind;
using Size = SampleWrapping::Size;

// How a kind of file is put together from chunks.
struct Dialect {
    std::string_view magic;
    std::endian order;
    std::size_t idBytes, sizeBytes;
    std::int64_t first;          // where the first chunk begins
    std::int64_t countedHeader;  // bytes of a chunk's header that its size counts
    std::int64_t alignment;      // of chunks
    std::size_t formSize;        // where the whole file's size stands; 0: nowhere
    std::int64_t formLess;       // what that leaves out

    std::int64_t header() const { return std::int64_t(idBytes + sizeBytes); }
    bool isCaf() const { return magic == "caff"; }
};

// W64 names chunks by sixteen bytes, the first four of which are the WAV name.
constexpr std::array dialects{
    Dialect{"RF64", std::endian::little, 4, 4, 12, 0, 2, 4, 8}, Dialect{"BW64", std::endian::little, 4, 4, 12, 0, 2, 4, 8},
    Dialect{"RIFX", std::endian::big, 4, 4, 12, 0, 2, 4, 8},    Dialect{"riff", std::endian::little, 16, 8, 40, 24, 8, 16, 0},
    Dialect{"caff", std::endian::big, 4, 8, 8, 0, 1, 0, 0},
};

// More than any real file has; each takes many times its header in memory.
constexpr std::size_t mostParts = 4096;

// Chunks that stand for no frames, whatever else they say.
bool isTimeless(const SampleWrapping::Part &part) {
    static constexpr std::array<std::string_view, 17> timeless{"bext", "iXML", "JUNK", "junk", "PAD ", "FLLR",
                                                               "id3 ", "ID3 ", "axml", "chna", "_PMX", "inst",
                                                               "info", "strg", "free", "umid", "chan"};
    const bool isInfo = part.id == "LIST" && part.bytes.size() >= 12 && idAt(part.bytes, 8) == "INFO";
    return isInfo || std::ranges::find(timeless, part.id) != timeless.end();
}

std::int64_t sizeAt(std::span<const std::byte> bytes, std::size_t offset, std::size_t width, std::endian order) {
    return width == 4 ? u32At(bytes, offset, order) : std::int64_t(wordAt<std::uint64_t>(bytes, offset, order));
}

// A size that says to look elsewhere, or to read on to the end.
bool isLeftOpen(std::int64_t size, std::size_t width) { return size == (width == 4 ? std::int64_t(0xFFFFFFFF) : -1); }

struct Found {
    std::string id;
    std::int64_t at = 0, payload = 0, size = 0;  // the header's place, the payload's place and size
    bool isOpen = false;
};

class ChunkedWrapping {
public:
    ChunkedWrapping(const SourceReader &reader, const Dialect &dialect) : reader_(reader), dialect_(dialect) {}

    std::optional<WrappedFile> find() {
        SampleWrapping &wrapping = file_.wrapping;
        wrapping.bigEndian = dialect_.order == std::endian::big;
        wrapping.alignment = dialect_.alignment;
        wrapping.headerBytes = dialect_.countedHeader;
        addHeader();
        std::int64_t at = dialect_.first;
        while (reader_.size() - at >= dialect_.header()) {
            const auto chunk = chunkAt(at);
            if (!chunk || wrapping.parts.size() > mostParts || !add(*chunk)) return std::nullopt;
            at = std::min(aligned(chunk->payload + chunk->size), reader_.size());
        }
        const std::int64_t frameBytes = wrapping.channels * wrapping.encoding.bytes;
        if (at != reader_.size() || !hasFormat_ || audioBytes_ < 0 || audioBytes_ % frameBytes != 0) return std::nullopt;
        file_.audio.frames = wrapping.frames = audioBytes_ / frameBytes;
        if (isUnpadded()) wrapping.alignment = 1;
        return std::move(file_);
    }

private:
    std::int64_t aligned(std::int64_t at) const {
        return (at + dialect_.alignment - 1) / dialect_.alignment * dialect_.alignment;
    }

    // Samples at the very end: in W64 files readers take zeros behind them for samples, and elsewhere some writers leave them
    // out.
    bool isUnpadded() const {
        const bool isLast = file_.wrapping.samplesBefore == file_.wrapping.parts.size();
        return isLast &&
               (dialect_.alignment == 8 || (audioBytes_ % 2 != 0 && file_.audio.start + audioBytes_ == reader_.size()));
    }

    void addHeader() {
        SampleWrapping::Part header{.id = "", .bytes = reader_.bytes(0, dialect_.first), .isBare = true, .sizes = {}};
        const std::size_t width = dialect_.sizeBytes, offset = dialect_.formSize;
        if (offset != 0 && !isLeftOpen(sizeAt(header.bytes, offset, width, dialect_.order), width))
            header.sizes.push_back({std::uint32_t(offset), int(width), Size::Of::file, -dialect_.formLess});
        file_.wrapping.parts.push_back(std::move(header));
    }

    // Nothing when it does not lie inside the file.
    std::optional<Found> chunkAt(std::int64_t at) const {
        const Bytes header = reader_.bytes(at, dialect_.header());
        Found chunk{idAt(header, 0), at, at + dialect_.header(), 0, false};
        chunk.size = sizeAt(header, dialect_.idBytes, dialect_.sizeBytes, dialect_.order);
        chunk.isOpen = isLeftOpen(chunk.size, dialect_.sizeBytes);
        const std::int64_t left = reader_.size() - chunk.payload, counted = chunk.isOpen ? 0 : dialect_.countedHeader;
        if (chunk.isOpen) chunk.size = dialect_.isCaf() ? left : dataSize_;
        if (chunk.size < counted || chunk.size - counted > left) return std::nullopt;
        chunk.size -= counted;
        return chunk;
    }

    bool add(const Found &chunk) {
        if (chunk.id == "data" && audioBytes_ >= 0) return false;
        if (chunk.id == "data") return addAudio(chunk);
        if (isStaleChunkId(chunk.id)) return true;
        const std::int64_t end = std::min(aligned(chunk.payload + chunk.size), reader_.size());
        SampleWrapping::Part part{
            .id = chunk.id, .bytes = reader_.bytes(chunk.at, end - chunk.at), .isBare = false, .sizes = {}};
        const auto payload =
            std::span<const std::byte>(part.bytes).subspan(std::size_t(dialect_.header()), std::size_t(chunk.size));
        part.isBare = readDescription(chunk.id, payload, part);
        if (!part.isBare && !isTimeless(part)) file_.wrapping.countsFrames = true;
        file_.wrapping.parts.push_back(std::move(part));
        return true;
    }

    // Takes what a chunk says of the samples; false when it says nothing of them.
    bool readDescription(const std::string &id, std::span<const std::byte> payload, SampleWrapping::Part &part) {
        const auto header = std::uint32_t(dialect_.header());
        if (id == "fmt " && payload.size() >= FmtChunk::plainSize) return readFormat(payload);
        if (id == "desc" && payload.size() >= 32) return readDesc(payload);
        if (id == "fact" && payload.size() >= dialect_.sizeBytes)
            part.sizes.push_back({header, int(dialect_.sizeBytes), Size::Of::frames, 0});
        if (id == "ds64" && payload.size() >= 24) {
            dataSize_ = sizeAt(payload, 8, 8, dialect_.order);
            part.sizes = {
                {header, 8, Size::Of::file, -8}, {header + 8, 8, Size::Of::samples, 0}, {header + 16, 8, Size::Of::frames, 0}};
        }
        return id == "fact" || id == "ds64" || id == "chan";
    }

    bool readFormat(std::span<const std::byte> fmt) {
        const auto order = dialect_.order;
        const unsigned channels = u16At(fmt, FmtChunk::channels, order), align = u16At(fmt, FmtChunk::blockAlign, order);
        unsigned tag = u16At(fmt, FmtChunk::formatTag, order);
        const bool isExtensible = tag == FmtChunk::extensibleTag && fmt.size() >= FmtChunk::extensibleSize;
        if (isExtensible && order == std::endian::little) tag = u16At(fmt, FmtChunk::subFormat, order);
        if (channels == 0 || align % channels != 0 || (tag != FmtChunk::integerTag && tag != FmtChunk::floatTag)) return true;
        const int bytes = int(align / channels);
        file_.sampleRate = u32At(fmt, FmtChunk::sampleRate, order);
        setEncoding({.kind = tag == FmtChunk::floatTag ? Kind::floating : Kind::integer,
                     .bytes = bytes,
                     .validBits = bytes * 8,
                     .bigEndian = order == std::endian::big,
                     .unsigned8 = bytes == 1},
                    channels);
        return true;
    }

    // A description of uncompressed samples: a frame a packet.
    bool readDesc(std::span<const std::byte> desc) {
        constexpr auto order = std::endian::big;
        constexpr std::uint32_t isFloat = 1, isLittle = 2;
        const std::uint32_t flags = u32At(desc, 12, order), packet = u32At(desc, 16, order), channels = u32At(desc, 24, order);
        const double rate = std::bit_cast<double>(wordAt<std::uint64_t>(desc, 0, order));
        const bool isPlain = idAt(desc, 8) == "lpcm" && u32At(desc, 20, order) == 1 && channels > 0 && packet % channels == 0;
        constexpr std::uint32_t widest = 8;
        if (!isPlain || packet / channels > widest || !(rate >= 1 && rate < 0x1p31)) return true;
        const int bytes = int(packet / channels);
        file_.sampleRate = std::int64_t(rate);
        setEncoding({.kind = flags & isFloat ? Kind::floating : Kind::integer,
                     .bytes = bytes,
                     .validBits = bytes * 8,
                     .bigEndian = (flags & isLittle) == 0},
                    channels);
        return true;
    }

    void setEncoding(const AudioSampleEncoding &encoding, std::int64_t channels) {
        const bool isFloat = encoding.kind == Kind::floating;
        hasFormat_ = isFloat ? encoding.bytes == 4 || encoding.bytes == 8 : encoding.bytes >= 1 && encoding.bytes <= 4;
        file_.wrapping.encoding = encoding;
        file_.wrapping.channels = channels;
    }

    // In CAF a count of edits stands before the samples.
    bool addAudio(const Found &chunk) {
        const std::int64_t counted = dialect_.isCaf() ? 4 : 0, header = dialect_.header() + counted;
        if (chunk.size < counted) return false;
        SampleWrapping::Part part{.id = "data", .bytes = reader_.bytes(chunk.at, header), .isBare = true, .sizes = {}};
        if (!chunk.isOpen)
            part.sizes.push_back({std::uint32_t(dialect_.idBytes), int(dialect_.sizeBytes), Size::Of::samples,
                                  dialect_.countedHeader + counted});
        audioBytes_ = chunk.size - counted;
        file_.audio.start = chunk.at + header;
        file_.wrapping.parts.push_back(std::move(part));
        file_.wrapping.samplesBefore = file_.wrapping.parts.size();
        return true;
    }

    const SourceReader &reader_;
    const Dialect &dialect_;
    WrappedFile file_;
    std::int64_t dataSize_ = -1, audioBytes_ = -1;
    bool hasFormat_ = false;
};

// A header with a note of any length, samples, and perhaps something behind them.
std::optional<WrappedFile> findAu(const SourceReader &reader) {
    constexpr auto order = std::endian::big;
    constexpr std::int64_t plainHeader = 24;
    constexpr std::array<std::pair<unsigned, AudioSampleEncoding>, 6> encodings{{
        {2, {.bytes = 1, .validBits = 8, .bigEndian = true}},
        {3, {.bytes = 2, .validBits = 16, .bigEndian = true}},
        {4, {.bytes = 3, .validBits = 24, .bigEndian = true}},
        {5, {.bytes = 4, .validBits = 32, .bigEndian = true}},
        {6, {.kind = Kind::floating, .bytes = 4, .validBits = 32, .bigEndian = true}},
        {7, {.kind = Kind::floating, .bytes = 8, .validBits = 64, .bigEndian = true}},
    }};
    if (reader.size() < plainHeader) return std::nullopt;
    const Bytes head = reader.bytes(0, plainHeader);
    const std::int64_t start = u32At(head, 4, order), channels = u32At(head, 20, order), declared = u32At(head, 8, order);
    const auto encoding =
        std::ranges::find(encodings, u32At(head, 12, order), &std::pair<unsigned, AudioSampleEncoding>::first);
    const bool isOpen = isLeftOpen(declared, 4);
    if (encoding == encodings.end() || start < plainHeader || start > reader.size() || channels == 0) return std::nullopt;
    const std::int64_t bytes = isOpen ? reader.size() - start : declared, frameBytes = channels * encoding->second.bytes;
    if (bytes > reader.size() - start || bytes % frameBytes != 0) return std::nullopt;
    SampleWrapping wrapping{.encoding = encoding->second,
                            .channels = channels,
                            .frames = bytes / frameBytes,
                            .bigEndian = true,
                            .parts = {},
                            .samplesBefore = 1};
    wrapping.parts.push_back({.id = "", .bytes = reader.bytes(0, start), .isBare = true, .sizes = {}});
    if (!isOpen) wrapping.parts[0].sizes = {{8, 4, Size::Of::samples, 0}};
    if (const std::int64_t behind = reader.size() - start - bytes; behind > 0) {
        wrapping.parts.push_back({.id = "end", .bytes = reader.bytes(start + bytes, behind), .isBare = false, .sizes = {}});
        wrapping.countsFrames = true;
    }
    return WrappedFile{std::move(wrapping), {start, bytes / frameBytes}, u32At(head, 16, order)};
}

}  // namespace

std::optional<WrappedFile> findWrapping(const SourceReader &reader) {
    constexpr std::int64_t longestHeader = 40;
    if (reader.size() < longestHeader) return std::nullopt;
    const Bytes head = reader.bytes(0, longestHeader);
    const std::string magic = idAt(head, 0);
    if (magic == ".snd") return findAu(reader);
    const auto dialect = std::ranges::find(dialects, magic, &Dialect::magic);
    if (dialect == dialects.end() || (dialect->first == 12 && idAt(head, 8) != "WAVE")) return std::nullopt;
    return ChunkedWrapping(reader, *dialect).find();
}

SampleWrapping bareWrapping(SampleWrapping wrapping) {
    const auto isExtra = [](const SampleWrapping::Part &part) { return !part.isBare; };
    const auto behind = wrapping.parts.begin() + std::ptrdiff_t(wrapping.samplesBefore);
    wrapping.samplesBefore -= std::size_t(std::count_if(wrapping.parts.begin(), behind, isExtra));
    std::erase_if(wrapping.parts, isExtra);
    wrapping.countsFrames = false;
    return wrapping;
}

}  // namespace kiv
