#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "Audio/Files/AudioFileContents.h"
#include "Editor/AudioEditorCore/SampleOriginals.h"

namespace kiv {

// What 32-bit floats leave out of 32-bit integers and 64-bit floats: for every sample of a file the difference between the word
// that stood there and the one that its float is encoded as. Added to that again, it gives back the file's very bits. It takes
// a byte for integers, four for most floats.
class SampleResidue : public SampleOriginals {
public:
    static bool isNeeded(const AudioSampleEncoding &encoding);
    SampleResidue(const AudioSampleEncoding &encoding, std::int64_t samples);

    // Keeps what `decoded` lacks of `original`, samples in a file's bytes, the first of which is a part's first; nothing or a
    // whole number of parts follows. Several threads may keep different parts at once.
    void keep(std::int64_t first, std::span<const std::byte> original, const AudioSampleEncoding &encoding,
              std::span<const float> decoded);
};

// Makes samples as encoded from their floats, from a first one on, what they were. They stay as they are where nothing was left
// out of words of the encoding's kind and width; its byte order may be another.
void restoreOriginals(const SampleOriginals &originals, std::int64_t first, const AudioSampleEncoding &encoding,
                      std::span<std::byte> encoded);

}  // namespace kiv
