#include <algorithm>
#include <bit>

#include "Audio/Files/AudioFileCodec.h"
#include "Audio/Files/ByteFields.h"
#include "Audio/Files/FileFormats.h"
#include "Audio/Files/FormBuilder.h"
#include "Audio/Files/WavMetadata.h"

namespace kiv::AudioFileCodec {
namespace {

constexpr auto order = std::endian::little;

// A mask names a speaker for each channel. It is worth nothing any more once there are more or fewer channels than it names;
// in a file that came with such a mask it stays as it was.
void updateChannelMask(Bytes &fmt, std::uint16_t channelsBefore, std::int64_t channels) {
    const bool hasMask = u16At(fmt, FmtChunk::formatTag, order) == FmtChunk::extensibleTag && fmt.size() >= FmtChunk::subFormat;
    if (!hasMask || channels == channelsBefore) return;
    if (std::popcount(u32At(fmt, FmtChunk::channelMask, order)) != channels)
        putWord(std::span(fmt), FmtChunk::channelMask, order, std::uint32_t(0));
}

Bytes formatPayload(const AudioFileChunk &chunk, const AudioFileContents &contents) {
    Bytes fmt = chunk.data;
    if (fmt.size() < FmtChunk::plainSize) return fmt;
    const std::int64_t channels = contents.buffer.channels(), blockAlign = channels * contents.format.encoding->bytes;
    const std::int64_t byteRate = std::min<std::int64_t>(contents.buffer.sampleRate() * blockAlign, 0xFFFFFFFF);
    const std::uint16_t channelsBefore = u16At(fmt, FmtChunk::channels, order);
    putWord(std::span(fmt), FmtChunk::channels, order, std::uint16_t(channels));
    putWord(std::span(fmt), FmtChunk::byteRate, order, std::uint32_t(byteRate));
    // Where it does not fit, 0 leaves a reader the bits per sample to go by; what is left of it might be read as another width.
    putWord(std::span(fmt), FmtChunk::blockAlign, order, std::uint16_t(blockAlign > 0xFFFF ? 0 : blockAlign));
    updateChannelMask(fmt, channelsBefore, channels);
    return fmt;
}

Bytes factPayload(const AudioFileChunk &chunk, const AudioFileContents &contents) {
    Bytes fact = chunk.data;
    if (fact.size() < 4) return fact;
    putWord(std::span(fact), 0, order, std::uint32_t(std::min<std::int64_t>(contents.buffer.frames(), 0xFFFFFFFF)));
    return fact;
}

// Audio without a frame, with others behind it. A data chunk of size 0 means "up to the end of the file" to many readers, ours
// included: a byte in it that makes no frame says that it is really empty. Where one byte is a frame, it has to be the last.
bool isEmptyBeforeOthers(const AudioFileContents &contents, const AudioFileChunk *data) {
    if (!data || !contents.buffer.isEmpty()) return false;
    const auto isWritten = [](const AudioFileChunk &chunk) { return !isStaleChunkId(chunk.id); };
    const AudioFileChunk *const end = contents.chunks.data() + contents.chunks.size();
    return !contents.trailing.empty() || std::any_of(data + 1, end, isWritten);
}

// Where an empty audio chunk has to stand last, what stands behind would be taken for audio, and so would another chunk of its
// name before it.
void requireNothingElse(const AudioFileContents &contents, const AudioFileChunk &data) {
    if (!contents.trailing.empty()) throw AudioFileError::writeCheckFailed();
    for (const AudioFileChunk &chunk : contents.chunks)
        if (chunk.id == data.id && &chunk != &data) throw AudioFileError::writeCheckFailed();
}

}  // namespace

AudioFileImage wavImage(const AudioFileContents &contents) {
    FormBuilder form("RIFF", "WAVE", order, contents, {0xFFFF, 0xFFFFFFFF});
    const AudioFileChunk *fmt = firstChunk(contents, "fmt "), *fact = firstChunk(contents, "fact"),
                         *data = firstChunk(contents, "data");
    const bool isFiller = isEmptyBeforeOthers(contents, data);
    const std::int64_t frameBytes = contents.buffer.channels() * contents.format.encoding->bytes;
    const bool samplesInPlace = data && (!isFiller || frameBytes > 1);
    if (data && !samplesInPlace) requireNothingElse(contents, *data);
    for (const AudioFileChunk &chunk : contents.chunks) {
        if (isStaleChunkId(chunk.id) || (chunk.id == "data" && !samplesInPlace)) continue;
        if (&chunk == fmt)
            form.chunk(chunk.id, formatPayload(chunk, contents));
        else if (&chunk == fact)
            form.chunk(chunk.id, factPayload(chunk, contents));
        else if (&chunk == data)
            isFiller ? form.chunk(chunk.id, Bytes(1)) : form.audioChunk(chunk.id, {});
        else if (chunk.id.empty())
            form.raw(chunk.data);
        else
            form.chunk(chunk.id, patchedWavChunk(chunk, contents.positions));
    }
    if (samplesInPlace)
        form.raw(contents.trailing);
    else
        form.audioChunk("data", {});
    return form.finish();
}

}  // namespace kiv::AudioFileCodec
