#include "Audio/Files/AudioFileImage.h"

#include <algorithm>
#include <span>
#include <utility>

#include "Support/Parallel.h"

namespace kiv::AudioFileCodec {
namespace {

// Blocks that are encoded side by side before they are written.
constexpr std::int64_t batchBlocks = 16;
constexpr std::int64_t stepBytes = std::int64_t(1) << 22;

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
        for (; bytes.size() > std::size_t(stepBytes); bytes = bytes.subspan(std::size_t(stepBytes)))
            write(bytes.first(std::size_t(stepBytes)));
        write(bytes);
    }

private:
    ByteSink &sink_;
    Progress *progress_;
};

// Two batches take turns: while one is written by one core, the others encode the next.
class SamplePipeline {
public:
    explicit SamplePipeline(const SampleCoder &samples) : samples_(samples), grain_(samples.blockFrames()) {}

    void writeTo(CountingSink &sink) {
        for (FrameRange next = framesAfter(0); !writing_.empty() || !next.isEmpty(); next = framesAfter(next.hi)) {
            encodeWhileWriting(next, sink);
            std::swap(writing_, encoded_);
        }
    }

private:
    FrameRange framesAfter(std::int64_t frame) const {
        return {frame, std::min(frame + batchBlocks * grain_, samples_.frames())};
    }

    // The first of them writes, the others encode.
    void encodeWhileWriting(FrameRange range, CountingSink &sink) {
        const std::int64_t blocks = (range.count() + grain_ - 1) / grain_;
        encoded_.resize(std::size_t(samples_.size(range)));
        parallelFor(blocks + 1, 1, [&](std::int64_t part, std::int64_t) {
            if (part == 0) return sink.write(writing_);
            const FrameRange block{range.lo + (part - 1) * grain_, std::min(range.lo + part * grain_, range.hi)};
            const auto behind = std::span(encoded_).subspan(std::size_t(samples_.size({range.lo, block.lo})));
            samples_.encode(block, behind.first(std::size_t(samples_.size(block))));
        });
    }

    const SampleCoder &samples_;
    const std::int64_t grain_;
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

AudioFileImage::AudioFileImage(std::vector<Piece> pieces, std::shared_ptr<const SampleCoder> samples)
    : pieces_(std::move(pieces)), samples_(std::move(samples)) {}

std::int64_t AudioFileImage::size() const {
    const std::int64_t sampleBytes = samples_->size({0, samples_->frames()});
    std::int64_t total = 0;
    for (const Piece &piece : pieces_) total += std::int64_t(piece.bytes.size()) + (piece.samples ? sampleBytes : 0);
    return total;
}

std::int64_t AudioFileImage::samplesOffset() const {
    std::int64_t offset = 0;
    for (const Piece &piece : pieces_) {
        offset += std::int64_t(piece.bytes.size());
        if (piece.samples) break;
    }
    return offset;
}

void AudioFileImage::writeTo(ByteSink &sink, Progress *progress) const {
    if (progress) progress->start(size());
    CountingSink counting(sink, progress);
    for (const Piece &piece : pieces_) {
        counting.writeInSteps(piece.bytes);
        if (piece.samples) SamplePipeline(*samples_).writeTo(counting);
    }
}

Bytes AudioFileImage::bytes() const {
    BytesSink sink(size());
    writeTo(sink);
    return sink.take();
}

}  // namespace kiv::AudioFileCodec
