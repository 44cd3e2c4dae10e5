#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "Audio/Files/AudioFileContents.h"
#include "Audio/Files/SampleCoder.h"
#include "Support/ByteSource.h"
#include "Support/Progress.h"

namespace kiv::AudioFileCodec {

// A file ready to be written: what stands before and after the samples, made in advance, so that the size is known and every
// error is out before the first byte is written; the samples are encoded while they are written.
class AudioFileImage {
public:
    struct Piece {
        Bytes bytes;           // written first
        bool samples = false;  // then the encoded samples follow
    };

    AudioFileImage(std::vector<Piece> pieces, std::shared_ptr<const SampleCoder> samples);

    std::int64_t size() const;
    // Where in the file the encoded samples start, and how many bytes those of a part take. A part starts at a multiple of
    // blockFrames(), and ends at one or at the end of the sound.
    std::int64_t samplesOffset() const;
    std::int64_t samplesSize(FrameRange part) const { return samples_->size(part); }
    std::int64_t blockFrames() const { return samples_->blockFrames(); }
    // Encodes on all cores in blocks and writes in order, one write at a time but not all from the calling thread. Counts the
    // bytes written. Throws what the sink throws, and Cancelled.
    void writeTo(ByteSink &sink, Progress *progress = nullptr) const;
    // The whole file at once.
    Bytes bytes() const;

private:
    std::vector<Piece> pieces_;
    std::shared_ptr<const SampleCoder> samples_;
};

}  // namespace kiv::AudioFileCodec
