#include "Audio/Files/AudioSaveFormat.h"

#include <string>

namespace kiv {

bool AudioSaveFormat::matches(const AudioFileFormat &format) const {
    if (container == Container::flac)
        return format.container == AudioContainer::coreAudio && format.fileExtension == "flac" &&
               format.bitsDescription == std::to_string(bits) + "-bit";
    const bool isWav = container == Container::wav;
    if (!format.encoding || format.container != (isWav ? AudioContainer::wav : AudioContainer::aiff)) return false;
    const AudioSampleEncoding &encoding = *format.encoding;
    if (encoding.bigEndian == isWav || encoding.validBits != bits || encoding.bytes != (bits + 7) / 8) return false;
    return (encoding.kind == AudioSampleEncoding::Kind::floating) == isFloat;
}

}  // namespace kiv
