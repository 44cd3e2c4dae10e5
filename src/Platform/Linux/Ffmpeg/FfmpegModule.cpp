#include "Platform/Linux/Decoders/DecoderModule.h"
#include "Platform/Linux/Ffmpeg/FfmpegSound.h"
#include "Platform/Linux/Ffmpeg/FfmpegTags.h"

namespace kiv {
namespace {

class FfmpegReader : public DecodedReader {
public:
    std::unique_ptr<DecodedSound> open(const ByteSource &source) override { return openWithFfmpeg(source); }
    std::optional<DecodedTags> tags(const ByteSource &source) override { return tagsWithFfmpeg(source); }
};

}  // namespace
}  // namespace kiv

extern "C" __attribute__((visibility("default"))) kiv::DecodedReader *kivDecodedReader() {
    static kiv::FfmpegReader reader;
    return &reader;
}
