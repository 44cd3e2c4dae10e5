#include "DrainCheck.h"
#include "Platform/Linux/Decoders/SndfileSound.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    kiv::readerCheck::drain(kiv::openWithSndfile, data, size, kiv::tagsWithSndfile);
    return 0;
}
