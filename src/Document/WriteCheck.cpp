#include "Document/WriteCheck.h"

#include "Document/FlacCheck.h"
#include "Document/WrappedCheck.h"

namespace kiv {

bool readsBack(DecodedReader *decoders, const ByteSource &written, const AudioFileContents &contents,
               const AudioFileCodec::AudioFileImage &image, Progress &progress) {
    progress.start(contents.buffer.frames() * (contents.wrapping && decoders ? 2 : 1));
    if (written.size() != image.size()) return false;
    if (contents.wrapping) return isWrappedAsWritten(decoders, written, contents, image, progress);
    try {
        return decoders && isFlacAsWritten(*decoders, written, contents, image, progress);
    } catch (const DecodeFault &) {
        return false;
    }
}

}  // namespace kiv
