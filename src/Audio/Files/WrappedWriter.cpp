#include <memory>

#include "Audio/Files/AudioFileCodec.h"
#include "Audio/Files/ByteFields.h"
#include "Audio/Files/PcmSamples.h"
#include "Audio/Files/SampleWrapping.h"
#include "Audio/Files/WavMetadata.h"

namespace kiv::AudioFileCodec {
namespace {

// What stands behind no samples may look as though it were samples of which nobody told the size.
void requireNoFrames(const AudioFileImage &image) {
    const auto found = summarizeWrapped(MemorySource(image.bytes()));
    if (!found || found->frames != 0) throw AudioFileError::writeCheckFailed();
}

}  // namespace

AudioFileImage wrappedImage(const AudioFileContents &contents) {
    const AudioEditorBuffer &buffer = contents.buffer;
    if (!contents.wrapping->fits(buffer)) throw AudioFileError::writeCheckFailed();
    const SampleWrapping wrapping = wrappingFor(*contents.wrapping, buffer);
    const std::int64_t sampleBytes = buffer.frames() * buffer.channels() * wrapping.encoding.bytes;
    std::vector<AudioFileImage::Piece> pieces(2);
    pieces[0].samples = true;
    pieces[1].bytes.resize(std::size_t(paddingBehind(wrapping, sampleBytes)));
    for (std::size_t i = 0; i < wrapping.parts.size(); ++i) {
        const SampleWrapping::Part &part = wrapping.parts[i];
        Bytes &bytes = pieces[i < wrapping.samplesBefore ? 0 : 1].bytes;
        append(bytes, part.header);
        append(bytes, patchedWavChunk(part.chunk, contents.positions));
        append(bytes, part.pad);
    }
    const AudioFileImage image(std::move(pieces), std::make_shared<PcmSamples>(buffer, wrapping.encoding));
    if (buffer.isEmpty()) requireNoFrames(image);
    return image;
}

}  // namespace kiv::AudioFileCodec
