#pragma once

#include "Audio/Files/AudioFileContents.h"

// The chunks of an RF64, BW64, RIFX or W64 file are those of a WAV file: so that whatever is done with these can be done with
// them, they are looked at as that, and what was changed is taken back. The same goes for what stands around compressed samples
// in a WAV or AIFC file. A wrapping is always that of the contents, or the one around their compressed samples.
namespace kiv {

// Contents of container wav or aifc with these chunks, their numbers in that file's order, and the positions, loop and samples
// of the file. Where these were compressed they have no encoding.
AudioFileContents formView(const AudioFileContents &contents, const SampleWrapping &wrapping);

// Takes back chunks, positions and loop. Of the view's chunks those that were there may have changed, and more may stand
// behind.
void takeFormView(AudioFileContents &contents, SampleWrapping &wrapping, AudioFileContents view);

// Whether a chunk is in the view: not what only such a file has.
bool isInFormView(const SampleWrapping &wrapping, const SampleWrapping::Part &part);

// Chunks of a big-endian file that mean something else in a little-endian one, as far as anybody knows: their ids.
std::vector<std::string> eraseUnswapped(AudioFileContents &view);

}  // namespace kiv
