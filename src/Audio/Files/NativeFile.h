#pragma once

#include "Audio/Files/AudioFileContents.h"
#include "Audio/Files/SampleDecoding.h"

namespace kiv {

// A file as our readers find it before its samples are read: the buffer has channels and rate, and no frames yet.
struct NativeFile {
    AudioFileContents contents;
    AudioPlace audio;
};

}  // namespace kiv
