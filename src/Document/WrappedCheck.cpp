#include "Document/WrappedCheck.h"

#include <algorithm>

#include "Audio/Files/AudioFileCodec.h"
#include "Document/DecodedCheck.h"

namespace kiv {
namespace {

using Image = AudioFileCodec::AudioFileImage;

// The samples as they stand in the file.
bool holdsBytes(const ByteSource &written, const AudioFileContents &contents, const Image &image, Progress &progress) {
    constexpr std::int64_t blockFrames = 1 << 16;
    const AudioSampleEncoding &encoding = contents.wrapping->encoding;
    const std::int64_t frames = contents.buffer.frames();
    std::int64_t offset = image.samplesOffset();
    Bytes expected;
    for (FrameRange block{0, 0}; block.hi < frames;) {
        block = {block.hi, std::min(block.hi + blockFrames, frames)};
        expected.resize(std::size_t(block.count() * contents.buffer.channels() * encoding.bytes));
        AudioFileCodec::encodeSamples(contents.buffer, block, encoding, expected);
        if (!hasBytes(written, offset, expected)) return false;
        offset += std::int64_t(expected.size());
        progress.add(block.count());
    }
    return true;
}

// Whether a decoder takes the file for what we take it for: some know little of these kinds of files, and some take what stands
// behind the last sample for more of them. Of RIFX files none can be asked: behind a chunk whose numbers it takes for
// little-endian, the one there is takes the samples for it too.
bool knowsAs(DecodedSound &sound, const AudioFileContents &contents) {
    const AudioSampleEncoding &encoding = contents.wrapping->encoding;
    const DecodedFormat &format = sound.format();
    const bool isFloat = encoding.kind == AudioSampleEncoding::Kind::floating;
    return contents.wrapping->kind != SampleWrapping::Kind::rifx && format.bits == encoding.bytes * 8 &&
           format.isFloat == isFloat && hasFormat(format, contents) && sound.countFrames() == contents.buffer.frames();
}

bool isDecodedAsWritten(DecodedReader &decoders, const ByteSource &written, const AudioFileContents &contents,
                        Progress &progress) {
    try {
        const auto known = decoders.open(written);
        if (!known || !knowsAs(*known, contents)) return true;
        const auto sound = decoders.open(written);
        return sound && holdsOnly(*sound, {0, contents.buffer.frames()}, contents, progress);
    } catch (const DecodeFault &) {
        return true;
    }
}

}  // namespace

bool isWrappedAsWritten(DecodedReader *decoders, const ByteSource &written, const AudioFileContents &contents,
                        const Image &image, Progress &progress) {
    const AudioEditorBuffer &buffer = contents.buffer;
    const auto found = AudioFileCodec::summarizeWrapped(written);
    if (!found || found->frames != buffer.frames() || found->contents.wrapping->encoding != contents.wrapping->encoding)
        return false;
    const AudioEditorBuffer &shape = found->contents.buffer;
    if (shape.channels() != buffer.channels() || shape.sampleRate() != buffer.sampleRate()) return false;
    return holdsBytes(written, contents, image, progress) &&
           (!decoders || isDecodedAsWritten(*decoders, written, contents, progress));
}

}  // namespace kiv
