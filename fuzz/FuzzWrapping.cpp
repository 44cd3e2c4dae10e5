#include <cstdlib>

#include "Audio/Files/AudioFileCodec.h"
#include "Audio/Files/AudioFileConversion.h"
#include "Audio/Files/PackedWrapping.h"

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

// Nothing where a sound of no frames is refused, because what stands behind it would be read as samples.
std::optional<Bytes> written(const AudioFileContents &contents) {
    try {
        return AudioFileCodec::wrappedImage(contents).bytes();
    } catch (const AudioFileError &error) {
        if (!contents.buffer.isEmpty() || error.kind() != AudioFileError::Case::writeCheckFailed) throw;
        return std::nullopt;
    }
}

void convert(const AudioFileContents &contents) {
    for (const auto container :
         {AudioSaveFormat::Container::wav, AudioSaveFormat::Container::aiff, AudioSaveFormat::Container::flac})
        AudioFileCodec::converted(contents, {container, 16});
}

// A loop that is put in is found again, and taken out again.
void checkLoops(const AudioFileContents &contents) {
    if (!contents.canStoreLoop() || contents.loop || contents.buffer.isEmpty()) return;
    const auto looped = found(AudioFileCodec::wrappedImage(AudioFileCodec::addingLoop(contents, 0, 1)).bytes());
    if (!looped || !looped->loop || looped->positions.size() != contents.positions.size() + 2) std::abort();
    const auto without = found(AudioFileCodec::wrappedImage(AudioFileCodec::removingLoop(*looped)).bytes());
    if (!without || without->positions != contents.positions) std::abort();
}

AudioEditorBuffer mono(const AudioEditorBuffer &buffer) {
    const auto frames = std::min<std::int64_t>(buffer.frames(), 1 << 16);
    return AudioEditorBuffer(std::vector<float>(std::size_t(frames)), 1, buffer.sampleRate());
}

void checkChannels(AudioFileContents contents) {
    contents.buffer = mono(contents.buffer);
    if (!contents.wrapping->fits(contents.buffer)) return;
    const auto bytes = written(contents);
    if (!bytes) return;
    const auto again = found(*bytes);
    if (!again || again->buffer.channels() != 1) std::abort();
}

void checkPacked(const Bytes &file) {
    AudioFileContents contents;
    contents.format.container = AudioContainer::coreAudio;
    contents.coreAudioSettings.emplace();
    contents.buffer = AudioEditorBuffer(std::vector<float>(9), 1, 44100);
    keepAroundPacked(contents, 9, MemorySource(file));
    for (const std::int64_t position : contents.positions)
        if (position < 0 || position > 9) std::abort();
    if (contents.loop) AudioFileCodec::removingLoop(contents);
    convert(contents);
}

void check(const Bytes &file) {
    checkPacked(file);
    const auto contents = found(file);
    if (!contents) return;
    checkChannels(*contents);
    const auto again = written(*contents);
    if (!again) return;
    const auto foundAgain = found(*again);
    if (!foundAgain || AudioFileCodec::wrappedImage(*foundAgain).bytes() != *again) std::abort();
    if (foundAgain->buffer.frames() != contents->buffer.frames()) std::abort();
    if (foundAgain->positions != contents->positions || foundAgain->loop != contents->loop) std::abort();
    checkLoops(*contents);
    convert(*contents);
}

}  // namespace
}  // namespace kiv

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    const auto bytes = std::as_bytes(std::span(data, size));
    kiv::check({bytes.begin(), bytes.end()});
    return 0;
}
