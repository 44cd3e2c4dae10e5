#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "Audio/Files/AudioFileContents.h"

// A file's loop in its chunks. The chunks' other fields keep pointing at what they stored; positions are for the caller to add
// to or take from.
namespace kiv {

// Puts a loop of the positions at two indices into "smpl", or into "MARK" and "INST". False when there is no room for it: the
// contents are then as before.
bool addWavLoop(AudioFileContents &contents, AudioFileLoop loop);
bool addAiffLoop(AudioFileContents &contents, AudioFileLoop loop);

// The first loop of the chunks that has a length: a record of "smpl", or the sustain loop of "INST".
std::optional<AudioFileLoop> wavLoop(const AudioFileContents &contents);
std::optional<AudioFileLoop> aiffLoop(const AudioFileContents &contents);

// Takes that loop out of "smpl", or out of "INST", its markers out of "MARK" and comments on these out of "COMT". The chunks
// stay, even when nothing is left in them, and so do further loops, but for those of "INST" on the same markers. Return which
// positions nothing in the chunks stands for any more, sorted.
std::vector<std::uint32_t> removeWavLoop(AudioFileContents &contents);
std::vector<std::uint32_t> removeAiffLoop(AudioFileContents &contents);

// The first chunk of an id, made at the end of the file with this payload when there is none.
AudioFileChunk &chunkOrNew(AudioFileContents &contents, std::string_view id, Bytes payload);
AudioFileChunk &addChunk(AudioFileContents &contents, std::string_view id, Bytes payload);  // whether there is one or not

// Opens a gap of zeros in a chunk's payload, or cuts a part out, with the fields behind moving along and those inside a cut
// gone.
void openGap(AudioFileChunk &chunk, std::size_t offset, std::size_t size);
void cutOut(AudioFileChunk &chunk, std::size_t offset, std::size_t size);

}  // namespace kiv
