#include "ReaderCheck.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    const bool isCompressed = size >= 12 && data[11] == 'C';
    kiv::readerCheck::check({data, size}, "FORM", isCompressed ? "AIFC" : "AIFF");
    return 0;
}
