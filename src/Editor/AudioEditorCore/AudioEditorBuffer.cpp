#include "Editor/AudioEditorCore/AudioEditorBuffer.h"

#include <algorithm>

#include "Support/Parallel.h"
#include "Support/Vectorised.h"

namespace kiv {
namespace {

// Neighbouring pieces that both have fewer samples than this become one by copying, so that many small edits in one place do
// not leave a crumb each. A copy is then bounded by twice this length.
constexpr std::int64_t tinyPiece = 8192;
constexpr std::int64_t copyGrain = std::int64_t(1) << 20;

SampleMemory copyOf(const float *samples, std::int64_t count) {
    SampleMemory copy{std::size_t(count)};
    parallelFor(count, copyGrain,
                [&](std::int64_t lo, std::int64_t hi) { std::copy(samples + lo, samples + hi, copy.data() + lo); });
    return copy;
}

KIV_VECTORISED void everySecond(const float *in, std::int64_t count, float *out) {
    for (std::int64_t i = 0; i < count; ++i) out[i] = in[2 * i];
}

void everyNth(const float *in, std::int64_t n, std::int64_t count, float *out) {
    for (std::int64_t i = 0; i < count; ++i) out[i] = in[n * i];
}

}  // namespace

AudioEditorBuffer::AudioEditorBuffer(std::int64_t channels, std::int64_t sampleRate)
    : channels_(std::max<std::int64_t>(channels, 1)), sampleRate_(std::max<std::int64_t>(sampleRate, 1)) {}

AudioEditorBuffer::AudioEditorBuffer(std::span<const float> samples, std::int64_t channels, std::int64_t sampleRate)
    : AudioEditorBuffer(copyOf(samples.data(), std::int64_t(samples.size())), channels, sampleRate) {}

AudioEditorBuffer::AudioEditorBuffer(SampleMemory samples, std::int64_t channels, std::int64_t sampleRate,
                                     std::unique_ptr<const SampleOriginals> originals)
    : AudioEditorBuffer(channels, sampleRate) {
    const std::int64_t frames = std::int64_t(samples.size()) / channels_;
    if (frames == 0) return;
    const auto block = std::make_shared<const Block>(Block{std::move(samples), std::move(originals)});
    setPieces({{block, block->samples.data(), 0, frames}});
}

AudioEditorBuffer &AudioEditorBuffer::operator=(AudioEditorBuffer &&other) noexcept {
    pieces_ = std::move(other.pieces_);
    frames_ = std::exchange(other.frames_, 0);
    channels_ = other.channels_;
    sampleRate_ = other.sampleRate_;
    return *this;
}

std::optional<FrameRange> AudioEditorBuffer::clampedRange(FrameRange range) const {
    const std::int64_t lo = std::max<std::int64_t>(range.lo, 0);
    const std::int64_t hi = std::clamp<std::int64_t>(range.hi, 0, frames_);
    if (lo >= hi) return std::nullopt;
    return FrameRange{lo, hi};
}

float AudioEditorBuffer::sample(std::int64_t frame, std::int64_t channel) const {
    const Piece &piece = (*pieces_)[pieceAt(frame)];
    return piece.samples[(frame - piece.start) * channels_ + channel];
}

void AudioEditorBuffer::copyFrames(FrameRange range, float *out) const {
    forEachSpan(range,
                [&](std::span<const float> samples, FrameRange) { out = std::copy(samples.begin(), samples.end(), out); });
}

void AudioEditorBuffer::copyChannel(FrameRange range, std::int64_t channel, float *out) const {
    if (channels_ == 1) return copyFrames(range, out);
    forEachSpan(range, [&](std::span<const float> samples, FrameRange part) {
        const float *in = samples.data() + channel;
        channels_ == 2 ? everySecond(in, part.count(), out) : everyNth(in, channels_, part.count(), out);
        out += part.count();
    });
}

bool AudioEditorBuffer::hasOriginals(FrameRange range) const {
    return std::ranges::any_of(SampleOriginals::words, [&](auto word) { return hasOriginals(range, word); });
}

bool AudioEditorBuffer::hasOriginals(FrameRange range, SampleOriginals::Word word) const {
    bool has = false;
    forEachPiece(range, [&](const Piece &piece, auto, FrameRange) {
        has = has || (piece.block->originals && piece.block->originals->has(word));
    });
    return has;
}

void AudioEditorBuffer::copyOriginals(FrameRange range, SampleOriginals::Word word, std::int64_t *out) const {
    forEachSpanWithOriginals(range, [&](std::span<const float> samples, const SampleOriginals *originals, std::int64_t first) {
        const std::span here(out, samples.size());
        originals ? originals->read(word, first, here) : void(std::ranges::fill(here, 0));
        out += samples.size();
    });
}

std::vector<float> AudioEditorBuffer::samples() const {
    std::vector<float> all(std::size_t(frames_ * channels_));
    copyFrames({0, frames_}, all.data());
    return all;
}

AudioEditorBuffer AudioEditorBuffer::part(FrameRange range) const {
    Pieces pieces;
    appendTo(pieces, range);
    AudioEditorBuffer result(channels_, sampleRate_);
    result.setPieces(std::move(pieces));
    return result;
}

AudioEditorBuffer AudioEditorBuffer::replacing(FrameRange range, const AudioEditorBuffer &with) const {
    Pieces pieces;
    pieces.reserve((pieces_ ? pieces_->size() + 1 : 0) + (with.pieces_ ? with.pieces_->size() : 0));
    appendTo(pieces, {0, range.lo});
    with.appendTo(pieces, {0, with.frames_});
    appendTo(pieces, {range.hi, frames_});
    AudioEditorBuffer result(channels_, sampleRate_);
    result.setPieces(std::move(pieces));
    return result;
}

AudioEditorBuffer AudioEditorBuffer::atRate(std::int64_t sampleRate) const {
    AudioEditorBuffer result = *this;
    result.sampleRate_ = std::max<std::int64_t>(sampleRate, 1);
    return result;
}

std::int64_t AudioEditorBuffer::sharedPrefix(const AudioEditorBuffer &other) const {
    if (channels_ != other.channels_) return 0;
    const std::int64_t most = std::min(frames_, other.frames_);
    std::int64_t shared = 0;
    for (std::size_t i = 0, j = 0; shared < most;) {
        const Piece &mine = (*pieces_)[i], &theirs = (*other.pieces_)[j];
        if (mine.samples + (shared - mine.start) * channels_ != theirs.samples + (shared - theirs.start) * channels_) break;
        shared = std::min(mine.end(), theirs.end());
        i += shared == mine.end();
        j += shared == theirs.end();
    }
    return shared;
}

std::int64_t AudioEditorBuffer::sharedSuffix(const AudioEditorBuffer &other) const {
    if (channels_ != other.channels_) return 0;
    const std::int64_t most = std::min(frames_, other.frames_);
    std::int64_t shared = 0;
    while (shared < most) {
        const std::int64_t myEnd = frames_ - shared, theirEnd = other.frames_ - shared;
        const Piece &mine = (*pieces_)[pieceAt(myEnd - 1)], &theirs = (*other.pieces_)[other.pieceAt(theirEnd - 1)];
        if (mine.samples + (myEnd - mine.start) * channels_ != theirs.samples + (theirEnd - theirs.start) * channels_) break;
        shared += std::min(myEnd - mine.start, theirEnd - theirs.start);
    }
    return shared;
}

bool operator==(const AudioEditorBuffer &a, const AudioEditorBuffer &b) {
    if (a.channels_ != b.channels_ || a.sampleRate_ != b.sampleRate_ || a.frames_ != b.frames_) return false;
    bool equal = true;
    a.forEachSpan({0, a.frames_}, [&](std::span<const float> mine, FrameRange part) {
        const float *at = mine.data();
        if (!equal) return;
        b.forEachSpan(part, [&](std::span<const float> theirs, FrameRange) {
            equal = equal && (at == theirs.data() || std::equal(theirs.begin(), theirs.end(), at));
            at += theirs.size();
        });
    });
    return equal;
}

std::size_t AudioEditorBuffer::pieceAt(std::int64_t frame) const {
    if (!pieces_) return 0;
    const auto after = std::upper_bound(pieces_->begin(), pieces_->end(), frame,
                                        [](std::int64_t f, const Piece &piece) { return f < piece.start; });
    return std::size_t(after - pieces_->begin()) - 1;
}

void AudioEditorBuffer::appendTo(Pieces &pieces, FrameRange range) const {
    for (std::size_t i = pieceAt(range.lo); range.lo < range.hi; ++i) {
        const Piece &piece = (*pieces_)[i];
        const std::int64_t end = std::min(piece.end(), range.hi);
        merge(pieces, {piece.block, piece.samples + (range.lo - piece.start) * channels_, 0, end - range.lo}, channels_);
        range.lo = end;
    }
}

// Both tiny, and nothing gets lost.
bool AudioEditorBuffer::canBeCopied(const Piece &a, const Piece &b, std::int64_t channels) {
    return std::max(a.frames, b.frames) * channels < tinyPiece && !a.block->originals && !b.block->originals;
}

// Puts a piece behind the others: as one with the last where both are neighbours in memory too, or by copying.
void AudioEditorBuffer::merge(Pieces &pieces, Piece piece, std::int64_t channels) {
    piece.start = pieces.empty() ? 0 : pieces.back().end();
    if (pieces.empty()) return pieces.push_back(std::move(piece));
    Piece &last = pieces.back();
    if (last.block == piece.block && last.samples + last.frames * channels == piece.samples) {
        last.frames += piece.frames;
    } else if (canBeCopied(last, piece, channels)) {
        SampleMemory both{std::size_t((last.frames + piece.frames) * channels)};
        float *middle = std::copy_n(last.samples, last.frames * channels, both.data());
        std::copy_n(piece.samples, piece.frames * channels, middle);
        const auto block = std::make_shared<const Block>(Block{std::move(both), nullptr});
        last = {block, block->samples.data(), last.start, last.frames + piece.frames};
    } else {
        pieces.push_back(std::move(piece));
    }
}

void AudioEditorBuffer::setPieces(Pieces pieces) {
    frames_ = pieces.empty() ? 0 : pieces.back().end();
    pieces_ = pieces.empty() ? nullptr : std::make_shared<const Pieces>(std::move(pieces));
}

}  // namespace kiv
