#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "Audio/Files/AudioFileContents.h"

// A file's loop in its chunks. The chunks' other fields keep pointing at what they stored; positions are for the caller to add
// to or take from.
namespace kiv {

// Puts a loop of the positions at two indices into "smpl", or into "MARK" and "INST". False when there is no room for it: the
// contents are then as before.
bool addWavLoop(AudioFileContents &contents, AudioFileLoop loop);
bool addAiffLoop(AudioFileContents &contents, AudioFileLoop loop);

// Takes the loop's record out of "smpl", or its markers out of "MARK", comments on those out of "COMT", and the loop of those
// out of "INST". The chunks stay, even when nothing is left in them.
void removeWavLoop(AudioFileContents &contents, AudioFileLoop loop);
void removeAiffLoop(AudioFileContents &contents, AudioFileLoop loop);

// The first chunk of an id, made at the end of the file with this payload when there is none.
AudioFileChunk &chunkOrNew(AudioFileContents &contents, std::string_view id, Bytes payload);

// Opens a gap of zeros in a chunk's payload, or cuts a part out, with the fields behind moving along and those inside a cut
// gone.
void openGap(AudioFileChunk &chunk, std::size_t offset, std::size_t size);
void cutOut(AudioFileChunk &chunk, std::size_t offset, std::size_t size);

}  // namespace kiv
