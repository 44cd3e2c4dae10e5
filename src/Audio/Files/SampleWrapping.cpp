#include "Audio/Files/SampleWrapping.h"

#include <algorithm>
#include <array>

#include "Audio/Files/AudioFileError.h"
#include "Audio/Files/ByteFields.h"
#include "Audio/Files/FileFormats.h"
#include "Audio/Files/WrappingDialects.h"

namespace kiv {
namespace {

using Kind = SampleWrapping::Kind;
using Part = SampleWrapping::Part;
using Size = SampleWrapping::Size;

// W64 names chunks by sixteen bytes, the first four of which are the WAV name.
constexpr std::string_view w64Rest("\xF3\xAC\xD3\x11\x8C\xD1\x00\xC0\x4F\x8E\xDB\x8A", 12);

constexpr std::array dialects{
    WrappingDialect{.kind = Kind::rf64, .magic = "RF64", .name = "RF64", .order = std::endian::little},
    WrappingDialect{.kind = Kind::bw64, .magic = "BW64", .name = "BW64", .order = std::endian::little},
    WrappingDialect{.kind = Kind::rifx, .magic = "RIFX", .name = "RIFX", .order = std::endian::big},
    WrappingDialect{.kind = Kind::w64,
                    .magic = "riff",
                    .name = "W64",
                    .order = std::endian::little,
                    .idBytes = 16,
                    .sizeBytes = 8,
                    .first = 40,
                    .countedHeader = 24,
                    .alignment = 8,
                    .formSize = 16,
                    .formLess = 0,
                    .form = "",
                    .idRest = w64Rest,
                    .markersId = "\x56\x62\xF7\xAB"},
    WrappingDialect{.kind = Kind::caf,
                    .magic = "caff",
                    .name = "CAF",
                    .order = std::endian::big,
                    .sizeBytes = 8,
                    .first = 8,
                    .alignment = 1,
                    .formSize = 0,
                    .formLess = 0,
                    .form = "",
                    .beforeSamples = 4,
                    .leavesZero = false,
                    .staysOpen = true,
                    .staleId = "ovvw"},
    WrappingDialect{.kind = Kind::riff, .magic = "RIFF", .name = "WAV", .order = std::endian::little},
    WrappingDialect{
        .kind = Kind::aifc, .magic = "FORM", .name = "AIFC", .order = std::endian::big, .form = "AIFC", .audioId = "SSND"},
};

struct Amounts {
    std::int64_t samples = 0, frames = 0, file = 0;  // bytes, frames, bytes

    std::int64_t of(const Size &size) const {
        const std::int64_t amount = size.of == Size::Of::samples ? samples : size.of == Size::Of::frames ? frames : file;
        return amount + size.more;
    }
};

void putSize(Part &part, const Size &size, std::int64_t amount, const SampleWrapping &wrapping) {
    const auto order = wrapping.order();
    const bool isInHeader = size.offset < part.header.size();
    const auto bytes = std::span(isInHeader ? part.header : part.chunk.data);
    const std::size_t at = isInHeader ? size.offset : size.offset - part.header.size();
    if (size.bytes == 8) return putWord(bytes, at, order, std::uint64_t(amount));
    // RF64 files tell what is more than that in another place.
    constexpr std::int64_t largest = 0xFFFFFFFF;
    const bool hasRoom = amount < largest, isToldElsewhere = wrapping.kind == Kind::rf64 || wrapping.kind == Kind::bw64;
    if (!hasRoom && !isToldElsewhere) throw AudioFileError::tooLarge();
    putWord(bytes, at, order, std::uint32_t(std::min(amount, largest)));
}

void erasePart(SampleWrapping &wrapping, std::size_t index) {
    wrapping.parts.erase(wrapping.parts.begin() + std::ptrdiff_t(index));
    if (index < wrapping.samplesBefore) --wrapping.samplesBefore;
}

void eraseParts(SampleWrapping &wrapping, auto isGone) {
    for (std::size_t i = wrapping.parts.size(); i-- > 0;)
        if (isGone(wrapping.parts[i])) erasePart(wrapping, i);
}

void putChannels(Bytes &data, const SampleWrapping &wrapping, std::int64_t sampleRate) {
    const auto order = wrapping.order();
    const std::int64_t align = wrapping.channels * wrapping.encoding.bytes;
    const bool hasMask =
        data.size() >= FmtChunk::subFormat && u16At(data, FmtChunk::formatTag, order) == FmtChunk::extensibleTag;
    const auto fields = std::span(data);
    putWord(fields, FmtChunk::channels, order, std::uint16_t(wrapping.channels));
    putWord(fields, FmtChunk::byteRate, order, std::uint32_t(std::min<std::int64_t>(sampleRate * align, 0xFFFFFFFF)));
    putWord(fields, FmtChunk::blockAlign, order, std::uint16_t(align > 0xFFFF ? 0 : align));
    if (hasMask && std::popcount(u32At(data, FmtChunk::channelMask, order)) != wrapping.channels)
        putWord(fields, FmtChunk::channelMask, order, std::uint32_t(0));
}

// The part that says what the samples are: the first of its name that is long enough.
Part *describing(SampleWrapping &wrapping, std::string_view id, std::size_t least) {
    const auto found = std::ranges::find_if(
        wrapping.parts, [&](const Part &part) { return part.chunk.id == id && part.chunk.data.size() >= least; });
    return found == wrapping.parts.end() ? nullptr : &*found;
}

// What says how many channels there are says it of so many.
void takeChannels(SampleWrapping &wrapping, const AudioEditorBuffer &sound) {
    if (wrapping.channels == sound.channels()) return;
    constexpr std::size_t auChannels = 20, cafPacketBytes = 16, cafChannels = 24;
    constexpr auto order = std::endian::big;
    wrapping.channels = sound.channels();
    const auto count = std::uint32_t(sound.channels());
    if (wrapping.kind == Kind::au) putWord(std::span(wrapping.parts.at(0).header), auChannels, order, count);
    if (wrapping.isFormLike()) {
        if (Part *fmt = describing(wrapping, "fmt ", FmtChunk::plainSize))
            putChannels(fmt->chunk.data, wrapping, sound.sampleRate());
    } else if (Part *desc = describing(wrapping, "desc", cafDescription)) {
        putWord(std::span(desc->chunk.data), cafPacketBytes, order, count * std::uint32_t(wrapping.encoding.bytes));
        putWord(std::span(desc->chunk.data), cafChannels, order, count);
    }
    if (wrapping.kind == Kind::caf) eraseParts(wrapping, [](const Part &part) { return part.chunk.id == "chan"; });
}

}  // namespace

std::int64_t sizeAt(std::span<const std::byte> bytes, std::size_t offset, std::size_t width, std::endian order) {
    return width == 4 ? u32At(bytes, offset, order) : std::int64_t(wordAt<std::uint64_t>(bytes, offset, order));
}

const WrappingDialect *dialectOf(std::string_view magic) {
    const auto found = std::ranges::find(dialects, magic, &WrappingDialect::magic);
    return found == dialects.end() ? nullptr : &*found;
}

const WrappingDialect *dialectOf(Kind kind) {
    const auto found = std::ranges::find(dialects, kind, &WrappingDialect::kind);
    return found == dialects.end() ? nullptr : &*found;
}

std::endian SampleWrapping::order() const {
    const WrappingDialect *const dialect = dialectOf(kind);
    return dialect ? dialect->order : std::endian::big;
}

SampleWrapping bareWrapping(SampleWrapping wrapping) {
    eraseParts(wrapping, [](const Part &part) { return !part.isBare; });
    wrapping.countsFrames = wrapping.namesChannels = false;
    return wrapping;
}

std::int64_t paddingBehind(const SampleWrapping &wrapping, std::int64_t sampleBytes) {
    const std::int64_t over = (sampleBytes + wrapping.headerBytes) % wrapping.alignment;
    return over == 0 ? 0 : wrapping.alignment - over;
}

SampleWrapping wrappingFor(SampleWrapping wrapping, const AudioEditorBuffer &sound) {
    takeChannels(wrapping, sound);
    wrapping.frames = sound.frames();
    Amounts amounts{sound.frames() * sound.channels() * wrapping.encoding.bytes, sound.frames(), 0};
    amounts.file = amounts.samples + paddingBehind(wrapping, amounts.samples);
    for (const Part &part : wrapping.parts) amounts.file += std::int64_t(part.size());
    for (Part &part : wrapping.parts)
        for (const Size &size : part.sizes) putSize(part, size, amounts.of(size), wrapping);
    return wrapping;
}

}  // namespace kiv
