#pragma once

#include "Audio/Files/AudioFileContents.h"
#include "Audio/Files/SampleCoder.h"

namespace kiv {

// Samples as WAV and AIFF files hold them.
class PcmSamples : public SampleCoder {
public:
    PcmSamples(AudioEditorBuffer buffer, AudioSampleEncoding encoding);

    std::int64_t frames() const override { return buffer_.frames(); }
    std::int64_t blockFrames() const override;
    std::int64_t size(FrameRange part) const override { return part.count() * frameBytes_; }
    void encode(FrameRange part, std::span<std::byte> out) const override;

private:
    AudioEditorBuffer buffer_;
    AudioSampleEncoding encoding_;
    std::int64_t frameBytes_;
};

}  // namespace kiv
