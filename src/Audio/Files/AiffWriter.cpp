#include <algorithm>
#include <array>

#include "Audio/Files/AudioFileCodec.h"
#include "Audio/Files/ByteFields.h"
#include "Audio/Files/FileFormats.h"
#include "Audio/Files/FormBuilder.h"

namespace kiv::AudioFileCodec {
namespace {

constexpr auto order = std::endian::big;

Bytes commonPayload(const AudioFileChunk &chunk, const AudioFileContents &contents) {
    Bytes comm = chunk.data;
    if (comm.size() < CommChunk::plainSize) return comm;
    const auto frames = std::uint32_t(std::min<std::int64_t>(contents.buffer.frames(), 0xFFFFFFFF));
    putWord(std::span(comm), CommChunk::channels, order, std::uint16_t(contents.buffer.channels()));
    putWord(std::span(comm), CommChunk::frames, order, frames);
    return comm;
}

}  // namespace

AudioFileImage aiffImage(const AudioFileContents &contents) {
    const bool isCompressed = contents.format.container == AudioContainer::aifc;
    FormBuilder form("FORM", isCompressed ? "AIFC" : "AIFF", order, contents, {0x7FFF, INT64_MAX});
    const AudioFileChunk *common = firstChunk(contents, "COMM"), *sound = firstChunk(contents, "SSND");
    constexpr std::array<std::byte, SsndChunk::header> soundHeader{};
    for (const AudioFileChunk &chunk : contents.chunks) {
        if (isStaleChunkId(chunk.id)) continue;
        if (&chunk == common)
            form.chunk(chunk.id, commonPayload(chunk, contents));
        else if (&chunk == sound)
            form.audioChunk(chunk.id, soundHeader);
        else if (chunk.id.empty())
            form.raw(chunk.data);
        else
            form.chunk(chunk.id, patched(chunk, contents.positions));
    }
    if (!sound && !contents.buffer.isEmpty()) form.audioChunk("SSND", soundHeader);
    form.raw(contents.trailing);
    return form.finish();
}

}  // namespace kiv::AudioFileCodec
