#pragma once

#include <string>

// How the samples of a sound stand in its file.
namespace kiv {

struct AudioSampleEncoding {
    enum class Kind { integer, floating };

    Kind kind = Kind::integer;
    int bytes = 2;       // per sample: 1 … 4 for integers, 4 or 8 for floats
    int validBits = 16;  // meaningful bits, at most 8 · bytes
    bool bigEndian = false;
    bool unsigned8 = false;  // 8-bit samples stored with 128 as zero

    // "24-bit", "32-bit float".
    std::string description() const;
    friend bool operator==(const AudioSampleEncoding &, const AudioSampleEncoding &) = default;
};

}  // namespace kiv
