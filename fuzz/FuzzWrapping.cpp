#include <cstdlib>

#include "Audio/Files/AudioFileCodec.h"
#include "Audio/Files/SampleWrapping.h"

// What is kept of any file around its samples gives a file in which the same is found again.
namespace kiv {
namespace {

std::optional<AudioFileContents> found(const Bytes &file) {
    try {
        return AudioFileCodec::readWrapped(MemorySource(file));
    } catch (const AudioFileError &) {
        return std::nullopt;
    }
}

void check(const Bytes &file) {
    const auto contents = found(file);
    if (!contents) return;
    const Bytes again = AudioFileCodec::wrappedImage(*contents).bytes();
    const auto foundAgain = found(again);
    if (!foundAgain || AudioFileCodec::wrappedImage(*foundAgain).bytes() != again) std::abort();
    if (foundAgain->buffer.frames() != contents->buffer.frames()) std::abort();
}

}  // namespace
}  // namespace kiv

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    const auto bytes = std::as_bytes(std::span(data, size));
    kiv::check({bytes.begin(), bytes.end()});
    return 0;
}
