#include "Audio/Files/AudioFileImage.h"

#include <algorithm>
#include <span>
#include <utility>

#include "Audio/Files/AudioFileCodec.h"
#include "Support/Parallel.h"

namespace kiv::AudioFileCodec {
namespace {

// What one core encodes at a time, and what is written at a time.
constexpr std::int64_t blockBytes = std::int64_t(1) << 18;
constexpr std::int64_t batchBytes = 16 * blockBytes;

// Writes and counts. A wish to cancel is heard between two writes.
class CountingSink {
public:
    CountingSink(ByteSink &sink, Progress *progress) : sink_(sink), progress_(progress) {}

    void write(std::span<const std::byte> bytes) {
        if (bytes.empty()) return;
        sink_.write(bytes);
        if (progress_) progress_->add(std::int64_t(bytes.size()));
    }

    void writeInSteps(std::span<const std::byte> bytes) {
        for (; bytes.size() > std::size_t(batchBytes); bytes = bytes.subspan(std::size_t(batchBytes)))
            write(bytes.first(std::size_t(batchBytes)));
        write(bytes);
    }

private:
    ByteSink &sink_;
    Progress *progress_;
};

// Two batches take turns: while one is written by one core, the others encode the next.
class SamplePipeline {
public:
    SamplePipeline(const AudioEditorBuffer &buffer, const AudioSampleEncoding &encoding)
        : buffer_(buffer), encoding_(encoding), frameBytes_(buffer.channels() * encoding.bytes) {}

    void writeTo(CountingSink &sink) {
        for (FrameRange next = framesAfter(0); !writing_.empty() || !next.isEmpty(); next = framesAfter(next.hi)) {
            encodeWhileWriting(next, sink);
            std::swap(writing_, encoded_);
        }
    }

private:
    FrameRange framesAfter(std::int64_t frame) const {
        const std::int64_t count = std::max<std::int64_t>(batchBytes / frameBytes_, 1);
        return {frame, std::min(frame + count, buffer_.frames())};
    }

    // The first of them writes, the others encode.
    void encodeWhileWriting(FrameRange range, CountingSink &sink) {
        const std::int64_t grain = std::max<std::int64_t>(blockBytes / frameBytes_, 1);
        const std::int64_t blocks = (range.count() + grain - 1) / grain;
        encoded_.resize(std::size_t(range.count() * frameBytes_));
        parallelFor(blocks + 1, 1, [&](std::int64_t part, std::int64_t) {
            if (part == 0) return sink.write(writing_);
            const FrameRange block{range.lo + (part - 1) * grain, std::min(range.lo + part * grain, range.hi)};
            const auto out = std::span(encoded_).subspan(std::size_t((block.lo - range.lo) * frameBytes_),
                                                         std::size_t(block.count() * frameBytes_));
            encodeSamples(buffer_, block, encoding_, out);
        });
    }

    const AudioEditorBuffer &buffer_;
    const AudioSampleEncoding &encoding_;
    const std::int64_t frameBytes_;
    Bytes writing_, encoded_;
};

// For files small enough to be built in memory.
class BytesSink : public ByteSink {
public:
    explicit BytesSink(std::int64_t size) { bytes_.reserve(std::size_t(size)); }
    void write(std::span<const std::byte> bytes) override { bytes_.insert(bytes_.end(), bytes.begin(), bytes.end()); }
    Bytes take() { return std::move(bytes_); }

private:
    Bytes bytes_;
};

}  // namespace

AudioFileImage::AudioFileImage(std::vector<Piece> pieces, AudioEditorBuffer buffer, AudioSampleEncoding encoding)
    : pieces_(std::move(pieces)), buffer_(std::move(buffer)), encoding_(encoding) {}

std::int64_t AudioFileImage::size() const {
    const std::int64_t sampleBytes = buffer_.frames() * buffer_.channels() * encoding_.bytes;
    std::int64_t total = 0;
    for (const Piece &piece : pieces_) total += std::int64_t(piece.bytes.size()) + (piece.samples ? sampleBytes : 0);
    return total;
}

void AudioFileImage::writeTo(ByteSink &sink, Progress *progress) const {
    if (progress) progress->start(size());
    CountingSink counting(sink, progress);
    for (const Piece &piece : pieces_) {
        counting.writeInSteps(piece.bytes);
        if (piece.samples) SamplePipeline(buffer_, encoding_).writeTo(counting);
    }
}

Bytes AudioFileImage::bytes() const {
    BytesSink sink(size());
    writeTo(sink);
    return sink.take();
}

}  // namespace kiv::AudioFileCodec
