#include "Platform/Linux/Decoders/DecoderModule.h"
#include "Platform/Linux/Decoders/FlacSound.h"
#include "Platform/Linux/Decoders/MpegSound.h"
#include "Platform/Linux/Decoders/SndfileSound.h"

namespace kiv {
namespace {

class DecodersReader : public DecodedReader {
public:
    std::unique_ptr<DecodedSound> open(const ByteSource &source) override {
        if (auto sound = openFlac(source)) return sound;
        return startsAsMpeg(source) ? openMpeg(source) : openWithSndfile(source);
    }
    std::optional<DecodedTags> tags(const ByteSource &source) override {
        return startsAsMpeg(source) ? tagsOfMpeg(source) : tagsWithSndfile(source);
    }
};

}  // namespace
}  // namespace kiv

extern "C" __attribute__((visibility("default"))) kiv::DecodedReader *kivDecodedReader() {
    static kiv::DecodersReader reader;
    return &reader;
}
