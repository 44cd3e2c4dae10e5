#include "Audio/Files/PackedWrapping.h"

#include <cctype>

#include "Audio/Files/AudioFileError.h"
#include "Audio/Files/ByteFields.h"
#include "Audio/Files/FileFormats.h"
#include "Audio/Files/FormBuilder.h"
#include "Audio/Files/SampleWrapping.h"
#include "Audio/Files/WavMetadata.h"
#include "Audio/Files/WrappingChunks.h"
#include "Audio/Files/WrappingDialects.h"
#include "Audio/Files/WrappingReader.h"

namespace kiv {
namespace {

using Kind = SampleWrapping::Kind;

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

void countFromStart(AudioFileContents &contents, SampleWrapping &around) {
    if (!around.isFormLike() || around.kind == Kind::aifc) return;
    AudioFileContents view = formView(contents, around);
    countFromStart(view);
    takeFormView(contents, around, std::move(view));
}

}  // namespace

// A decoder that knows the encoding may have named it; names in small letters are for programs.
void keepAroundPacked(AudioFileContents &contents, std::int64_t frames, const ByteSource &source) try {
    auto found = takeApart(SourceReader(source), WrappedSamples::packed);
    if (!found) return;
    SampleWrapping &around = contents.tags.around.emplace(std::move(*found->contents.wrapping));
    around.channels = contents.buffer.channels();
    around.frames = frames;
    countFromStart(contents, around);
    collectPositions(contents, around);
    const WrappingDialect *const dialect = dialectOf(around.kind);
    std::string &name = contents.format.typeName;
    const bool isNamed = name != (dialect ? dialect->name : "AU") && std::isupper(static_cast<unsigned char>(name[0]));
    if (!isNamed) name = found->contents.format.typeName;
} catch (const AudioFileError &) {
    // It says too little of itself.
}

}  // namespace kiv
