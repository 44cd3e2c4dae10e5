#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Platform/FileSystem.h"
#include "Support/ByteSource.h"

namespace kiv {

// Files as the document sees them. All calls may block; any thread but the audio thread. Failures are std::system_error, whose
// what() is one line for the user.
class Files {
public:
    virtual ~Files() = default;

    virtual std::unique_ptr<ByteSource> open(const std::string &path) = 0;
    virtual std::optional<FileSystem::Identity> identity(const std::string &path) = 0;

    // Writes a whole file and puts it in the place of the one at `path`, or makes it new there. Until the new one is safely on
    // the disk the old one is there, whole, whatever fails or dies. Symbolic links are followed; the new file has the old one's
    // mode, owner (where allowed), extended attributes and access lists. `produce` writes the bytes and may throw, after which
    // all is as before; it is called once, and may read the old file. `check` is then given the new file, whole and on the
    // disk, and may throw as well.
    virtual void replace(const std::string &path, const std::function<void(ByteSink &)> &produce,
                         const std::function<void(const ByteSource &)> &check = {}) = 0;

    // The names in a folder, in their order; none where there is no folder.
    virtual std::vector<std::string> names(const std::string &folder) = 0;
    virtual bool isWritable(const std::string &folder) = 0;
    virtual void createFolder(const std::string &path) = 0;  // with those missing above it; nothing to do where it exists
    virtual void moveToTrash(const std::string &path) = 0;

    // To be called before a file is opened. Where a replacement had to be written over the old file in place and died on the
    // way, puts the old file back, whole. A file that anybody has written to since is left alone. What a save that died has
    // left beside the file is removed.
    enum class Recovery { notNeeded, restored };
    virtual Recovery recoverInterrupted(const std::string &path) = 0;
};

// Files over a file system. See SafeReplace.h for how a replacement survives.
std::unique_ptr<Files> makeFiles(FileSystem &fileSystem);

}  // namespace kiv
