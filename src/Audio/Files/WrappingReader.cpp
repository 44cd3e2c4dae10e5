#include "Audio/Files/WrappingReader.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "Audio/Files/AiffMetadata.h"
#include "Audio/Files/ByteFields.h"
#include "Audio/Files/CafChunks.h"
#include "Audio/Files/SampleWrapping.h"
#include "Audio/Files/WavMetadata.h"
#include "Audio/Files/WrappingChunks.h"
#include "Audio/Files/WrappingDialects.h"

namespace kiv {
namespace {

using Kind = SampleWrapping::Kind;
using Part = SampleWrapping::Part;
using Size = SampleWrapping::Size;

// More than any real file has; each takes many times its header in memory.
constexpr std::size_t mostParts = 4096;

struct Found {
    std::string id;
    std::int64_t at = 0, payload = 0, size = 0;  // the header's place, the payload's place and size
    bool isOpen = false;
};

class ChunkedWrapping {
public:
    ChunkedWrapping(const SourceReader &reader, const WrappingDialect &dialect, WrappedSamples samples)
        : reader_(reader), dialect_(dialect), isPacked_(samples == WrappedSamples::packed), description_(dialect, samples) {
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
        if (!format() || !areChannels(format()->channels) || audioBytes_ < 0) return std::nullopt;
        addTrailing(at);
        describeWrapped(file_.contents, description_.typeName(), *format());
        if (!isPacked_) countFrames();
        return std::move(file_);
    }

private:
    SampleWrapping &wrapping() {
        if (!file_.contents.wrapping) file_.contents.wrapping.emplace();
        return *file_.contents.wrapping;
    }
    const std::optional<WrappedFormat> &format() const { return description_.format(); }
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
        if (isAudio && chunk.size == 0 && dialect_.leavesZero && isUnfinished(chunk.payload)) chunk.size = left;
        if (chunk.size < 0 || (chunk.size > left && !isAudio)) return std::nullopt;
        return chunk;
    }

    // Whether samples stand at a place of which nobody came back to tell the size: what makes no frame is none.
    bool isUnfinished(std::int64_t at) const {
        const bool isFrame = !format() || reader_.size() - at >= format()->frameBytes();
        return isFrame && !areChunksFrom(at);
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

    std::int64_t openSize(std::int64_t left) const { return description_.tellsSizes() ? description_.sampleBytes() : left; }

    // W64 names some chunks by numbers that have nothing of a name.
    std::string wrappedId(std::span<const std::byte> header) const {
        std::string id = idAt(header, 0);
        return id == dialect_.markersId ? "marker" : id;
    }

    bool add(const Found &chunk) {
        if (chunk.id == dialect_.audioId) return audioBytes_ < 0 && addAudio(chunk);
        if (isStaleChunkId(chunk.id) || chunk.id == dialect_.staleId) return true;
        Part part{
            .chunk = {.id = chunk.id, .data = reader_.bytes(chunk.payload, chunk.size), .fields = {}, .sizeInFile = chunk.size},
            .header = reader_.bytes(chunk.at, dialect_.header()),
            .pad = reader_.bytes(chunk.payload + chunk.size, endOf(chunk) - chunk.payload - chunk.size),
            .isBare = false,
            .sizes = {}};
        part.isBare = description_.read(part);
        // Markers of W64 files stand in a way that nobody has told, but for those of WAV files.
        static constexpr std::array<std::string_view, 5> positions{"marker", "list", "LIST", "cue ", "smpl"};
        if (!isInFormView(wrapping(), part) && std::ranges::find(positions, chunk.id) != positions.end())
            wrapping().countsFrames = true;
        if (chunk.id == "chna") wrapping().namesChannels = true;
        wrapping().parts.push_back(std::move(part));
        return true;
    }

    bool addAudio(const Found &chunk) {
        const std::int64_t counted = dialect_.beforeSamples, header = dialect_.header() + counted;
        if (chunk.size < counted || header > reader_.size() - chunk.at) return false;
        Part part{.chunk = {.id = chunk.id, .data = {}, .fields = {}, .sizeInFile = chunk.size},
                  .header = reader_.bytes(chunk.at, header),
                  .pad = {},
                  .isBare = true,
                  .sizes = {}};
        // Where nobody else tells it, it is told from now on: chunks may come to stand behind.
        const bool staysOpen = dialect_.staysOpen || description_.tellsSizes();
        if (!chunk.isOpen || !staysOpen)
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
        const std::int64_t frameBytes = format()->frameBytes(), framesTold = description_.frames();
        std::int64_t frames = audioBytes_ / frameBytes;
        const std::int64_t more = framesTold >= 0 && framesTold < frames ? audioBytes_ - framesTold * frameBytes : 0;
        if (more > 0 && more < dialect_.alignment) frames = framesTold;
        file_.audio.frames = wrapping().frames = frames;
        file_.contents.missingFrames = (audioBytes_ + missingBytes_) / frameBytes - audioBytes_ / frameBytes;
        const bool leavesOut = dialect_.alignment == 8 || (audioBytes_ % 2 != 0 && isUnpadded_);
        if (isLast_ && leavesOut) wrapping().alignment = 1;
    }

    const SourceReader &reader_;
    const WrappingDialect &dialect_;
    const bool isPacked_;
    WrappingDescription description_;
    NativeFile file_;
    std::int64_t audioBytes_ = -1, missingBytes_ = 0;
    bool isLast_ = false, isUnpadded_ = false;  // the samples stand at the end, with no zeros behind
};

}  // namespace

void describeWrapped(AudioFileContents &contents, const std::string &typeName, const WrappedFormat &format) {
    contents.format = {.container = AudioContainer::coreAudio,
                       .encoding = std::nullopt,
                       .sampleRate = format.sampleRate,
                       .typeName = typeName,
                       .bitsDescription = format.encoding.description(),
                       .fileExtension = ""};
    contents.coreAudioSettings = {{formatIdentifierKey, "lpcm"}, {bitDepthKey, std::to_string(format.encoding.validBits)}};
    contents.buffer = AudioEditorBuffer(format.channels, std::max<std::int64_t>(std::llround(format.sampleRate), 1));
    contents.wrapping->encoding = format.encoding;
    contents.wrapping->channels = format.channels;
}

Part keptPart(Bytes bytes) {
    return {.chunk = {.id = "", .data = std::move(bytes), .fields = {}}, .header = {}, .pad = {}, .isBare = false, .sizes = {}};
}

std::optional<NativeFile> takeApart(const SourceReader &reader, WrappedSamples samples) {
    constexpr std::int64_t magicBytes = 4, formAt = 8;
    if (reader.size() < formAt) return std::nullopt;
    const std::string magic = idAt(reader.bytes(0, magicBytes), 0);
    if (magic == ".snd") return takeAuApart(reader, samples);
    const WrappingDialect *const dialect = dialectOf(magic);
    if (!dialect || reader.size() < dialect->first) return std::nullopt;
    const bool isNative = dialect->kind == Kind::riff || dialect->kind == Kind::aifc;
    if (isNative && samples == WrappedSamples::plain) return std::nullopt;
    if (!dialect->form.empty() && idAt(reader.bytes(formAt, magicBytes), 0) != dialect->form) return std::nullopt;
    return ChunkedWrapping(reader, *dialect, samples).find();
}

void collectPositions(AudioFileContents &contents, SampleWrapping &wrapping) {
    if (wrapping.kind == Kind::caf) return collectCafPositions(contents, wrapping);
    if (!wrapping.isFormLike()) return;
    AudioFileContents view = formView(contents, wrapping);
    (wrapping.kind == Kind::aifc ? collectAiffPositions : collectWavPositions)(view, wrapping.frames);
    takeFormView(contents, wrapping, std::move(view));
}

std::optional<NativeFile> findWrapping(const SourceReader &reader) {
    auto file = takeApart(reader, WrappedSamples::plain);
    if (file) collectPositions(file->contents, *file->contents.wrapping);
    return file;
}

}  // namespace kiv
