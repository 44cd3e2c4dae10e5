#include "Document/DecodedFile.h"

#include <algorithm>
#include <vector>

#include "Audio/Files/FlacMetadata.h"
#include "Audio/Files/SampleDecoding.h"
#include "Audio/Files/SampleResidue.h"
#include "Audio/Files/SampleWrapping.h"

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

std::string extensionOf(const std::string &path) {
    const std::string name = path.substr(path.find_last_of('/') + 1);
    const auto dot = name.find_last_of('.');
    return dot == std::string::npos || dot == 0 ? "" : name.substr(dot + 1);
}

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
                       .fileExtension = extensionOf(path)};
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

bool hasSameSamples(const WrappedFile &file, const DecodedFormat &format) {
    const AudioSampleEncoding &encoding = file.wrapping.encoding;
    const bool isFloat = encoding.kind == AudioSampleEncoding::Kind::floating;
    return format.channels == file.wrapping.channels && format.sampleRate == file.sampleRate &&
           format.bits == encoding.bytes * 8 && format.isFloat == isFloat;
}

struct KnownFile {
    WrappedFile file;
    bool canBeWritten = false;  // the decoder, which looks at what was written, finds in it what we find
};

// A file in which we know our way about as well as the decoder does, or better: what stands behind the samples of a W64 file is
// more of them to some.
std::optional<KnownFile> knownFile(std::optional<WrappedFile> file, DecodedSound &sound) {
    if (!file || !hasSameSamples(*file, sound.format())) return std::nullopt;
    const std::int64_t told = sound.countFrames().value_or(0), frames = file->audio.frames;
    if (told < frames) return std::nullopt;
    return KnownFile{std::move(*file), told == frames};
}

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

// Its samples are read as ours are: with nothing rounded.
std::optional<AudioFileContents> readKnown(DecodedReader &decoders, const ByteSource &source, const ByteSource &counted,
                                           const std::string &path) {
    auto found = findWrapping(SourceReader(source));
    if (!found) return std::nullopt;
    return withSound<AudioFileContents>(decoders, source, [&](DecodedSound &sound) -> std::optional<AudioFileContents> {
        auto known = knownFile(std::move(found), sound);
        if (!known) return std::nullopt;
        WrappedFile &file = known->file;
        AudioFileContents contents = described(sound.format(), path);
        contents.buffer =
            readSamples(SourceReader(counted), file.audio, file.wrapping.encoding, file.wrapping.channels, file.sampleRate);
        if (known->canBeWritten) contents.wrapping = std::move(file.wrapping);
        return contents;
    });
}

void takeFaults(AudioFileContents &contents, const DecodedEnd &end) {
    contents.missingFrames = end.missingFrames;
    contents.damagedFrames = end.damagedFrames;
}

void takeEnd(AudioFileContents &contents, const DecodedEnd &end, const ByteSource &source) {
    takeFaults(contents, end);
    const bool isFlac = contents.decodedSetting(formatIdentifierKey) == "flac";
    if (isFlac) contents.flacMetadata = AudioFileCodec::flacMetadata(source);
    if (isFlac && end.offset) keepAroundFlac(contents, source, *end.offset);
}

// For a file that cannot tell.
std::int64_t framesByReading(DecodedReader &decoders, const ByteSource &source, AudioFileContents &contents) {
    const auto sound = decoders.open(source);
    BlockReader blocks(*sound);
    std::int64_t frames = 0;
    for (AudioEditorBuffer block = blocks.next(); !block.isEmpty(); block = blocks.next()) frames += block.frames();
    takeFaults(contents, sound->end());
    return frames;
}

}  // namespace

std::optional<AudioFileContents> readDecoded(DecodedReader &decoders, const ByteSource &source, const std::string &path,
                                             Progress &progress) {
    const CountedSource counted(source, progress);
    if (auto known = readKnown(decoders, source, counted, path)) return known;
    return withSound<AudioFileContents>(decoders, counted, [&](DecodedSound &sound) {
        AudioFileContents contents = described(sound.format(), path);
        AudioEditorBuffer &buffer = contents.buffer;
        BlockReader blocks(sound);
        for (AudioEditorBuffer block = blocks.next(); !block.isEmpty(); block = blocks.next()) {
            buffer = buffer.replacing({buffer.frames(), buffer.frames()}, block);
            progress.throwIfCancelled();
        }
        takeEnd(contents, sound.end(), source);
        return contents;
    });
}

std::optional<AudioFileCodec::AudioFileSummary> summarizeDecoded(DecodedReader &decoders, const ByteSource &source,
                                                                 const std::string &path, Progress &progress) {
    using Summary = AudioFileCodec::AudioFileSummary;
    const CountedSource counted(source, progress);
    return withSound<Summary>(decoders, counted, [&](DecodedSound &sound) {
        Summary summary{described(sound.format(), path), 0};
        if (auto known = knownFile(findWrapping(SourceReader(source)), sound)) {
            summary.frames = known->file.audio.frames;
            if (known->canBeWritten) summary.contents.wrapping = std::move(known->file.wrapping);
            return summary;
        }
        const auto told = sound.countFrames();
        summary.frames = told ? *told : framesByReading(decoders, counted, summary.contents);
        summary.contents.flacMetadata = AudioFileCodec::flacMetadata(source);
        return summary;
    });
}

}  // namespace kiv
