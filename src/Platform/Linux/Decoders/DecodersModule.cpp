#include "Platform/Linux/Decoders/DecoderModule.h"
#include "Platform/Linux/Decoders/FlacSound.h"
#include "Platform/Linux/Decoders/SndfileSound.h"

namespace kiv {
namespace {

class DecodersReader : public DecodedReader {
public:
    std::unique_ptr<DecodedSound> open(const ByteSource &source) override {
        auto sound = openFlac(source);
        return sound ? std::move(sound) : openWithSndfile(source);
    }
    std::optional<DecodedTags> tags(const ByteSource &source) override { return tagsWithSndfile(source); }
};

}  // namespace
}  // namespace kiv

extern "C" __attribute__((visibility("default"))) kiv::DecodedReader *kivDecodedReader() {
    static kiv::DecodersReader reader;
    return &reader;
}
