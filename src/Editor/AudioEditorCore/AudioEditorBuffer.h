#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "Editor/AudioEditorCore/FrameRange.h"
#include "Editor/AudioEditorCore/SampleOriginals.h"
#include "Support/SampleMemory.h"

namespace kiv {

// A sound in memory: interleaved 32-bit float frames (the sample of channel c in frame f follows f · channels + c others; full
// scale is ±1.0), a channel count of at least 1 and a rate in whole hertz of at least 1.
//
// A value: copying one never shows in the other. The samples themselves stand in immutable blocks that copies share, and a
// buffer is a sequence of pieces of such blocks, so that cutting, inserting or changing a part costs what the part costs and
// not what the sound costs. Reading goes through spans, copies or single samples; nobody sees the pieces. A buffer may be read
// by several threads at once.
class AudioEditorBuffer {
public:
    // No frames.
    explicit AudioEditorBuffer(std::int64_t channels = 1, std::int64_t sampleRate = 44100);
    // Copies the samples; a trailing incomplete frame is left out.
    AudioEditorBuffer(std::span<const float> samples, std::int64_t channels, std::int64_t sampleRate);
    // Takes the block over without copying it; a trailing incomplete frame is left out. Where there are originals, they are
    // counted as the samples are.
    AudioEditorBuffer(SampleMemory samples, std::int64_t channels, std::int64_t sampleRate,
                      std::unique_ptr<const SampleOriginals> originals = nullptr);

    AudioEditorBuffer(const AudioEditorBuffer &) = default;
    AudioEditorBuffer &operator=(const AudioEditorBuffer &) = default;
    // What was moved from has no frames.
    AudioEditorBuffer(AudioEditorBuffer &&other) noexcept
        : pieces_(std::move(other.pieces_)),
          frames_(std::exchange(other.frames_, 0)),
          channels_(other.channels_),
          sampleRate_(other.sampleRate_) {}
    AudioEditorBuffer &operator=(AudioEditorBuffer &&other) noexcept;
    ~AudioEditorBuffer() = default;

    std::int64_t frames() const { return frames_; }
    std::int64_t channels() const { return channels_; }
    std::int64_t sampleRate() const { return sampleRate_; }
    bool isEmpty() const { return frames_ == 0; }

    // The part of a range that lies inside the sound; nothing when that is empty. The bounds may be any numbers.
    std::optional<FrameRange> clampedRange(FrameRange range) const;

    // One sample. The frame and the channel must exist. Takes a search over the pieces: not for inner loops.
    float sample(std::int64_t frame, std::int64_t channel) const;

    // Calls visit(samples, range) for consecutive parts that together cover the range, which must lie inside the sound;
    // `samples` are the interleaved samples of the frames of that part. A part ends where a piece does.
    template <class Visit>
    void forEachSpan(FrameRange range, Visit visit) const {
        forEachPiece(range, [&](const Piece &, std::span<const float> samples, FrameRange part) { visit(samples, part); });
    }
    // The same as visit(samples, originals, first): what the samples were made from, null for nothing, and which of those
    // belongs to the first sample.
    template <class Visit>
    void forEachSpanWithOriginals(FrameRange range, Visit visit) const {
        forEachPiece(range, [&](const Piece &piece, std::span<const float> samples, FrameRange) {
            visit(samples, piece.block->originals.get(), std::int64_t(samples.data() - piece.block->samples.data()));
        });
    }
    // All of the sound as visit(block, first, samples, originals): who keeps account of samples knows them again by the block
    // that holds them, for as long as it lives, and by the number of the first in it.
    template <class Visit>
    void forEachBlock(Visit visit) const {
        forEachPiece({0, frames_}, [&](const Piece &piece, std::span<const float> samples, FrameRange) {
            visit(std::shared_ptr<const void>(piece.block), std::int64_t(samples.data() - piece.block->samples.data()), samples,
                  static_cast<const SampleOriginals *>(piece.block->originals.get()));
        });
    }
    // Whether any sample of a range, which must lie inside the sound, has originals, of any or one kind of word.
    bool hasOriginals(FrameRange range) const;
    bool hasOriginals(FrameRange range, SampleOriginals::Word word) const;
    // Copies what floats leave out of the samples of a range, which must lie inside the sound, to out (range.count() · channels
    // differences); 0 for samples of which nothing is known.
    void copyOriginals(FrameRange range, SampleOriginals::Word word, std::int64_t *out) const;

    // Copies the interleaved samples of a range, which must lie inside the sound, to out (range.count() · channels floats).
    void copyFrames(FrameRange range, float *out) const;
    // Copies one channel of a range, which must lie inside the sound, to out (range.count() floats).
    void copyChannel(FrameRange range, std::int64_t channel, float *out) const;
    // All interleaved samples in one array: for tests and small sounds.
    std::vector<float> samples() const;

    // The frames of a range, which must lie inside the sound. Shares the samples.
    AudioEditorBuffer part(FrameRange range) const;
    // This sound with the frames of a range, which must lie inside it and may be empty, replaced by another sound of the same
    // channel count; the rate stays. Shares the samples of both.
    AudioEditorBuffer replacing(FrameRange range, const AudioEditorBuffer &with) const;
    // The same samples, said to be of another rate.
    AudioEditorBuffer atRate(std::int64_t sampleRate) const;

    // How many leading (trailing) frames of both are certainly the same because they share memory: tells cheaply how much of a
    // sound an edit has touched. 0 when the channel counts differ.
    std::int64_t sharedPrefix(const AudioEditorBuffer &other) const;
    std::int64_t sharedSuffix(const AudioEditorBuffer &other) const;

    // Equal when channels, rate and every sample are equal; what both share is not compared.
    friend bool operator==(const AudioEditorBuffer &a, const AudioEditorBuffer &b);

private:
    struct Block {
        SampleMemory samples;
        std::unique_ptr<const SampleOriginals> originals;
    };
    struct Piece {
        std::shared_ptr<const Block> block;
        const float *samples;  // the piece's first sample, inside the block
        std::int64_t start;    // its first frame in the sound
        std::int64_t frames;

        std::int64_t end() const { return start + frames; }
    };
    using Pieces = std::vector<Piece>;

    template <class Visit>
    void forEachPiece(FrameRange range, Visit visit) const {
        for (std::size_t i = pieceAt(range.lo); range.lo < range.hi; ++i) {
            const Piece &piece = (*pieces_)[i];
            const FrameRange part{range.lo, piece.end() < range.hi ? piece.end() : range.hi};
            const float *first = piece.samples + (part.lo - piece.start) * channels_;
            visit(piece, std::span(first, std::size_t(part.count() * channels_)), part);
            range.lo = part.hi;
        }
    }
    std::size_t pieceAt(std::int64_t frame) const;
    void appendTo(Pieces &pieces, FrameRange range) const;
    static void merge(Pieces &pieces, Piece piece, std::int64_t channels);
    static bool canBeCopied(const Piece &a, const Piece &b, std::int64_t channels);
    void setPieces(Pieces pieces);

    std::shared_ptr<const Pieces> pieces_;  // none when there are no frames
    std::int64_t frames_ = 0;
    std::int64_t channels_ = 1;
    std::int64_t sampleRate_ = 44100;
};

}  // namespace kiv
