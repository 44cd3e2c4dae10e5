#pragma once

#include "Platform/FileCopy.h"

// Replacing a file so that at every moment the old one or the new one is there, whole, whatever fails, dies or loses power.
//
// The new file is written beside the old one under a hidden name, brought to the device with the old one's attributes, and put
// in its place by a rename, which a file system does in one step. A crash leaves at most the hidden file; the next opening or
// saving of the same file finds it abandoned and removes it.
//
// Where the folder does not allow this but the file itself can be written, it is written over in place: see InPlaceReplace.h.
//
// A file with several hard links is replaced like any other, so that its other names keep the old contents. Such links are how
// backups share unchanged files, and a save must not reach into a backup.
namespace kiv {

void replaceSafely(FileSystem &fileSystem, const std::string &path, const Produce &produce, std::size_t blockBytes = 1 << 20,
                   const Check &check = {});

// Removes the hidden file that a save of the file at `path` has left, if it has died. What cannot be removed is left.
void removeAbandonedSave(FileSystem &fileSystem, const std::string &path) noexcept;

}  // namespace kiv
