#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "Audio/Files/AudioFileContents.h"

namespace kiv {

// What 32-bit floats leave out of 32-bit integers and 64-bit floats: for every sample of a file the difference between the word
// that stood there and the one that its float is encoded as. Added to that again, it gives back the file's very bits. Kept only
// for the parts of the file where there is any, and no wider than it has to be: a byte for integers, four for most floats.
class SampleResidue : public SampleOriginals {
public:
    // Samples that are kept or left out together.
    static constexpr std::int64_t partSamples = 32768;

    static bool isNeeded(const AudioSampleEncoding &encoding);
    SampleResidue(const AudioSampleEncoding &encoding, std::int64_t samples);

    // Keeps what `decoded` lacks of `original`, samples in a file's bytes, the first of which is a part's first; nothing or a
    // whole number of parts follows. Several threads may keep different parts at once.
    void keep(std::int64_t first, std::span<const std::byte> original, const AudioSampleEncoding &encoding,
              std::span<const float> decoded);
    bool isEmpty() const;
    // Makes samples as encoded from their floats, from a first one on, what they were. They stay as they are where the encoding
    // is of another kind or width; its byte order may be another.
    void restore(std::int64_t first, const AudioSampleEncoding &encoding, std::span<std::byte> encoded) const;

private:
    struct Part {
        int width = 0;  // of a difference, in bytes: 0, 1, 4 or 8
        std::unique_ptr<std::byte[]> differences;
    };

    AudioSampleEncoding::Kind kind_;
    int bytes_;
    std::vector<Part> parts_;
};

}  // namespace kiv
