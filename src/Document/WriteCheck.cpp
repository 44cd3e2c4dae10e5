#include "Document/WriteCheck.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>
#include <type_traits>
#include <vector>

#include "Audio/Files/AudioFileCodec.h"
#include "Audio/Files/FlacBlockCheck.h"
#include "Audio/Files/FlacFrames.h"
#include "Audio/Files/StoredSamples.h"
#include "Support/Parallel.h"

namespace kiv {
namespace {

using Image = AudioFileCodec::AudioFileImage;

bool isFlac(const AudioFileContents &contents) { return !contents.wrapping; }

// How the samples stand in the file.
AudioSampleEncoding encodingOf(const AudioFileContents &contents) {
    if (contents.wrapping) return contents.wrapping->encoding;
    const int bits = std::stoi(contents.decodedSetting(bitDepthKey));
    return {.bytes = (bits + 7) / 8, .validBits = bits, .bigEndian = std::endian::native == std::endian::big};
}

// What comes of the decoder when all is well, as the kind of samples that it gives.
template <class Sample>
class Expected {
public:
    explicit Expected(const AudioFileContents &contents)
        : buffer_(contents.buffer), encoding_(encodingOf(contents)), isFlac_(isFlac(contents)) {}

    void put(FrameRange part, std::span<Sample> out) const {
        if (hasOddBits()) return putOdd(part, out);
        if constexpr (std::is_same_v<Sample, float>)
            storedSamples(buffer_, part, encoding_, out);
        else
            AudioFileCodec::encodeSamples(buffer_, part, wholeWords, std::as_writable_bytes(out));
    }

private:
    static constexpr AudioSampleEncoding wholeWords{
        .bytes = 4, .validBits = 32, .bigEndian = std::endian::native == std::endian::big};

    bool hasOddBits() const { return isFlac_ && encoding_.validBits != 8 * encoding_.bytes; }

    void putOdd(FrameRange part, std::span<Sample> out) const {
        const int bits = encoding_.validBits;
        const std::vector<std::int32_t> integers = integersOf(buffer_, part, bits);
        std::transform(integers.begin(), integers.end(), out.begin(), [=](std::int32_t integer) {
            const auto word = std::int32_t(std::uint32_t(integer) << (32 - bits));
            return std::is_same_v<Sample, float> ? Sample(float(word) * 0x1p-31f) : Sample(word);
        });
    }

    const AudioEditorBuffer &buffer_;
    AudioSampleEncoding encoding_;
    bool isFlac_;
};

// Whether the sound goes on with just these frames, and ends with them.
template <class Sample>
bool holdsOnly(DecodedSound &sound, FrameRange part, const AudioFileContents &contents, Progress &progress) {
    constexpr std::int64_t blockFrames = 1 << 14;
    const Expected<Sample> expected(contents);
    const auto channels = std::size_t(contents.buffer.channels());
    std::vector<Sample> found(blockFrames * channels), wanted(blockFrames * channels);
    for (FrameRange block{part.lo, part.lo}; block.hi < part.hi;) {
        block = {block.hi, std::min(block.hi + blockFrames, part.hi)};
        const std::size_t count = std::size_t(block.count()) * channels;
        if (sound.read(std::span(found).first(count)) != block.count()) return false;
        expected.put(block, std::span(wanted).first(count));
        if (std::memcmp(found.data(), wanted.data(), count * sizeof(Sample)) != 0) return false;
        progress.add(block.count());
    }
    if (sound.read(std::span(found).first(channels)) != 0) return false;
    const DecodedEnd end = sound.end();
    return end.damagedFrames == 0 && end.frame.value_or(part.hi) == part.hi;
}

bool holds(DecodedSound &sound, FrameRange part, const AudioFileContents &contents, Progress &progress) {
    return (sound.format().isWide() ? holdsOnly<std::int32_t> : holdsOnly<float>)(sound, part, contents, progress);
}

bool hasFormat(const DecodedFormat &format, const AudioFileContents &contents) {
    const AudioEditorBuffer &buffer = contents.buffer;
    const bool hasBits = !isFlac(contents) || format.bits == encodingOf(contents).validBits;
    return format.channels == buffer.channels() && format.sampleRate == buffer.sampleRate() && hasBits;
}

// A file without what stands between its start and a later place, and behind another: of a FLAC file a stream that starts and
// ends at any of its blocks.
class Excerpt : public ByteSource {
public:
    Excerpt(const ByteSource &whole, std::int64_t startSize, std::int64_t from, std::int64_t to)
        : whole_(whole), startSize_(startSize), from_(from), to_(to) {}

    std::int64_t size() const override { return startSize_ + to_ - from_; }
    std::size_t read(std::int64_t offset, std::span<std::byte> out) const override {
        if (offset >= startSize_) return readRest(offset, out);
        const auto start = out.first(std::min(out.size(), std::size_t(startSize_ - offset)));
        const std::size_t count = whole_.read(offset, start);
        return count < start.size() ? count : count + readRest(startSize_, out.subspan(count));
    }

private:
    std::size_t readRest(std::int64_t offset, std::span<std::byte> out) const {
        const std::int64_t left = std::max<std::int64_t>(size() - offset, 0);
        return whole_.read(from_ + offset - startSize_, out.first(std::min(out.size(), std::size_t(left))));
    }

    const ByteSource &whole_;
    const std::int64_t startSize_, from_, to_;
};

// A decoder reads the start, the end and samples between them, and all of a short sound; the blocks of the rest are compared as
// they stand.
class FlacCheck {
public:
    FlacCheck(DecodedReader &decoders, const ByteSource &written, const AudioFileContents &contents, const Image &image,
              Progress &progress)
        : decoders_(decoders),
          written_(written),
          contents_(contents),
          image_(image),
          progress_(progress),
          encoding_(encodingOf(contents)) {
        const std::int64_t frames = contents.buffer.frames();
        encoding_.bigEndian = true;
        offsets_.push_back(image.samplesOffset());
        for (std::int64_t at = 0; at < frames; at += partFrames)
            offsets_.push_back(offsets_.back() + image.samplesSize({at, std::min(at + partFrames, frames)}));
    }

    bool passes() {
        parallelFor(parts(), 1, [&](std::int64_t part, std::int64_t) {
            if (isRight_ && !(isDecoded(part) ? decodesTo(part) : holdsBlocks(part))) isRight_ = false;
        });
        return isRight_;
    }

private:
    static constexpr std::int64_t blockFrames = FlacFrames::frameSamples, partFrames = 64 * blockFrames;

    std::int64_t parts() const { return std::int64_t(offsets_.size()) - 1; }
    FrameRange framesOf(std::int64_t part) const {
        return {part * partFrames, std::min((part + 1) * partFrames, contents_.buffer.frames())};
    }
    bool isDecoded(std::int64_t part) const {
        constexpr std::int64_t few = 4, every = 16;
        const bool isWhole = encoding_.validBits == 8 * encoding_.bytes;
        return !isWhole || parts() <= few || part % every == 0 || part == parts() - 1;
    }

    bool decodesTo(std::int64_t part) {
        const Excerpt excerpt(written_, offsets_[0], offsets_[std::size_t(part)], offsets_[std::size_t(part) + 1]);
        const auto sound = decoders_.open(excerpt);
        return sound && hasFormat(sound->format(), contents_) && holds(*sound, framesOf(part), contents_, progress_);
    }

    bool holdsBlocks(std::int64_t part) {
        const FlacBlockCheck check(bytesOf({0, blockFrames}, offsets_[0]), blockFrames, contents_.buffer.channels(),
                                   encoding_.bytes);
        std::int64_t offset = offsets_[std::size_t(part)];
        Bytes samples;
        const FrameRange frames = framesOf(part);
        for (FrameRange block{frames.lo, frames.lo}; block.hi < frames.hi;) {
            block = {block.hi, std::min(block.hi + blockFrames, frames.hi)};
            samples.resize(std::size_t(block.count() * contents_.buffer.channels() * encoding_.bytes));
            AudioFileCodec::encodeSamples(contents_.buffer, block, encoding_, samples);
            const Bytes bytes = bytesOf(block, offset);
            if (!check.holds(bytes, block.lo / blockFrames, samples)) return false;
            offset += std::int64_t(bytes.size());
            progress_.add(block.count());
        }
        return true;
    }

    Bytes bytesOf(FrameRange block, std::int64_t offset) const {
        Bytes bytes(std::size_t(image_.samplesSize(block)));
        bytes.resize(written_.read(offset, bytes));
        return bytes;
    }

    DecodedReader &decoders_;
    const ByteSource &written_;
    const AudioFileContents &contents_;
    const Image &image_;
    Progress &progress_;
    AudioSampleEncoding encoding_;
    std::vector<std::int64_t> offsets_;  // of the parts in the file, and of their end
    std::atomic<bool> isRight_ = true;
};

bool hasBytes(const ByteSource &source, std::int64_t offset, const Bytes &bytes) {
    Bytes found(bytes.size());
    return source.read(offset, found) == bytes.size() && found == bytes;
}

bool hasFlacMetadata(const ByteSource &written, const AudioFileContents &contents) {
    return AudioFileCodec::flacMetadata(written) == contents.flacMetadata && hasBytes(written, 0, contents.leading) &&
           hasBytes(written, written.size() - std::int64_t(contents.trailing.size()), contents.trailing);
}

bool isFlacAsWritten(DecodedReader &decoders, const ByteSource &written, const AudioFileContents &contents, const Image &image,
                     Progress &progress) {
    const auto sound = decoders.open(written);
    if (!sound || !hasFormat(sound->format(), contents) || !hasFlacMetadata(written, contents)) return false;
    if (contents.buffer.isEmpty()) return holds(*sound, {0, 0}, contents, progress);
    return FlacCheck(decoders, written, contents, image, progress).passes();
}

// The samples as they stand in the file.
bool holdsBytes(const ByteSource &written, const AudioFileContents &contents, const Image &image, Progress &progress) {
    constexpr std::int64_t blockFrames = 1 << 16;
    const AudioSampleEncoding &encoding = contents.wrapping->encoding;
    const std::int64_t frames = contents.buffer.frames();
    std::int64_t offset = image.samplesOffset();
    Bytes expected;
    for (FrameRange block{0, 0}; block.hi < frames;) {
        block = {block.hi, std::min(block.hi + blockFrames, frames)};
        expected.resize(std::size_t(block.count() * contents.buffer.channels() * encoding.bytes));
        AudioFileCodec::encodeSamples(contents.buffer, block, encoding, expected);
        if (!hasBytes(written, offset, expected)) return false;
        offset += std::int64_t(expected.size());
        progress.add(block.count());
    }
    return true;
}

// Whether a decoder takes the file for what we take it for: some know little of these kinds of files, and some take what stands
// behind the last sample for more of them. Of RIFX files none can be asked: behind a chunk whose numbers it takes for
// little-endian, the one there is takes the samples for it too.
bool knowsAs(DecodedSound &sound, const AudioFileContents &contents) {
    const AudioSampleEncoding &encoding = contents.wrapping->encoding;
    const DecodedFormat &format = sound.format();
    const bool isFloat = encoding.kind == AudioSampleEncoding::Kind::floating;
    return contents.wrapping->kind != SampleWrapping::Kind::rifx && format.bits == encoding.bytes * 8 &&
           format.isFloat == isFloat && hasFormat(format, contents) && sound.countFrames() == contents.buffer.frames();
}

bool isDecodedAsWritten(DecodedReader &decoders, const ByteSource &written, const AudioFileContents &contents,
                        Progress &progress) {
    try {
        const auto known = decoders.open(written);
        if (!known || !knowsAs(*known, contents)) return true;
        const auto sound = decoders.open(written);
        return sound && holds(*sound, {0, contents.buffer.frames()}, contents, progress);
    } catch (const DecodeFault &) {
        return true;
    }
}

// What stands around the samples is found again as it was written, and whoever else knows the file finds the same samples.
bool isWrappedAsWritten(DecodedReader *decoders, const ByteSource &written, const AudioFileContents &contents,
                        const Image &image, Progress &progress) {
    const AudioEditorBuffer &buffer = contents.buffer;
    const auto found = AudioFileCodec::summarizeWrapped(written);
    if (!found || found->frames != buffer.frames() || found->contents.wrapping->encoding != contents.wrapping->encoding)
        return false;
    const AudioEditorBuffer &shape = found->contents.buffer;
    if (shape.channels() != buffer.channels() || shape.sampleRate() != buffer.sampleRate()) return false;
    return holdsBytes(written, contents, image, progress) &&
           (!decoders || isDecodedAsWritten(*decoders, written, contents, progress));
}

}  // namespace

bool readsBack(DecodedReader *decoders, const ByteSource &written, const AudioFileContents &contents, const Image &image,
               Progress &progress) {
    progress.start(contents.buffer.frames() * (contents.wrapping && decoders ? 2 : 1));
    if (written.size() != image.size()) return false;
    if (contents.wrapping) return isWrappedAsWritten(decoders, written, contents, image, progress);
    try {
        return decoders && isFlacAsWritten(*decoders, written, contents, image, progress);
    } catch (const DecodeFault &) {
        return false;
    }
}

}  // namespace kiv
