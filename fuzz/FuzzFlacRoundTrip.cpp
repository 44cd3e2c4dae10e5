#include <array>

#include "Audio/Files/SampleDecoding.h"
#include "Audio/Files/SampleResidue.h"
#include "Platform/Linux/Decoders/FlacSound.h"
#include "ReaderCheck.h"

// Any samples of any depth, channel count and rate, and any metadata: what our writer makes of them the decoder must read.
namespace kiv::readerCheck {
namespace {

constexpr AudioSampleEncoding wide{.bytes = 4, .validBits = 32, .bigEndian = std::endian::native == std::endian::big};

struct Case {
    int bits = 0;
    AudioFileContents contents;
    std::vector<std::int32_t> samples;  // with a full scale of 2³¹
};

Case made(std::span<const std::byte> input) {
    const auto at = [&](std::size_t i) { return std::to_integer<unsigned>(input[i]); };
    Case result;
    result.bits = 4 + int(at(0) % 29);
    const auto channels = std::int64_t(1 + at(1) % 8),
               rate = std::int64_t(1 + (at(2) << 12 | at(3) << 4 | at(4) >> 4) % 1048575);
    const std::size_t tags = std::min<std::size_t>(at(5) % 40, input.size() - 6);
    if (tags > 0) result.contents.flacMetadata = {{4, Bytes(input.begin() + 6, input.begin() + 6 + std::ptrdiff_t(tags))}};
    const auto rest = input.subspan(6 + tags);
    // A few bytes are laid end to end, so that there is more than one block.
    const std::size_t count =
        (rest.size() / 4 + (rest.empty() ? 0 : at(4) % 16 * 1000)) / std::size_t(channels) * std::size_t(channels);
    for (std::size_t i = 0; i < count; ++i) {
        std::uint32_t word = 0;
        for (std::size_t b = 0; b < 4; ++b) word = word << 8 | std::to_integer<std::uint32_t>(rest[(4 * i + b) % rest.size()]);
        result.samples.push_back(std::int32_t(word >> (32 - result.bits) << (32 - result.bits)));
    }
    SampleMemory memory{count};
    const auto words = std::as_bytes(std::span(result.samples));
    const std::span decoded(memory.data(), count);
    decodeSamples(words, wide, decoded);
    auto residue = std::make_unique<SampleResidue>(wide, std::int64_t(count));
    residue->keep(0, words, wide, decoded);
    result.contents.buffer = {std::move(memory), channels, rate, std::move(residue)};
    return result;
}

void checkSamples(DecodedSound &sound, const Case &expected) {
    const auto scale = float(std::int64_t(1) << 31);
    if (sound.format().isWide()) {
        std::vector<std::int32_t> read(expected.samples.size() + 64);
        read.resize(std::size_t(sound.read(read) * sound.format().channels));
        require(read == expected.samples, "the integers come back");
    } else {
        std::vector<float> read(expected.samples.size() + 64);
        read.resize(std::size_t(sound.read(read) * sound.format().channels));
        const auto isSame = [=](float is, std::int32_t was) { return is == float(was) / scale; };
        require(std::equal(read.begin(), read.end(), expected.samples.begin(), expected.samples.end(), isSame),
                "the samples come back");
    }
}

}  // namespace
}  // namespace kiv::readerCheck

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    using namespace kiv;
    using readerCheck::require;
    if (size < 8) return 0;
    const auto made = readerCheck::made(std::as_bytes(std::span(data, size)));
    const auto image = AudioFileCodec::flacImage(made.contents, made.bits);
    const Bytes file = image.bytes();
    require(std::int64_t(file.size()) == image.size(), "a size that is told is true");
    const MemorySource source(file);
    require(AudioFileCodec::flacMetadata(source) == made.contents.flacMetadata, "the metadata comes back");
    const auto sound = openFlac(source);
    require(sound != nullptr, "what was written is FLAC");
    const DecodedFormat &format = sound->format();
    require(format.bits == made.bits && format.channels == made.contents.buffer.channels() &&
                format.sampleRate == made.contents.buffer.sampleRate(),
            "the format comes back");
    readerCheck::checkSamples(*sound, made);
    const std::int64_t frames = made.contents.buffer.frames();
    const auto counted = openFlac(source)->countFrames();  // samples that look like a block may keep it from being told
    require(!counted || *counted == frames, "a length that is told is true");
    return 0;
}
