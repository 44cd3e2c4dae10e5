#include "Document/AudioFileWriting.h"

#include <stdexcept>

#include "Audio/Files/AudioFileCodec.h"

namespace kiv {
namespace {

bool readsBack(DecodedReader *decoders, const ByteSource &written, const AudioEditorBuffer &buffer) {
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
            if (!isOwn && !readsBack(decoders, written, contents.buffer)) throw AudioFileError::writeCheckFailed();
        });
}

}  // namespace kiv
