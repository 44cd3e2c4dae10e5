#include <cstdlib>

#include "Audio/Files/AudioFileCodec.h"
#include "Audio/Files/SampleWrapping.h"

// What is kept of any file around its samples gives a file in which the same is found again.
namespace kiv {
namespace {

std::optional<AudioFileContents> found(const Bytes &file) {
    const MemorySource source(file);
    auto wrapped = findWrapping(SourceReader(source));
    if (!wrapped) return std::nullopt;
    AudioFileContents contents;
    const SampleWrapping &wrapping = wrapped->wrapping;
    contents.buffer = readSamples(SourceReader(source), wrapped->audio, wrapping.encoding, wrapping.channels, 44100);
    contents.wrapping = std::move(wrapped->wrapping);
    return contents;
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
