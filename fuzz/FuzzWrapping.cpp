#include <cstdlib>

#include "Audio/Files/AudioFileCodec.h"
#include "Audio/Files/AudioFileConversion.h"

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

// A loop that is put in is found again, and taken out again.
void checkLoops(const AudioFileContents &contents) {
    if (!contents.canStoreLoop() || contents.loop || contents.buffer.isEmpty()) return;
    const auto looped = found(AudioFileCodec::wrappedImage(AudioFileCodec::addingLoop(contents, 0, 1)).bytes());
    if (!looped || !looped->loop || looped->positions.size() != contents.positions.size() + 2) std::abort();
    const auto without = found(AudioFileCodec::wrappedImage(AudioFileCodec::removingLoop(*looped)).bytes());
    if (!without || without->positions != contents.positions) std::abort();
}

void check(const Bytes &file) {
    const auto contents = found(file);
    if (!contents) return;
    const Bytes again = AudioFileCodec::wrappedImage(*contents).bytes();
    const auto foundAgain = found(again);
    if (!foundAgain || AudioFileCodec::wrappedImage(*foundAgain).bytes() != again) std::abort();
    if (foundAgain->buffer.frames() != contents->buffer.frames()) std::abort();
    if (foundAgain->positions != contents->positions || foundAgain->loop != contents->loop) std::abort();
    checkLoops(*contents);
    for (const auto container :
         {AudioSaveFormat::Container::wav, AudioSaveFormat::Container::aiff, AudioSaveFormat::Container::flac})
        AudioFileCodec::converted(*contents, {container, 16});
}

}  // namespace
}  // namespace kiv

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    const auto bytes = std::as_bytes(std::span(data, size));
    kiv::check({bytes.begin(), bytes.end()});
    return 0;
}
