#include "Audio/Files/WrappingDescription.h"

#include <bit>
#include <utility>

#include "Audio/Files/AiffMetadata.h"
#include "Audio/Files/ByteFields.h"
#include "Audio/Files/FileFormats.h"
#include "Audio/Files/PackedNames.h"
#include "Audio/Files/WavMetadata.h"
#include "Audio/Files/WavReader.h"

namespace kiv {
namespace {

using Part = SampleWrapping::Part;
using Size = SampleWrapping::Size;

constexpr std::size_t sizesBytes = 24;  // of "ds64", without its table

}  // namespace

bool WrappingDescription::read(Part &part) {
    const std::string &id = part.chunk.id;
    const std::span<const std::byte> payload = part.chunk.data;
    if (dialect_.kind == SampleWrapping::Kind::caf) return readCaf(part);
    if (id == "fmt " && payload.size() >= FmtChunk::plainSize && !format_) readFormat(payload);
    if (id == "COMM" && payload.size() >= CommChunk::aifcSize) takePacked(idAt(payload, CommChunk::compression));
    if (id == "fact" && !std::exchange(hasFact_, true)) readFact(part);
    if (id == "ds64" && !std::exchange(hasSizes_, true)) readSizes(part);
    return id == "fmt " || id == "fact" || id == "ds64";
}

bool WrappingDescription::readCaf(const Part &part) {
    const std::string &id = part.chunk.id;
    if (id == "desc" && part.chunk.data.size() >= cafDescription && !format_) readDesc(part.chunk.data);
    return id == "desc" || id == "chan";
}

void WrappingDescription::readFact(Part &part) {
    const std::size_t width = dialect_.sizeBytes;
    if (part.chunk.data.size() < width) return;
    const std::int64_t told = sizeAt(part.chunk.data, 0, width, dialect_.order);
    if (isOpenSize(told, width)) return;
    frames_ = told;
    part.sizes.push_back({std::uint32_t(dialect_.header()), int(width), Size::Of::frames, 0});
}

void WrappingDescription::readSizes(Part &part) {
    if (part.chunk.data.size() < sizesBytes) return;
    const auto header = std::uint32_t(dialect_.header());
    fileBytes_ = sizeAt(part.chunk.data, 0, 8, dialect_.order);
    sampleBytes_ = sizeAt(part.chunk.data, 8, 8, dialect_.order);
    frames_ = sizeAt(part.chunk.data, 16, 8, dialect_.order);
    part.sizes = {
        {header, 8, Size::Of::file, -8}, {header + 8, 8, Size::Of::samples, 0}, {header + 16, 8, Size::Of::frames, 0}};
}

void WrappingDescription::readFormat(std::span<const std::byte> fmt) {
    if (isPacked_) {
        const unsigned tag = wavFormatTag(fmt, dialect_.order);
        return takePackedAs(packedWavName(tag), " format " + std::to_string(tag));
    }
    const WavFormat format = wavFormat(fmt, dialect_.order);
    format_ = {format.channels, double(format.sampleRate), format.encoding};
    format_->encoding.bigEndian = dialect_.order == std::endian::big;
}

void WrappingDescription::takePacked(const std::string &type) {
    takePackedAs(packedName(type), " '" + displayText(type) + "'");
}

// Either stands by the name of the kind of file.
void WrappingDescription::takePackedAs(const std::string &before, const std::string &behind) {
    packedName_ = before.empty() ? dialect_.name + behind : before + " " + dialect_.name;
    format_ = {1, 1, {}};
}

// A description of uncompressed samples: a frame a packet, with all bits of its bytes. The first is the file's, also where
// it says something else.
void WrappingDescription::readDesc(std::span<const std::byte> desc) {
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

}  // namespace kiv
