#pragma once

#include <string>
#include <vector>

#include "Audio/Files/AudioSaveFormat.h"

namespace kiv::AudioFileCodec {

// Contents to be written in another format than their own.
struct Conversion {
    AudioFileContents contents;
    // What the new format has no place for, as the user is told of it: "markers", "“bext”".
    std::vector<std::string> left;
};

// The chunks that describe the samples are made anew; within WAV, and within AIFF, the others stay as they are. From one to the
// other goes what both can say: markers with their names, the loop, the instrument's settings, texts, an ID3 tag. FLAC takes
// the texts. The positions keep their order, also those that the format cannot store, so that the editor's markers are found
// again; a loop that it cannot store is taken out. A format that the contents have already leaves them as they are.
Conversion converted(AudioFileContents contents, const AudioSaveFormat &format);

// The format that is proposed for saving these contents elsewhere: their own, or the one that comes nearest to it and loses the
// least of the samples.
AudioSaveFormat nearestSaveFormat(const AudioFileContents &contents);

// Whether a new file made from part of the audio can be written in the file's own format.
bool isPartWritable(const AudioEditorBuffer &part, const AudioFileContents &contents);
// Contents for such a file: bare, in the file's own format where that can be written, else as WAV of 16 bits, or 24 where the
// file has more.
AudioFileContents partContents(AudioEditorBuffer part, const AudioFileContents &contents);
// The extension of a file made from part of one of this format, in the same: that one's own, or what says the format where it
// has none.
std::string partExtension(const AudioFileFormat &format);

}  // namespace kiv::AudioFileCodec
