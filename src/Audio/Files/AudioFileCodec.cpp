#include "Audio/Files/AudioFileCodec.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <new>
#include <system_error>

#include "Audio/Files/AiffReader.h"
#include "Audio/Files/ByteFields.h"
#include "Audio/Files/FlacMetadata.h"
#include "Audio/Files/SampleEncoding.h"
#include "Audio/Files/SampleResidue.h"
#include "Audio/Files/SampleWrapping.h"
#include "Audio/Files/SourceReader.h"
#include "Audio/Files/WavReader.h"
#include "Audio/Files/WrappingReader.h"

namespace kiv::AudioFileCodec {
namespace {

std::optional<NativeFile> readForm(const SourceReader &reader) {
    std::array<std::byte, 12> head;
    if (reader.size() < std::int64_t(head.size())) return std::nullopt;
    reader.read(0, head);
    const std::string group = idAt(head, 0), form = idAt(head, 8);
    if (group == "RIFF" && form == "WAVE") return readWav(reader);
    if (group == "FORM" && form == "AIFF") return readAiff(reader, AudioContainer::aiff);
    if (group == "FORM" && form == "AIFC") return readAiff(reader, AudioContainer::aifc);
    return std::nullopt;
}

std::int64_t fieldValue(const AudioFilePositionField &field, const std::vector<std::int64_t> &positions) {
    using Kind = AudioFilePositionField::Kind;
    const std::int64_t position = positions[field.index];
    if (field.kind == Kind::inclusiveEnd) return position - 1;
    if (field.kind == Kind::length) return position - (field.from < positions.size() ? positions[field.from] : 0);
    return position;
}

// What stands between two frames stays there as long as it is not moved.
void putReal(Bytes &data, std::size_t offset, std::endian order, std::int64_t position) {
    const double stored = std::bit_cast<double>(wordAt<std::uint64_t>(data, offset, order));
    if (std::floor(stored) != double(position))
        putWord(std::span(data), offset, order, std::bit_cast<std::uint64_t>(double(position)));
}

// Calls a reader. What is not for us to read is nothing; what else can go wrong becomes an error that names it.
template <class Read>
auto orNothing(Read read) -> decltype(read()) {
    try {
        return read();
    } catch (const AudioFileError &error) {
        if (error.kind() == AudioFileError::Case::unsupported) return std::nullopt;
        throw;
    } catch (const std::system_error &error) {
        throw AudioFileError::unreadable(error.what());
    } catch (const std::bad_alloc &) {
        throw AudioFileError::unreadable("there is not enough memory for it");
    }
}

using FileReader = std::optional<NativeFile> (*)(const SourceReader &reader);

std::optional<AudioFileContents> readWhole(const ByteSource &source, Progress *progress, FileReader read) {
    if (progress) progress->start(source.size());
    return orNothing([&]() -> std::optional<AudioFileContents> {
        const SourceReader reader(source, progress);
        auto file = read(reader);
        if (!file) return std::nullopt;
        AudioFileContents &contents = file->contents;
        const AudioSampleEncoding &encoding = contents.wrapping ? contents.wrapping->encoding : *contents.format.encoding;
        contents.buffer = readSamples(reader, file->audio, encoding, contents.buffer.channels(), contents.buffer.sampleRate());
        return std::move(contents);
    });
}

std::optional<AudioFileSummary> summarize(const ByteSource &source, FileReader read) {
    return orNothing([&]() -> std::optional<AudioFileSummary> {
        auto file = read(SourceReader(source));
        if (!file) return std::nullopt;
        return AudioFileSummary{std::move(file->contents), file->audio.frames};
    });
}

}  // namespace

std::optional<AudioFileContents> readNative(const ByteSource &source, Progress *progress) {
    return readWhole(source, progress, readForm);
}

std::optional<AudioFileSummary> summarizeNative(const ByteSource &source) { return summarize(source, readForm); }

std::optional<AudioFileContents> readWrapped(const ByteSource &source, Progress *progress) {
    return readWhole(source, progress, findWrapping);
}

std::optional<AudioFileSummary> summarizeWrapped(const ByteSource &source) { return summarize(source, findWrapping); }

void throwIfUnsupported(const ByteSource &source) { readForm(SourceReader(source)); }

std::optional<AudioFileContents> readNative(std::span<const std::byte> bytes) { return readNative(MemorySource(bytes)); }

AudioFileImage nativeImage(const AudioFileContents &contents) {
    return contents.format.container == AudioContainer::wav ? wavImage(contents) : aiffImage(contents);
}

AudioFileImage fileImage(const AudioFileContents &contents) {
    if (contents.wrapping) return wrappedImage(contents);
    const bool isFlac = contents.decodedSetting(formatIdentifierKey) == "flac";
    if (contents.format.container != AudioContainer::coreAudio || !isFlac) return nativeImage(contents);
    return flacImage(contents, std::stoi(contents.decodedSetting(bitDepthKey)));
}

std::vector<FlacMetadataBlock> flacMetadata(const ByteSource &source) { return readFlacMetadata(source); }

Bytes patched(const AudioFileChunk &chunk, const std::vector<std::int64_t> &positions) {
    Bytes data = chunk.data;
    for (const AudioFilePositionField &field : chunk.fields) {
        const std::size_t width = field.kind == AudioFilePositionField::Kind::real ? 8 : 4;
        if (field.index >= positions.size() || data.size() < width || field.offset > data.size() - width) continue;
        const auto order = field.bigEndian ? std::endian::big : std::endian::little;
        const std::int64_t value = std::clamp<std::int64_t>(fieldValue(field, positions), 0, 0xFFFFFFFF);
        if (width == 8)
            putReal(data, field.offset, order, positions[field.index]);
        else
            putWord(std::span(data), field.offset, order, std::uint32_t(value));
    }
    return data;
}

void encodeSamples(const AudioEditorBuffer &buffer, FrameRange range, const AudioSampleEncoding &encoding,
                   std::span<std::byte> out) {
    if (range.isEmpty()) return;
    buffer.forEachSpanWithOriginals(range, [&](std::span<const float> samples, const SampleOriginals *originals, auto first) {
        const auto encoded = out.first(samples.size() * std::size_t(encoding.bytes));
        kiv::encodeSamples(samples, encoding, encoded);
        if (originals) restoreOriginals(*originals, first, encoding, encoded);
        out = out.subspan(encoded.size());
    });
}

// A second chunk of one of these names is nothing that a reader looks at.
AudioFileContents bareContents(AudioEditorBuffer buffer, const AudioFileContents &contents) {
    AudioFileContents bare;
    bare.format = contents.format;
    bare.coreAudioSettings = contents.coreAudioSettings;
    if (contents.wrapping) bare.wrapping = bareWrapping(*contents.wrapping);
    bare.buffer = std::move(buffer);
    for (const AudioFileChunk &chunk : contents.chunks) {
        const auto sameId = [&](const AudioFileChunk &kept) { return kept.id == chunk.id; };
        if (isBareChunkId(chunk.id) && std::none_of(bare.chunks.begin(), bare.chunks.end(), sameId))
            bare.chunks.push_back(chunk);
    }
    return bare;
}

}  // namespace kiv::AudioFileCodec
