#include "Document/AudioFileWriting.h"

#include <cstring>
#include <stdexcept>
#include <vector>

#include "Audio/Files/AudioFileCodec.h"
#include "Audio/Files/SampleDecoding.h"

namespace kiv {
namespace {

// The samples of a range as they come back from a file that holds them in this encoding.
std::vector<float> stored(const AudioEditorBuffer &buffer, FrameRange range, const AudioSampleEncoding &encoding) {
    std::vector<float> samples(std::size_t(range.count() * buffer.channels()));
    Bytes bytes(samples.size() * std::size_t(encoding.bytes));
    AudioFileCodec::encodeSamples(buffer, range, encoding, bytes);
    decodeSamples(bytes, encoding, samples);
    return samples;
}

// Sample for sample, and with nothing behind the last.
bool holdsSamples(DecodedSound &sound, const AudioEditorBuffer &buffer, const AudioSampleEncoding &encoding) {
    constexpr std::int64_t blockFrames = 1 << 16;
    std::vector<float> found(std::size_t(blockFrames * buffer.channels()));
    std::int64_t at = 0;
    for (std::int64_t count = sound.read(found); count > 0; count = sound.read(found)) {
        if (count > buffer.frames() - at) return false;
        const std::vector<float> expected = stored(buffer, {at, at + count}, encoding);
        if (std::memcmp(found.data(), expected.data(), expected.size() * sizeof(float)) != 0) return false;
        at += count;
    }
    return at == buffer.frames();
}

// Whether a decoder takes the file for what we take it for: some know little of these kinds of files, and some take what stands
// behind the last sample for more of them.
bool knowsAs(DecodedReader &decoders, const ByteSource &written, const AudioFileContents &contents) {
    const AudioSampleEncoding &encoding = contents.wrapping->encoding;
    const auto sound = decoders.open(written);
    if (!sound) return false;
    const DecodedFormat &format = sound->format();
    const bool isFloat = encoding.kind == AudioSampleEncoding::Kind::floating;
    const bool isSame = format.bits == encoding.bytes * 8 && format.isFloat == isFloat;
    return isSame && format.channels == contents.buffer.channels() && sound->countFrames() == contents.buffer.frames();
}

// What stands around the samples is found again as it was written, and whoever else knows the file finds the same samples.
bool isWrappedAsWritten(DecodedReader *decoders, const ByteSource &written, const AudioFileContents &contents) {
    const AudioEditorBuffer &buffer = contents.buffer;
    const auto found = AudioFileCodec::summarizeWrapped(written);
    if (!found || found->frames != buffer.frames() || found->contents.wrapping->encoding != contents.wrapping->encoding)
        return false;
    const AudioEditorBuffer &shape = found->contents.buffer;
    if (shape.channels() != buffer.channels() || shape.sampleRate() != buffer.sampleRate()) return false;
    try {
        if (!decoders || !knowsAs(*decoders, written, contents)) return true;
        const auto sound = decoders->open(written);
        return sound && holdsSamples(*sound, buffer, contents.wrapping->encoding);
    } catch (const DecodeFault &) {
        return true;
    }
}

bool readsBack(DecodedReader *decoders, const ByteSource &written, const AudioFileContents &contents) {
    const AudioEditorBuffer &buffer = contents.buffer;
    if (contents.wrapping) return isWrappedAsWritten(decoders, written, contents);
    try {
        const auto sound = decoders ? decoders->open(written) : nullptr;
        if (!sound) return false;
        const DecodedFormat &format = sound->format();
        const bool isSame = format.channels == buffer.channels() && format.sampleRate == buffer.sampleRate();
        return isSame && (buffer.isEmpty() || sound->countFrames() == buffer.frames());
    } catch (const DecodeFault &) {
        return false;
    }
}

}  // namespace

void writeAudioFile(Files &files, DecodedReader *decoders, const std::string &path, const AudioFileContents &contents,
                    Progress &progress) {
    if (!contents.canSaveInPlace())
        throw std::runtime_error(contents.format.typeName + " files can't be written: choose a format.");
    const auto image = AudioFileCodec::fileImage(contents);
    const bool isOwn = contents.format.container != AudioContainer::coreAudio;
    files.replace(
        path, [&](ByteSink &sink) { image.writeTo(sink, &progress); },
        [&](const ByteSource &written) {
            if (!isOwn && !readsBack(decoders, written, contents)) throw AudioFileError::writeCheckFailed();
        });
}

}  // namespace kiv
