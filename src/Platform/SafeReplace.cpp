#include "Platform/SafeReplace.h"

#include "Platform/FileFault.h"
#include "Platform/InPlaceReplace.h"

namespace kiv {
namespace {

using Identity = FileSystem::Identity;

void requirePlainFile(FileSystem &fileSystem, const std::string &path, const std::optional<Identity> &identity) {
    if (!identity) return;
    if (identity->kind == FileSystem::Kind::folder) throw std::system_error(std::make_error_code(std::errc::is_a_directory));
    if (identity->kind != FileSystem::Kind::file) throw FileFault(std::errc::invalid_argument, "Not a regular file");
    // A rename would get round the protection of the old file: it asks the folder only.
    fileSystem.requireWritable(path);
}

// Whether an error of create() or rename() means that this folder, or this name in it, may not be given another file.
bool folderRefuses(const std::error_code &code) {
    using std::errc;
    return code == errc::permission_denied || code == errc::operation_not_permitted || code == errc::read_only_file_system ||
           code == errc::device_or_resource_busy;
}

std::string hiddenName(const std::string &target) {
    return folderOf(target) + "/." + shortened(nameOf(target)) + ".kiv-saving";
}

// A file beside the one to be replaced, which goes away again unless it takes its place. It stays held all the while, so that
// no other save takes it for abandoned.
class Beside {
public:
    Beside(FileSystem &fileSystem, const std::string &target, FileSystem::Access access) : fileSystem_(fileSystem) {
        const std::string stem = hiddenName(target);
        for (int number = 1; !file_; ++number) tryName(number == 1 ? stem : stem + std::to_string(number), access, number);
    }
    ~Beside() {
        if (!path_.empty()) removeQuietly(fileSystem_, path_);
    }
    Beside(const Beside &) = delete;
    Beside &operator=(const Beside &) = delete;

    FileSystem::File &file() { return *file_; }
    const std::string &path() const { return path_; }
    void putInPlaceOf(const std::string &target) {
        fileSystem_.rename(path_, target);
        path_.clear();
    }

private:
    void tryName(const std::string &path, FileSystem::Access access, int number);

    FileSystem &fileSystem_;
    std::string path_;
    std::unique_ptr<FileSystem::File> file_;
};

void Beside::tryName(const std::string &path, FileSystem::Access access, int number) {
    try {
        fileSystem_.removeAbandoned(path);
        file_ = fileSystem_.create(path, access);
        path_ = path;
    } catch (const std::system_error &error) {
        if (error.code() != std::errc::file_exists || number == 100) throw;
    }
}

// None where the folder refuses another file, but there is one to be written over.
std::unique_ptr<Beside> makeBeside(FileSystem &fileSystem, const std::string &target, const std::optional<Identity> &before) {
    try {
        const auto access = before ? FileSystem::Access::owner : FileSystem::Access::usual;
        return std::make_unique<Beside>(fileSystem, target, access);
    } catch (const std::system_error &error) {
        if (before && folderRefuses(error.code())) return nullptr;
        throw;
    }
}

// A rename may be refused where creating was not: in a folder that lets everybody in, but only owners replace.
bool putInPlace(Beside &beside, const std::string &target, const std::optional<Identity> &before) {
    try {
        beside.putInPlaceOf(target);
        return true;
    } catch (const std::system_error &error) {
        if (before && folderRefuses(error.code())) return false;
        throw;
    }
}

// The system's own words for a folder that is not there speak of the file, which need not be there.
std::string resolved(FileSystem &fileSystem, const std::string &path) {
    try {
        return fileSystem.resolve(path);
    } catch (const std::system_error &error) {
        const bool hasFolder = path.find('/') != path.npos;
        if (!hasFolder || error.code() != std::errc::no_such_file_or_directory) throw;
        const std::string folder = "“" + folderOf(path) + "”";
        throw FileFault(error.code(), fileSystem.identity(folderOf(path))
                                          ? "This is a link into a folder that is not there: choose another place"
                                          : "The folder " + folder + " is not there: choose another one");
    }
}

void syncFolderAfterwards(FileSystem &fileSystem, const std::string &folder) {
    try {
        fileSystem.syncFolder(folder);
    } catch (const std::system_error &) {
        // The new file has its place and its contents are on the device; the old one is gone from sight, so the save must not
        // be called failed. All that is unsure is whether a loss of power in the next moments brings the old one back, and that
        // one is whole.
    }
}

}  // namespace

void replaceSafely(FileSystem &fileSystem, const std::string &path, const Produce &produce, std::size_t blockBytes,
                   const Check &check) {
    const std::string target = resolved(fileSystem, path);
    const auto before = fileSystem.identity(target);
    requirePlainFile(fileSystem, target, before);
    const auto beside = makeBeside(fileSystem, target, before);
    if (!beside) return replaceInPlace(fileSystem, target, produce, blockBytes, check);
    pour(beside->file(), produce, blockBytes);
    if (before) fileSystem.copyAttributes(target, beside->path());
    beside->file().sync();
    checkFile(fileSystem, beside->path(), check);
    requireUnchanged(fileSystem, target, before);
    if (putInPlace(*beside, target, before))
        syncFolderAfterwards(fileSystem, folderOf(target));
    else
        replaceInPlace(fileSystem, target, contentsOf(fileSystem, beside->path(), blockBytes), blockBytes);
}

void removeAbandonedSave(FileSystem &fileSystem, const std::string &path) noexcept {
    try {
        fileSystem.removeAbandoned(hiddenName(fileSystem.resolve(path)));
    } catch (...) {
    }
}

}  // namespace kiv
