#include "Document/FlacCheck.h"

#include <algorithm>
#include <atomic>
#include <vector>

#include "Audio/Files/AudioFileCodec.h"
#include "Audio/Files/FlacBlockCheck.h"
#include "Audio/Files/FlacFrames.h"
#include "Document/DecodedCheck.h"
#include "Support/Parallel.h"

namespace kiv {
namespace {

using Image = AudioFileCodec::AudioFileImage;

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
          encoding_(storedEncoding(contents)) {
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
        return sound && hasFormat(sound->format(), contents_) && holdsOnly(*sound, framesOf(part), contents_, progress_);
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

bool hasFlacMetadata(const ByteSource &written, const AudioFileContents &contents) {
    return AudioFileCodec::flacMetadata(written) == contents.flacMetadata && hasBytes(written, 0, contents.leading) &&
           hasBytes(written, written.size() - std::int64_t(contents.trailing.size()), contents.trailing);
}

}  // namespace

bool isFlacAsWritten(DecodedReader &decoders, const ByteSource &written, const AudioFileContents &contents, const Image &image,
                     Progress &progress) {
    const auto sound = decoders.open(written);
    if (!sound || !hasFormat(sound->format(), contents) || !hasFlacMetadata(written, contents)) return false;
    if (contents.buffer.isEmpty()) return holdsOnly(*sound, {0, 0}, contents, progress);
    return FlacCheck(decoders, written, contents, image, progress).passes();
}

}  // namespace kiv
