#include "Audio/Files/StoredSamples.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "Audio/Files/AudioFileCodec.h"
#include "Audio/Files/SampleDecoding.h"

namespace kiv {
namespace {

std::int32_t rounded(float sample, double fullScale) {
    if (!std::isfinite(sample)) return 0;
    return std::int32_t(std::clamp(std::round(double(sample) * fullScale), -fullScale, fullScale - 1));
}

// The top bits of a 32-bit word.
std::int32_t rounded(std::int32_t word, int bits) {
    if (bits == 32) return word;
    const std::int64_t step = std::int64_t(1) << (32 - bits), half = word < 0 ? -step / 2 : step / 2;
    return std::int32_t(std::min((word + half) / step, (std::int64_t(1) << (bits - 1)) - 1));
}

}  // namespace

std::vector<std::int32_t> integersOf(const AudioEditorBuffer &buffer, FrameRange part, int bits) {
    std::vector<std::int32_t> integers(std::size_t(part.count() * buffer.channels()));
    const double fullScale = std::ldexp(1.0, bits - 1);
    const AudioSampleEncoding wide{.bytes = 4, .validBits = 32, .bigEndian = std::endian::native == std::endian::big};
    auto out = std::span(integers);
    buffer.forEachSpan(part, [&](std::span<const float> samples, FrameRange here) {
        const auto now = out.first(samples.size());
        if (bits > 24 && buffer.hasOriginals(here)) {
            AudioFileCodec::encodeSamples(buffer, here, wide, std::as_writable_bytes(now));
            for (std::int32_t &integer : now) integer = rounded(integer, bits);
        } else {
            std::transform(samples.begin(), samples.end(), now.begin(), [=](float s) { return rounded(s, fullScale); });
        }
        out = out.subspan(samples.size());
    });
    return integers;
}

void storedSamples(const AudioEditorBuffer &buffer, FrameRange part, const AudioSampleEncoding &encoding,
                   std::span<float> out) {
    Bytes bytes(out.size() * std::size_t(encoding.bytes));
    AudioFileCodec::encodeSamples(buffer, part, encoding, bytes);
    decodeSamples(bytes, encoding, out);
}

}  // namespace kiv
