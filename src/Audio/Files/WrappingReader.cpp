#include <algorithm>
#include <array>
#include <bit>
#include <cctype>
#include <cmath>

#include "Audio/Files/AiffMetadata.h"
#include "Audio/Files/AudioFileError.h"
#include "Audio/Files/ByteFields.h"
#include "Audio/Files/CafChunks.h"
#include "Audio/Files/ChunkScan.h"
#include "Audio/Files/FileFormats.h"
#include "Audio/Files/FormBuilder.h"
#include "Audio/Files/PackedNames.h"
#include "Audio/Files/SampleWrapping.h"
#include "Audio/Files/WavMetadata.h"
#include "Audio/Files/WavReader.h"
#include "Audio/Files/WrappingChunks.h"
#include "Audio/Files/WrappingDialects.h"

namespace kiv {
namespace {

using Kind = SampleWrapping::Kind;
using Part = SampleWrapping::Part;
using Size = SampleWrapping::Size;

// More than any real file has; each takes many times its header in memory.
constexpr std::size_t mostParts = 4096;

std::int64_t sizeAt(std::span<const std::byte> bytes, std::size_t offset, std::size_t width, std::endian order) {
    return width == 4 ? u32At(bytes, offset, order) : std::int64_t(wordAt<std::uint64_t>(bytes, offset, order));
}

// A size that says to look elsewhere, or to read on to the end.
bool isOpenSize(std::int64_t size, std::size_t width) { return size == (width == 4 ? std::int64_t(0xFFFFFFFF) : -1); }

// As many as a WAV file could say, whatever this one has room for.
bool areChannels(std::int64_t channels) { return channels > 0 && channels <= 0xFFFF; }

struct WrappedFormat {
    std::int64_t channels = 0;
    double sampleRate = 0;
    AudioSampleEncoding encoding;

    std::int64_t frameBytes() const { return channels * encoding.bytes; }
};

void describe(NativeFile &file, const std::string &name, const WrappedFormat &format) {
    AudioFileContents &contents = file.contents;
    contents.format = {.container = AudioContainer::coreAudio,
                       .encoding = std::nullopt,
                       .sampleRate = format.sampleRate,
                       .typeName = name,
                       .bitsDescription = format.encoding.description(),
                       .fileExtension = ""};
    contents.coreAudioSettings = {{formatIdentifierKey, "lpcm"}, {bitDepthKey, std::to_string(format.encoding.validBits)}};
    contents.buffer = AudioEditorBuffer(format.channels, std::max<std::int64_t>(std::llround(format.sampleRate), 1));
    contents.wrapping->encoding = format.encoding;
    contents.wrapping->channels = format.channels;
}

// What is no chunk, and is kept as it is.
Part keptPart(Bytes bytes) {
    return {.chunk = {.id = "", .data = std::move(bytes), .fields = {}}, .header = {}, .pad = {}, .isBare = false, .sizes = {}};
}

struct Found {
    std::string id;
    std::int64_t at = 0, payload = 0, size = 0;  // the header's place, the payload's place and size
    bool isOpen = false;
};

// Whether the samples have to be ours to read.
enum class Samples { plain, packed };

class ChunkedWrapping {
public:
    ChunkedWrapping(const SourceReader &reader, const WrappingDialect &dialect, Samples samples)
        : reader_(reader), dialect_(dialect), isPacked_(samples == Samples::packed) {
        wrapping().kind = dialect.kind;
        wrapping().alignment = dialect.alignment;
        wrapping().headerBytes = dialect.countedHeader;
    }

    std::optional<NativeFile> find() {
        addHeader();
        std::int64_t at = dialect_.first;
        for (std::optional<Found> chunk; (chunk = chunkAt(at));) {
            if (wrapping().parts.size() > mostParts || !add(*chunk)) return std::nullopt;
            at = endOf(*chunk);
        }
        if (!format_ || !areChannels(format_->channels) || audioBytes_ < 0) return std::nullopt;
        addTrailing(at);
        describe(file_, isPacked_ ? name_ : dialect_.name, *format_);
        if (!isPacked_) countFrames();
        return std::move(file_);
    }

private:
    SampleWrapping &wrapping() {
        if (!file_.contents.wrapping) file_.contents.wrapping.emplace();
        return *file_.contents.wrapping;
    }
    bool isCaf() const { return dialect_.kind == Kind::caf; }
    std::int64_t aligned(std::int64_t at) const {
        return (at + dialect_.alignment - 1) / dialect_.alignment * dialect_.alignment;
    }
    std::int64_t endOf(const Found &chunk) const {
        const std::int64_t held = std::min(chunk.size, reader_.size() - chunk.payload);
        return std::min(aligned(chunk.payload + held), reader_.size());
    }

    void addHeader() {
        Part header{.chunk = {}, .header = reader_.bytes(0, dialect_.first), .pad = {}, .isBare = true, .sizes = {}};
        const std::size_t width = dialect_.sizeBytes, offset = dialect_.formSize;
        if (offset != 0 && !isOpenSize(sizeAt(header.header, offset, width, dialect_.order), width))
            header.sizes.push_back({std::uint32_t(offset), int(width), Size::Of::file, -dialect_.formLess});
        wrapping().parts.push_back(std::move(header));
    }

    // Nothing where no chunk is: what stands there is kept as it is. Only the samples may be cut off, or go on to the end.
    std::optional<Found> chunkAt(std::int64_t at) const {
        if (reader_.size() - at < dialect_.header()) return std::nullopt;
        const Bytes header = reader_.bytes(at, dialect_.header());
        Found chunk{wrappedId(header), at, at + dialect_.header(), 0, false};
        chunk.size = sizeAt(header, dialect_.idBytes, dialect_.sizeBytes, dialect_.order);
        chunk.isOpen = isOpenSize(chunk.size, dialect_.sizeBytes);
        const std::int64_t left = reader_.size() - chunk.payload;
        const bool isAudio = chunk.id == dialect_.audioId;
        if (isAudio && audioBytes_ >= 0) return chunk;  // which is refused
        if (chunk.isOpen ? !isAudio : chunk.size < dialect_.countedHeader) return std::nullopt;
        chunk.size = chunk.isOpen ? openSize(left) : chunk.size - dialect_.countedHeader;
        if (isAudio && chunk.size == 0 && isUnfinished(chunk.payload)) chunk.size = left;
        if (chunk.size < 0 || (chunk.size > left && !isAudio)) return std::nullopt;
        return chunk;
    }

    // Whether samples stand at a place of which nobody came back to tell the size: what makes no frame is none.
    bool isUnfinished(std::int64_t at) const {
        const bool isFrame = !format_ || reader_.size() - at >= format_->frameBytes();
        return !isCaf() && isFrame && !areChunksFrom(at);
    }

    // Whether chunks follow up to the end, or nothing: samples look otherwise.
    bool areChunksFrom(std::int64_t at) const {
        const auto isPlain = [](unsigned char c) { return c >= ' ' && c < 0x7F; };
        for (std::size_t count = 0; reader_.size() - at >= dialect_.header(); ++count) {
            const Bytes header = reader_.bytes(at, dialect_.header());
            const std::int64_t size = sizeAt(header, dialect_.idBytes, dialect_.sizeBytes, dialect_.order);
            const std::int64_t left = reader_.size() - at - dialect_.header() + dialect_.countedHeader;
            if (size < dialect_.countedHeader || size > left || !std::ranges::all_of(idAt(header, 0), isPlain)) return false;
            at = aligned(at + dialect_.header() - dialect_.countedHeader + size);
            if (count > mostParts) return false;
        }
        return reader_.size() - at < dialect_.alignment;
    }

    std::int64_t openSize(std::int64_t left) const { return isCaf() || sizes64_ <= 0 ? left : dataSize_; }

    // W64 names some chunks by numbers that have nothing of a name.
    std::string wrappedId(std::span<const std::byte> header) const {
        constexpr std::uint32_t markers = 0xABF76256;
        const bool isMarkers = dialect_.kind == Kind::w64 && u32At(header, 0, std::endian::little) == markers;
        return isMarkers ? "marker" : idAt(header, 0);
    }

    bool add(const Found &chunk) {
        if (chunk.id == dialect_.audioId) return audioBytes_ < 0 && addAudio(chunk);
        if (isStaleChunkId(chunk.id) || (isCaf() && chunk.id == "ovvw")) return true;
        Part part{
            .chunk = {.id = chunk.id, .data = reader_.bytes(chunk.payload, chunk.size), .fields = {}, .sizeInFile = chunk.size},
            .header = reader_.bytes(chunk.at, dialect_.header()),
            .pad = reader_.bytes(chunk.payload + chunk.size, endOf(chunk) - chunk.payload - chunk.size),
            .isBare = false,
            .sizes = {}};
        part.isBare = readDescription(part);
        // Markers of W64 files stand in a way that nobody has told, but for those of WAV files.
        static constexpr std::array<std::string_view, 5> positions{"marker", "list", "LIST", "cue ", "smpl"};
        const bool isTold = dialect_.kind != Kind::w64 || isInFormView(wrapping(), part);
        if (!isTold && std::ranges::find(positions, chunk.id) != positions.end()) wrapping().countsFrames = true;
        if (chunk.id == "chna") wrapping().namesChannels = true;
        wrapping().parts.push_back(std::move(part));
        return true;
    }

    // Takes what a chunk says of the samples; false when it says nothing of them.
    bool readDescription(Part &part) {
        const std::string &id = part.chunk.id;
        const std::span<const std::byte> payload = part.chunk.data;
        const auto header = std::uint32_t(dialect_.header());
        if (isCaf()) {
            if (id == "desc" && payload.size() >= cafDescription && !format_) readDesc(payload);
            return id == "desc" || id == "chan";
        }
        if (id == "fmt " && payload.size() >= FmtChunk::plainSize && !format_) readFormat(payload);
        if (id == "COMM" && payload.size() >= CommChunk::aifcSize) takePacked(idAt(payload, CommChunk::compression));
        if (id == "fact" && payload.size() >= dialect_.sizeBytes && isFirst(id)) {
            const std::int64_t told = sizeAt(payload, 0, dialect_.sizeBytes, dialect_.order);
            if (isOpenSize(told, dialect_.sizeBytes)) return true;
            framesTold_ = told;
            part.sizes.push_back({header, int(dialect_.sizeBytes), Size::Of::frames, 0});
        }
        if (id == "ds64" && payload.size() >= 24 && isFirst(id)) readSizes(part);
        return id == "fmt " || id == "fact" || id == "ds64";
    }

    bool isFirst(const std::string &id) {
        return std::ranges::none_of(wrapping().parts, [&](const Part &part) { return part.chunk.id == id; });
    }

    void readSizes(Part &part) {
        const auto header = std::uint32_t(dialect_.header());
        sizes64_ = sizeAt(part.chunk.data, 0, 8, dialect_.order);
        dataSize_ = sizeAt(part.chunk.data, 8, 8, dialect_.order);
        framesTold_ = sizeAt(part.chunk.data, 16, 8, dialect_.order);
        part.sizes = {
            {header, 8, Size::Of::file, -8}, {header + 8, 8, Size::Of::samples, 0}, {header + 16, 8, Size::Of::frames, 0}};
    }

    void readFormat(std::span<const std::byte> fmt) {
        if (isPacked_) return takePackedWav(wavFormatTag(fmt, dialect_.order));
        const WavFormat format = wavFormat(fmt, dialect_.order);
        format_ = {format.channels, double(format.sampleRate), format.encoding};
        format_->encoding.bigEndian = dialect_.order == std::endian::big;
    }

    void takePackedWav(unsigned tag) { takePackedAs(packedWavName(tag), " format " + std::to_string(tag)); }
    void takePacked(const std::string &type) { takePackedAs(packedName(type), " '" + displayText(type) + "'"); }

    // Either stands by the name of the kind of file.
    void takePackedAs(const std::string &before, const std::string &behind) {
        name_ = before.empty() ? dialect_.name + behind : before + " " + dialect_.name;
        format_ = {1, 1, {}};
    }

    // A description of uncompressed samples: a frame a packet, with all bits of its bytes. The first is the file's, also where
    // it says something else.
    void readDesc(std::span<const std::byte> desc) {
        constexpr auto order = std::endian::big;
        constexpr std::uint32_t isFloat = 1, isLittle = 2, widest = 8;
        const std::uint32_t flags = u32At(desc, 12, order), packet = u32At(desc, 16, order), channels = u32At(desc, 24, order);
        const double rate = std::bit_cast<double>(wordAt<std::uint64_t>(desc, 0, order));
        if (isPacked_) return takePacked(idAt(desc, 8));
        format_.emplace();
        const bool isPlain = idAt(desc, 8) == "lpcm" && u32At(desc, 20, order) == 1 && channels > 0 && packet % channels == 0;
        if (!isPlain || packet / channels > widest || !(rate > 0 && rate < 0x1p53)) return;
        const int bytes = int(packet / channels);
        const bool isReal = flags & isFloat, isOurs = isReal ? bytes == 4 || bytes == 8 : bytes >= 1 && bytes <= 4;
        if (!isOurs || u32At(desc, 28, order) != 8 * unsigned(bytes)) return;
        format_ = {channels,
                   rate,
                   {.kind = isReal ? AudioSampleEncoding::Kind::floating : AudioSampleEncoding::Kind::integer,
                    .bytes = bytes,
                    .validBits = bytes * 8,
                    .bigEndian = (flags & isLittle) == 0}};
    }

    // In CAF a count of edits stands before the samples.
    bool addAudio(const Found &chunk) {
        const std::int64_t counted = isCaf() ? 4 : 0, header = dialect_.header() + counted;
        if (chunk.size < counted || header > reader_.size() - chunk.at) return false;
        Part part{.chunk = {.id = chunk.id, .data = {}, .fields = {}, .sizeInFile = chunk.size},
                  .header = reader_.bytes(chunk.at, header),
                  .pad = {},
                  .isBare = true,
                  .sizes = {}};
        // Where nobody else tells it, it is told from now on: chunks may come to stand behind.
        const bool isToldElsewhere = isCaf() || sizes64_ > 0;
        if (!chunk.isOpen || !isToldElsewhere)
            part.sizes.push_back({std::uint32_t(dialect_.idBytes), int(dialect_.sizeBytes), Size::Of::samples,
                                  dialect_.countedHeader + counted});
        file_.audio.start = chunk.at + header;
        const std::int64_t left = reader_.size() - file_.audio.start;
        audioBytes_ = std::min(chunk.size - counted, left);
        missingBytes_ = chunk.size - counted - audioBytes_;
        isLast_ = endOf(chunk) == reader_.size();
        isUnpadded_ = file_.audio.start + audioBytes_ == reader_.size();
        wrapping().parts.push_back(std::move(part));
        wrapping().samplesBefore = wrapping().parts.size();
        return true;
    }

    void addTrailing(std::int64_t at) {
        if (at >= reader_.size()) return;
        wrapping().parts.push_back(keptPart(reader_.bytes(at, reader_.size() - at)));
        isLast_ = false;
    }

    // Some programs count the zeros behind the samples among them, which the number of frames tells. Where the samples are the
    // last, in W64 files readers take such zeros for samples, and elsewhere some writers leave them out.
    void countFrames() {
        const std::int64_t frameBytes = format_->frameBytes();
        std::int64_t frames = audioBytes_ / frameBytes;
        const std::int64_t more = framesTold_ >= 0 && framesTold_ < frames ? audioBytes_ - framesTold_ * frameBytes : 0;
        if (more > 0 && more < dialect_.alignment) frames = framesTold_;
        file_.audio.frames = wrapping().frames = frames;
        file_.contents.missingFrames = (audioBytes_ + missingBytes_) / frameBytes - audioBytes_ / frameBytes;
        const bool leavesOut = dialect_.alignment == 8 || (audioBytes_ % 2 != 0 && isUnpadded_);
        if (isLast_ && leavesOut) wrapping().alignment = 1;
    }

    const SourceReader &reader_;
    const WrappingDialect &dialect_;
    const bool isPacked_;
    std::string name_;  // of a file whose samples are packed
    NativeFile file_;
    std::optional<WrappedFormat> format_;
    std::int64_t sizes64_ = 0, dataSize_ = 0, framesTold_ = -1;  // as the file says
    std::int64_t audioBytes_ = -1, missingBytes_ = 0;
    bool isLast_ = false, isUnpadded_ = false;  // the samples stand at the end, with no zeros behind
};

std::optional<AudioSampleEncoding> auEncoding(std::uint32_t number) {
    constexpr auto floating = AudioSampleEncoding::Kind::floating;
    switch (number) {
        case 2:
        case 3:
        case 4:
        case 5:
            return AudioSampleEncoding{.bytes = int(number) - 1, .validBits = 8 * (int(number) - 1), .bigEndian = true};
        case 6:
            return AudioSampleEncoding{.kind = floating, .bytes = 4, .validBits = 32, .bigEndian = true};
        case 7:
            return AudioSampleEncoding{.kind = floating, .bytes = 8, .validBits = 64, .bigEndian = true};
        default:
            return std::nullopt;
    }
}

// A header with a note of any length, samples, and perhaps something behind them.
std::optional<NativeFile> findAu(const SourceReader &reader, Samples samples) {
    constexpr auto order = std::endian::big;
    constexpr std::int64_t plainHeader = 24;
    if (reader.size() < plainHeader) return std::nullopt;
    const Bytes head = reader.bytes(0, plainHeader);
    const std::int64_t start = u32At(head, 4, order), channels = u32At(head, 20, order), declared = u32At(head, 8, order);
    const std::int64_t rate = u32At(head, 16, order), left = reader.size() - start;
    const auto own = auEncoding(u32At(head, 12, order));
    if ((!own && samples == Samples::plain) || start < plainHeader || left < 0 || rate == 0) return std::nullopt;
    if (!areChannels(channels)) return std::nullopt;
    const AudioSampleEncoding encoding = own.value_or(AudioSampleEncoding{.bytes = 1});
    const bool isOpen = isOpenSize(declared, 4);
    const std::int64_t bytes = isOpen ? left : std::min(declared, left), frameBytes = channels * encoding.bytes;
    NativeFile file;
    SampleWrapping &wrapping = file.contents.wrapping.emplace();
    wrapping.samplesBefore = 1;
    wrapping.parts.push_back(keptPart(reader.bytes(plainHeader, start - plainHeader)));
    wrapping.parts[0].header = head;
    wrapping.parts[0].isBare = true;
    if (!isOpen) wrapping.parts[0].sizes = {{8, 4, Size::Of::samples, 0}};
    if (bytes < left) wrapping.parts.push_back(keptPart(reader.bytes(start + bytes, left - bytes)));
    const std::string packed = own ? "" : packedAuName(u32At(head, 12, order));
    describe(file, packed.empty() ? "AU" : packed + " AU", {channels, double(rate), encoding});
    file.audio = {start, bytes / frameBytes};
    wrapping.frames = file.audio.frames;
    file.contents.missingFrames = isLeftOpen(declared) ? 0 : declared / frameBytes - wrapping.frames;
    return file;
}

std::optional<NativeFile> find(const SourceReader &reader, Samples samples) {
    constexpr std::int64_t magicBytes = 4, formAt = 8;
    if (reader.size() < formAt) return std::nullopt;
    const std::string magic = idAt(reader.bytes(0, magicBytes), 0);
    if (magic == ".snd") return findAu(reader, samples);
    const WrappingDialect *const dialect = dialectOf(magic);
    if (!dialect || reader.size() < dialect->first) return std::nullopt;
    const bool isNative = dialect->kind == Kind::riff || dialect->kind == Kind::aifc;
    if (isNative && samples == Samples::plain) return std::nullopt;
    const std::string_view form = dialect->kind == Kind::aifc ? "AIFC" : "WAVE";
    if (dialect->first == 12 && idAt(reader.bytes(formAt, magicBytes), 0) != form) return std::nullopt;
    return ChunkedWrapping(reader, *dialect, samples).find();
}

// Of samples in blocks, some programs count a cue from the block that it is in: then it is told from the start, as others do.
void countFromStart(AudioFileContents &wav) {
    constexpr auto order = std::endian::little;
    constexpr std::size_t blockFrames = 18;
    const AudioFileChunk *const fmt = firstChunk(wav, "fmt ");
    if (!fmt || fmt->data.size() < FmtChunk::plainSize) return;
    const std::uint32_t align = u16At(fmt->data, FmtChunk::blockAlign, order);
    const std::uint32_t frames = fmt->data.size() >= blockFrames + 2 ? u16At(fmt->data, blockFrames, order) : 1;
    for (AudioFileChunk &chunk : wav.chunks) {
        if (chunk.id != "cue " || align == 0) continue;
        for (std::size_t at = CueChunk::header; at + CueChunk::record <= chunk.data.size(); at += CueChunk::record) {
            const std::uint32_t block = u32At(chunk.data, at + CueChunk::blockStart, order) / align;
            const std::uint32_t offset = u32At(chunk.data, at + CueChunk::sampleOffset, order);
            if (block == 0 || offset >= frames) continue;
            putWord(std::span(chunk.data), at + CueChunk::sampleOffset, order, block * frames + offset);
            putWord(std::span(chunk.data), at + CueChunk::blockStart, order, std::uint32_t(0));
        }
    }
}

void collectPositions(AudioFileContents &contents, SampleWrapping &wrapping) {
    if (wrapping.kind == Kind::caf) return collectCafPositions(contents, wrapping);
    if (!wrapping.isFormLike()) return;
    AudioFileContents view = formView(contents, wrapping);
    if (!contents.wrapping && wrapping.kind != Kind::aifc) countFromStart(view);
    (wrapping.kind == Kind::aifc ? collectAiffPositions : collectWavPositions)(view, wrapping.frames);
    takeFormView(contents, wrapping, std::move(view));
}

}  // namespace

std::optional<NativeFile> findWrapping(const SourceReader &reader) {
    auto file = find(reader, Samples::plain);
    if (file) collectPositions(file->contents, *file->contents.wrapping);
    return file;
}

// A decoder that knows the encoding may have named it; names in small letters are for programs.
void keepAroundPacked(AudioFileContents &contents, std::int64_t frames, const ByteSource &source) try {
    auto found = find(SourceReader(source), Samples::packed);
    if (!found) return;
    SampleWrapping &around = contents.tags.around.emplace(std::move(*found->contents.wrapping));
    around.channels = contents.buffer.channels();
    around.frames = frames;
    collectPositions(contents, around);
    const WrappingDialect *const dialect = dialectOf(around.kind);
    std::string &name = contents.format.typeName;
    const bool isNamed = name != (dialect ? dialect->name : "AU") && std::isupper(static_cast<unsigned char>(name[0]));
    if (!isNamed) name = found->contents.format.typeName;
} catch (const AudioFileError &) {
    // It says too little of itself.
}

}  // namespace kiv
