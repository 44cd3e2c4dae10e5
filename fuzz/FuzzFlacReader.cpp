#include "DrainCheck.h"
#include "Platform/Linux/Decoders/FlacSound.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    kiv::readerCheck::drain(kiv::openFlac, data, size);
    return 0;
}
