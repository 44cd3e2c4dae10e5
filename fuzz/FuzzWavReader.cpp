#include "ReaderCheck.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    kiv::readerCheck::check({data, size}, "RIFF", "WAVE");
    return 0;
}
