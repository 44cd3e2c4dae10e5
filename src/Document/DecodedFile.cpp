#include "Document/DecodedFile.h"

#include <algorithm>
#include <vector>

#include "Audio/Files/SampleDecoding.h"
#include "Audio/Files/SampleResidue.h"

namespace kiv {
namespace {

// What is decoded at a time, and becomes a block of the sound: nobody knows beforehand how much will come.
constexpr std::int64_t blockSamples = std::int64_t(1) << 20;
constexpr AudioSampleEncoding wide{.bytes = 4, .validBits = 32, .bigEndian = std::endian::native == std::endian::big};

// Counts what is read of a source; a decoder hears of a wish to cancel as of a failure.
class CountedSource : public ByteSource {
public:
    CountedSource(const ByteSource &source, Progress &progress) : source_(source), progress_(progress) {
        progress.start(source.size());
    }
    std::int64_t size() const override { return source_.size(); }
    std::size_t read(std::int64_t offset, std::span<std::byte> out) const override {
        const std::size_t count = source_.read(offset, out);
        progress_.add(std::int64_t(count));
        return count;
    }

private:
    const ByteSource &source_;
    Progress &progress_;
};

// Only what comes back exactly has a depth worth telling.
std::string bitsDescription(const DecodedFormat &format) {
    if (format.bits == 0) return "";
    return std::to_string(format.bits) + (format.isFloat ? "-bit float" : "-bit");
}

AudioFileContents described(const DecodedFormat &format, const std::string &path) {
    AudioFileContents contents;
    contents.format = {.container = AudioContainer::coreAudio,
                       .encoding = std::nullopt,
                       .sampleRate = double(format.sampleRate),
                       .typeName = format.typeName,
                       .bitsDescription = bitsDescription(format),
                       .fileExtension = pathExtension(path)};
    contents.coreAudioSettings = {{formatIdentifierKey, format.identifier}, {bitDepthKey, std::to_string(format.bits)}};
    contents.texts = format.texts;
    contents.buffer = AudioEditorBuffer(format.channels, format.sampleRate);
    return contents;
}

class BlockReader {
public:
    explicit BlockReader(DecodedSound &sound)
        : sound_(sound),
          channels_(sound.format().channels),
          samples_(std::max<std::int64_t>(blockSamples / channels_, 1) * channels_) {}

    // Without frames at the end.
    AudioEditorBuffer next() { return sound_.format().isWide() ? nextWide() : nextFloats(); }

private:
    AudioEditorBuffer nextFloats() {
        SampleMemory memory{std::size_t(samples_)};
        const std::int64_t frames = sound_.read(std::span(memory.data(), memory.size()));
        return cut({std::move(memory), channels_, rate()}, frames);
    }

    AudioEditorBuffer nextWide() {
        integers_.resize(std::size_t(samples_));
        const std::int64_t frames = sound_.read(integers_);
        const auto words = std::as_bytes(std::span(integers_).first(std::size_t(frames * channels_)));
        SampleMemory memory{std::size_t(samples_)};
        const std::span decoded(memory.data(), std::size_t(frames * channels_));
        decodeSamples(words, wide, decoded);
        auto residue = std::make_unique<SampleResidue>(wide, samples_);
        residue->keep(0, words, wide, decoded);
        if (residue->isEmpty()) residue.reset();
        return cut({std::move(memory), channels_, rate(), std::move(residue)}, frames);
    }

    std::int64_t rate() const { return sound_.format().sampleRate; }
    static AudioEditorBuffer cut(const AudioEditorBuffer &block, std::int64_t frames) { return block.part({0, frames}); }

    DecodedSound &sound_;
    const std::int64_t channels_, samples_;
    std::vector<std::int32_t> integers_;
};

// Opens the file and reads of it what is wanted.
template <class Result, class Read>
std::optional<Result> withSound(DecodedReader &decoders, const ByteSource &source, Read read) {
    try {
        const auto sound = decoders.open(source);
        if (!sound) return std::nullopt;
        return read(*sound);
    } catch (const DecodeFault &fault) {
        throw AudioFileError::unreadable(fault.what());
    }
}

// For a file that cannot tell.
std::int64_t framesByReading(DecodedReader &decoders, const ByteSource &source) {
    const auto sound = decoders.open(source);
    BlockReader blocks(*sound);
    std::int64_t frames = 0;
    for (AudioEditorBuffer block = blocks.next(); !block.isEmpty(); block = blocks.next()) frames += block.frames();
    return frames;
}

}  // namespace

std::string pathExtension(const std::string &path) {
    const std::string name = path.substr(path.find_last_of('/') + 1);
    const auto dot = name.find_last_of('.');
    return dot == std::string::npos || dot == 0 ? "" : name.substr(dot + 1);
}

std::optional<AudioFileContents> readDecoded(DecodedReader &decoders, const ByteSource &source, const std::string &path,
                                             Progress &progress) {
    const CountedSource counted(source, progress);
    return withSound<AudioFileContents>(decoders, counted, [&](DecodedSound &sound) {
        AudioFileContents contents = described(sound.format(), path);
        AudioEditorBuffer &buffer = contents.buffer;
        BlockReader blocks(sound);
        for (AudioEditorBuffer block = blocks.next(); !block.isEmpty(); block = blocks.next()) {
            buffer = buffer.replacing({buffer.frames(), buffer.frames()}, block);
            progress.throwIfCancelled();
        }
        contents.flacMetadata = AudioFileCodec::flacMetadata(source);
        return contents;
    });
}

std::optional<AudioFileCodec::AudioFileSummary> summarizeDecoded(DecodedReader &decoders, const ByteSource &source,
                                                                 const std::string &path, Progress &progress) {
    using Summary = AudioFileCodec::AudioFileSummary;
    const CountedSource counted(source, progress);
    return withSound<Summary>(decoders, counted, [&](DecodedSound &sound) {
        Summary summary{described(sound.format(), path), 0};
        const auto told = sound.countFrames();
        summary.frames = told ? *told : framesByReading(decoders, counted);
        summary.contents.flacMetadata = AudioFileCodec::flacMetadata(source);
        return summary;
    });
}

}  // namespace kiv
