#include "DrainCheck.h"
#include "Platform/Linux/Ffmpeg/FfmpegSound.h"
#include "Platform/Linux/Ffmpeg/FfmpegTags.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    kiv::readerCheck::drain(kiv::openWithFfmpeg, data, size, kiv::tagsWithFfmpeg);
    return 0;
}
