#include "Audio/Files/AiffReader.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

#include "Audio/Files/AiffMetadata.h"
#include "Audio/Files/AudioFileError.h"
#include "Audio/Files/ByteFields.h"
#include "Audio/Files/ChunkScan.h"
#include "Audio/Files/FileFormats.h"
#include "Audio/Files/SampleDecoding.h"

namespace kiv {
namespace {

using Kind = AudioSampleEncoding::Kind;

constexpr auto order = std::endian::big;

// Up to here whole hertz can be told apart. No sound has such a rate, but a damaged file may say so.
constexpr double highestWholeRate = 0x1p53;

struct AiffFormat {
    int channels = 0;
    std::int64_t frames = 0;  // as the file says; it may hold fewer
    double sampleRate = 0;
    AudioSampleEncoding encoding;
};

// An 80-bit IEEE 754 extended number: sign and 15-bit exponent, then a mantissa whose leading bit is stored. What is too large
// for a double comes out infinite, what is too small as 0.
double extendedAt(std::span<const std::byte> bytes, std::size_t offset) {
    const unsigned head = u16At(bytes, offset, order);
    const auto mantissa = wordAt<std::uint64_t>(bytes, offset + 2, order);
    const double magnitude = std::ldexp(double(mantissa), int(head & 0x7FFF) - 16446);
    return head & 0x8000 ? -magnitude : magnitude;
}

AudioSampleEncoding integerEncoding(int bits, std::endian byteOrder) {
    if (bits > 32) throw AudioFileError::unsupported("AIFF " + std::to_string(bits) + " bits");
    return {.bytes = (bits + 7) / 8, .validBits = bits, .bigEndian = byteOrder == std::endian::big};
}

AudioSampleEncoding floatEncoding(int bytes) {
    return {.kind = Kind::floating, .bytes = bytes, .validBits = 8 * bytes, .bigEndian = true};
}

AudioSampleEncoding compressedEncoding(const std::string &type, int sampleSize) {
    if (type == "NONE" || type == "twos") return integerEncoding(sampleSize, std::endian::big);
    if (type == "sowt") return integerEncoding(sampleSize, std::endian::little);
    if (type == "in24") return integerEncoding(24, std::endian::big);
    if (type == "in32") return integerEncoding(32, std::endian::big);
    if (type == "fl32" || type == "FL32") return floatEncoding(4);
    if (type == "fl64" || type == "FL64") return floatEncoding(8);
    throw AudioFileError::unsupported("AIFC '" + displayText(type) + "'");
}

AudioSampleEncoding encodingOf(std::span<const std::byte> comm, AudioContainer container, int sampleSize) {
    if (container == AudioContainer::aiff) return integerEncoding(sampleSize, std::endian::big);
    if (comm.size() < CommChunk::aifcSize) throw AudioFileError::unreadable("bad AIFC COMM chunk");
    return compressedEncoding(idAt(comm, CommChunk::compression), sampleSize);
}

// Channel count and sample size are signed in the file; a negative one is as bad as none. So is a rate that is no number.
AiffFormat parsed(std::span<const std::byte> comm, AudioContainer container) {
    const int channels = std::int16_t(u16At(comm, CommChunk::channels, order));
    const int sampleSize = std::int16_t(u16At(comm, CommChunk::sampleSize, order));
    const double rate = extendedAt(comm, CommChunk::sampleRate);
    const bool usable = channels > 0 && sampleSize > 0 && rate > 0 && std::isfinite(rate);
    if (!usable) throw AudioFileError::unreadable("bad COMM chunk");
    return {channels, u32At(comm, CommChunk::frames, order), rate, encodingOf(comm, container, sampleSize)};
}

AiffFormat readFormat(const SourceReader &reader, const RawChunk *comm, AudioContainer container) {
    if (!comm || comm->size < std::int64_t(CommChunk::plainSize)) throw AudioFileError::unreadable("no COMM chunk");
    return parsed(reader.bytes(comm->start, std::min<std::int64_t>(comm->size, CommChunk::aifcSize)), container);
}

AudioFileFormat described(const AiffFormat &format, AudioContainer container) {
    return {.container = container,
            .encoding = format.encoding,
            .sampleRate = format.sampleRate,
            .typeName = container == AudioContainer::aifc ? "AIFC" : "AIFF",
            .bitsDescription = format.encoding.description(),
            .fileExtension = container == AudioContainer::aifc ? "aifc" : "aiff"};
}

// No sound chunk, or one without its header, means no frames.
AudioPlace placeOf(const SourceReader &reader, const RawChunk *sound, const AiffFormat &format) {
    const auto header = std::int64_t(SsndChunk::header);
    if (!sound || sound->size < header) return {};
    std::array<std::byte, SsndChunk::header> fields;
    reader.read(sound->start, fields);
    const std::int64_t skipped = header + u32At(fields, SsndChunk::offset, order);
    const std::int64_t bytes = std::max<std::int64_t>(sound->size - skipped, 0);
    const std::int64_t held = bytes / (format.encoding.bytes * format.channels);
    return {sound->start + skipped, std::min(held, format.frames)};
}

}  // namespace

NativeFile readAiff(const SourceReader &reader, AudioContainer container) {
    const ChunkScan scan = scanChunks(reader, order, "COMM", "SSND");
    const AiffFormat format = readFormat(reader, scan.first("COMM"), container);
    const AudioPlace audio = placeOf(reader, scan.audioChunk(), format);

    AudioFileContents contents;
    contents.format = described(format, container);
    const bool isKnown = !isLeftOpen(format.frames * format.encoding.bytes * format.channels);
    contents.missingFrames = isKnown ? format.frames - audio.frames : 0;
    contents.chunks = readChunks(reader, scan);
    contents.trailing = reader.bytes(scan.end, reader.size() - scan.end);
    collectAiffPositions(contents, audio.frames);
    contents.buffer = AudioEditorBuffer(format.channels, std::llround(std::min(format.sampleRate, highestWholeRate)));
    return {std::move(contents), audio};
}

}  // namespace kiv
