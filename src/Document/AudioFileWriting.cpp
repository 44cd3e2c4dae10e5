#include "Document/AudioFileWriting.h"

#include <stdexcept>

#include "Audio/Files/AudioFileCodec.h"
#include "Document/WriteCheck.h"

namespace kiv {

void writeAudioFile(Files &files, DecodedReader *decoders, const std::string &path, const AudioFileContents &contents,
                    Progress &progress) {
    if (!contents.canSaveInPlace())
        throw std::runtime_error(contents.format.typeName + " files can't be written: choose a format.");
    const auto image = AudioFileCodec::fileImage(contents);
    const bool isOwn = contents.format.container != AudioContainer::coreAudio;
    if (!isOwn) progress.expectStages({0.5, 0.5});
    files.replace(
        path, [&](ByteSink &sink) { image.writeTo(sink, &progress); },
        [&](const ByteSource &written) {
            if (!isOwn && !readsBack(decoders, written, contents, image, progress)) throw AudioFileError::writeCheckFailed();
        });
}

}  // namespace kiv
