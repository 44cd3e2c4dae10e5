#pragma once

#include <string>
#include <vector>

#include "Audio/Files/AudioFileContents.h"
#include "Platform/DecodedReader.h"
#include "Platform/Files.h"
#include "Support/Progress.h"

// The folder beside a sound file that its slices are saved in, a file each.
namespace kiv {

// What is saved; values, for a job to work on.
struct SlicesToSave {
    std::string name;                                   // what the slices are called
    std::string folder;                                 // the slices folder
    std::shared_ptr<const AudioFileContents> contents;  // of the file
    AudioEditorBuffer sound;                            // as it is now
    std::vector<FrameRange> slices;
    std::int64_t fadeIn = 0, fadeOut = 0;  // frames
};

// "Drums.slices".
std::string slicesFolderName(const std::string &path);
// "Drums-01": numbers have as many digits as the count, at least two; a name's slashes and colons become dashes.
std::string sliceFileStem(std::string name, std::size_t index, std::size_t count);

// The names of the audio files in a folder, going by their extension. Blocks.
std::vector<std::string> audioFilesIn(Files &files, const std::string &folder);

// Makes the folder if need be, moves the audio files in it to the trash and writes the slices, in the file's own format where
// we write it, else as WAV. Blocks; any thread but the main and audio threads. Throws AudioFileError, std::system_error and
// Cancelled, after which the slices written stay.
void writeSlices(Files &files, DecodedReader *decoders, const SlicesToSave &saving, Progress &progress);

}  // namespace kiv
