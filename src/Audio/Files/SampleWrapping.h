#pragma once

#include <optional>

#include "Audio/Files/AudioFileContents.h"
#include "Audio/Files/SampleDecoding.h"

namespace kiv {

// A file whose wrapping is kept, and where its samples stand.
struct WrappedFile {
    SampleWrapping wrapping;
    AudioPlace audio;
    std::int64_t sampleRate = 0;
};

// The wrapping of an AU, CAF, W64, RF64, BW64 or RIFX file. Nothing for other files, for samples that are compressed or of an
// encoding that is not ours, and for a file that is not whole: one that could not be written back as it was.
std::optional<WrappedFile> findWrapping(const SourceReader &reader);

// Only what says what the samples are.
SampleWrapping bareWrapping(SampleWrapping wrapping);

}  // namespace kiv
