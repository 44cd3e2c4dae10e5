#include "Audio/Files/PcmSamples.h"

#include <algorithm>
#include <utility>

#include "Audio/Files/AudioFileCodec.h"

namespace kiv {

PcmSamples::PcmSamples(AudioEditorBuffer buffer, AudioSampleEncoding encoding)
    : buffer_(std::move(buffer)), encoding_(encoding), frameBytes_(buffer_.channels() * encoding.bytes) {}

std::int64_t PcmSamples::blockFrames() const {
    constexpr std::int64_t blockBytes = std::int64_t(1) << 18;
    return std::max<std::int64_t>(blockBytes / frameBytes_, 1);
}

void PcmSamples::encode(FrameRange part, std::span<std::byte> out) const {
    AudioFileCodec::encodeSamples(buffer_, part, encoding_, out);
}

}  // namespace kiv
