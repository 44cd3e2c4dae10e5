#include "DrainCheck.h"
#include "Platform/Linux/Decoders/MpegSound.h"
#include "Platform/Linux/Decoders/SndfileSound.h"

namespace {

// MPEG audio goes to another decoder.
std::unique_ptr<kiv::DecodedSound> open(const kiv::ByteSource &source) {
    return kiv::startsAsMpeg(source) ? nullptr : kiv::openWithSndfile(source);
}

std::optional<kiv::DecodedTags> tags(const kiv::ByteSource &source) {
    return kiv::startsAsMpeg(source) ? std::nullopt : kiv::tagsWithSndfile(source);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    kiv::readerCheck::drain(open, data, size, tags);
    return 0;
}
