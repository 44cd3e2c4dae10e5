#include "Audio/Files/WavReader.h"

#include <algorithm>
#include <string>

#include "Audio/Files/AudioFileError.h"
#include "Audio/Files/ByteFields.h"
#include "Audio/Files/ChunkScan.h"
#include "Audio/Files/FileFormats.h"
#include "Audio/Files/PackedNames.h"
#include "Audio/Files/SampleDecoding.h"
#include "Audio/Files/WavMetadata.h"

namespace kiv {
namespace {

using namespace FmtChunk;

constexpr auto fileOrder = std::endian::little;

// The block align says how many bytes a sample takes in the file. Where it is no multiple of the channels, only the number of
// bits is left to go by.
int bytesPerSample(unsigned blockAlign, unsigned channels, unsigned bits) {
    return int(blockAlign != 0 && blockAlign % channels == 0 ? blockAlign / channels : (bits + 7) / 8);
}

AudioSampleEncoding encodingOf(unsigned tag, int bytes, unsigned bits, unsigned validBits) {
    using Kind = AudioSampleEncoding::Kind;
    if (tag == floatTag && (bytes == 4 || bytes == 8)) return {.kind = Kind::floating, .bytes = bytes, .validBits = bytes * 8};
    if (tag == integerTag && bytes >= 1 && bytes <= 4)
        return {.bytes = bytes, .validBits = std::min(bytes * 8, int(validBits)), .unsigned8 = bytes == 1};
    const std::string name = packedWavName(tag);
    throw AudioFileError::unsupported("WAV format " + std::to_string(tag) + (name.empty() ? "" : " (" + name + ")") + ", " +
                                      std::to_string(bits) + " bits");
}

// The tag in front of a sub-format's GUID. In big-endian files some programs swap the whole first number of it, and some
// nothing.
unsigned subFormatTag(std::span<const std::byte> fmt, std::endian order) {
    const unsigned tag = u16At(fmt, subFormat, order);
    if (order == std::endian::little || tag == integerTag || tag == floatTag) return tag;
    return tag == 0 ? u16At(fmt, subFormat + 2, order) : u16At(fmt, subFormat, std::endian::little);
}

WavFormat readFormat(const SourceReader &reader, const RawChunk *fmt, const RawChunk *audio) {
    if (!fmt || fmt->size < std::int64_t(plainSize)) throw AudioFileError::unreadable("no format chunk");
    if (!audio) throw AudioFileError::unreadable("no audio data");
    return wavFormat(reader.bytes(fmt->start, std::min<std::int64_t>(fmt->size, extensibleSize)), fileOrder);
}

AudioFileFormat described(const WavFormat &format) {
    return {.container = AudioContainer::wav,
            .encoding = format.encoding,
            .sampleRate = double(format.sampleRate),
            .typeName = "WAV",
            .bitsDescription = format.encoding.description(),
            .fileExtension = "wav"};
}

bool isExtensible(std::span<const std::byte> fmt, std::endian order) {
    return u16At(fmt, formatTag, order) == extensibleTag && fmt.size() >= extensibleSize;
}

}  // namespace

unsigned wavFormatTag(std::span<const std::byte> fmt, std::endian order) {
    return isExtensible(fmt, order) ? subFormatTag(fmt, order) : u16At(fmt, formatTag, order);
}

WavFormat wavFormat(std::span<const std::byte> fmt, std::endian order) {
    const unsigned count = u16At(fmt, channels, order), bits = u16At(fmt, bitsPerSample, order);
    const std::uint32_t rate = u32At(fmt, sampleRate, order);
    const unsigned tag = wavFormatTag(fmt, order), stated = isExtensible(fmt, order) ? u16At(fmt, validBits, order) : 0;
    const unsigned meaningful = stated != 0 ? stated : bits;
    if (count == 0 || rate == 0) throw AudioFileError::unreadable("bad format chunk");
    const int bytes = bytesPerSample(u16At(fmt, blockAlign, order), count, bits);
    return {count, rate, encodingOf(tag, bytes, bits, meaningful)};
}

NativeFile readWav(const SourceReader &reader) {
    const ChunkScan scan = scanChunks(reader, fileOrder, "fmt ", "data");
    const RawChunk *const audio = scan.audioChunk();
    const WavFormat format = readFormat(reader, scan.first("fmt "), audio);
    const std::int64_t frameSize = format.encoding.bytes * format.channels, frames = audio->size / frameSize;

    AudioFileContents contents;
    contents.format = described(format);
    contents.missingFrames = (audio->size + audio->missing) / frameSize - frames;
    contents.chunks = readChunks(reader, scan);
    contents.trailing = reader.bytes(scan.end, reader.size() - scan.end);
    collectWavPositions(contents, frames);
    contents.buffer = AudioEditorBuffer(format.channels, std::int64_t(format.sampleRate));
    return {std::move(contents), {audio->start, frames}};
}

}  // namespace kiv
