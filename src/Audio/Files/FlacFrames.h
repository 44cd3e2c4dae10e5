#pragma once

#include "Audio/Files/AudioFileContents.h"
#include "Audio/Files/SampleCoder.h"

namespace kiv {

// The audio frames of a FLAC stream (RFC 9639) of 4096 samples each, whose channels are stored as they are, without being
// compressed: of known size, made on all cores, and about as fast as copying.
class FlacFrames : public SampleCoder {
public:
    static constexpr std::int64_t frameSamples = 4096;
    static constexpr std::int64_t mostChannels = 8;
    static constexpr std::int64_t highestRate = (1 << 20) - 1;

    // 4 … 32 bits; the buffer's channels and rate are within the limits above.
    FlacFrames(AudioEditorBuffer buffer, int bits);

    std::int64_t frames() const override { return buffer_.frames(); }
    std::int64_t blockFrames() const override;
    std::int64_t size(FrameRange part) const override;
    void encode(FrameRange part, std::span<std::byte> out) const override;

private:
    std::int64_t headerSize(std::int64_t number) const;
    std::int64_t frameSize(std::int64_t number, std::int64_t samples) const;
    void encodeFrame(std::int64_t number, FrameRange part, std::span<std::byte> out) const;

    AudioEditorBuffer buffer_;
    int bits_;
};

}  // namespace kiv
