#include "DrainCheck.h"
#include "Platform/Linux/Decoders/OggPages.h"
#include "Platform/Linux/Decoders/OggSound.h"
#include "Platform/Linux/Decoders/SndfileSound.h"

namespace {

std::unique_ptr<kiv::DecodedSound> open(const kiv::ByteSource &source) {
    return kiv::startsAsOgg(source) ? kiv::openOgg(source) : kiv::openWithSndfile(source);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    kiv::readerCheck::drain(open, data, size, kiv::tagsWithSndfile);
    return 0;
}
