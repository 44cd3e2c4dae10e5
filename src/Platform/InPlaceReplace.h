#pragma once

#include "Platform/FileCopy.h"
#include "Platform/Files.h"

// Writing over a file that may not be replaced. In a folder of the user's own two copies are made first, the new contents and
// the old ones, both whole and on the device; the old one gets its final name last. Only then is the file written over. When
// that fails the old contents are put back, with their time where that is allowed; when all is on the device the copies go, the
// old one first.
//
// So wherever it dies, an old copy under its final name means that both copies are whole and that the file may be half written.
// Writing over leaves each byte of a file the old one or the new one, or zero where the file was being made longer. A file of
// which that is not true has been written by somebody else since, and is not touched. (One that is still the old file or is the
// new one already is whole.)
namespace kiv {

// `target` is an existing regular file, as resolved.
void replaceInPlace(FileSystem &fileSystem, const std::string &target, const Produce &produce, std::size_t blockBytes,
                    const Check &check = {});

Files::Recovery recoverInPlace(FileSystem &fileSystem, const std::string &path, std::size_t blockBytes = 1 << 20);

}  // namespace kiv
