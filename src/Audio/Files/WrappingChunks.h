#pragma once

#include "Audio/Files/AudioFileContents.h"

// The chunks of an RF64, BW64 or RIFX file are those of a WAV file: so that whatever is done with these can be done with them,
// they are looked at as that, and what was changed is taken back.
namespace kiv {

// Contents of container wav with these chunks, their numbers little-endian, and the positions, loop and samples of the file.
AudioFileContents wavView(const AudioFileContents &contents);

// Takes back chunks, positions and loop. Of the view's chunks those that were there may have changed, and more may stand
// behind.
void takeWavView(AudioFileContents &contents, AudioFileContents view);

// Chunks of a big-endian file that mean something else in a little-endian one, as far as anybody knows: their ids.
std::vector<std::string> eraseUnswapped(AudioFileContents &view);

}  // namespace kiv
