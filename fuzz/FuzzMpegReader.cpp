#include "DrainCheck.h"
#include "Platform/Linux/Decoders/MpegSound.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    kiv::readerCheck::drain(kiv::openMpeg, data, size, kiv::tagsOfMpeg);
    return 0;
}
