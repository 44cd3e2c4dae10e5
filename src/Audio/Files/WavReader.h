#pragma once

#include <bit>
#include <cstdint>
#include <span>

#include "Audio/Files/NativeFile.h"
#include "Audio/Files/SourceReader.h"

namespace kiv {

struct WavFormat {
    std::int64_t channels = 0;
    std::uint32_t sampleRate = 0;
    AudioSampleEncoding encoding;
};

// What a "fmt " payload of at least its plain size says. Throws as readWav does.
WavFormat wavFormat(std::span<const std::byte> fmt, std::endian order);
// The number that it has for the kind of samples.
unsigned wavFormatTag(std::span<const std::byte> fmt, std::endian order);

// Reads a RIFF file of form WAVE. Throws AudioFileError `unreadable`, and `unsupported` for sample encodings that are not ours.
NativeFile readWav(const SourceReader &reader);

}  // namespace kiv
