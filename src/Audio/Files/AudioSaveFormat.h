#pragma once

#include "Audio/Files/AudioFileContents.h"

namespace kiv {

// What a sound may be saved as by the user's choice, whatever its file was.
struct AudioSaveFormat {
    enum class Container { wav, aiff, flac };

    Container container = Container::wav;
    int bits = 16;         // of a sample: WAV 8, 16, 24, 32; AIFF 8, 16, 24, 32; FLAC 16, 24
    bool isFloat = false;  // WAV with 32 bits only

    // Whether a file of that format would stay what it is when saved in this one.
    bool matches(const AudioFileFormat &format) const;

    friend bool operator==(const AudioSaveFormat &, const AudioSaveFormat &) = default;
};

}  // namespace kiv
