#include "Platform/Linux/LinuxFileSystem.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <limits>

#include "Platform/FileCopy.h"
#include "Platform/FileFault.h"
#include "Platform/Linux/FileAttributes.h"
#include "Platform/Linux/FileDescriptor.h"
#include "Platform/Linux/Trash.h"
#include "Platform/Linux/UserFolders.h"

namespace kiv {
namespace {

FileDescriptor openAs(const std::string &path, int flags, mode_t mode = 0) {
    for (;;) {
        FileDescriptor file(::open(path.c_str(), flags | O_CLOEXEC, mode));
        if (file.isOpen()) return file;
        if (errno != EINTR) throwErrno();
    }
}

struct stat statusOf(const FileDescriptor &file) {
    struct stat status;
    if (::fstat(*file, &status) != 0) throwErrno();
    return status;
}

// Opening a pipe must not wait for its other end, and reading one would never end.
FileDescriptor openRegular(const std::string &path, int flags) {
    FileDescriptor file = openAs(path, flags | O_NONBLOCK);
    const auto type = statusOf(file).st_mode & S_IFMT;
    if (type == S_IFDIR) throwErrno(EISDIR);
    if (type != S_IFREG) throw FileFault(std::errc::invalid_argument, "Not a regular file");
    return file;
}

class LinuxSource : public ByteSource {
public:
    explicit LinuxSource(FileDescriptor file) : file_(std::move(file)), size_(statusOf(file_).st_size) {
        ::posix_fadvise(*file_, 0, 0, POSIX_FADV_SEQUENTIAL);
    }

    std::int64_t size() const override { return size_; }

    std::size_t read(std::int64_t offset, std::span<std::byte> out) const override {
        std::size_t done = 0;
        while (done < out.size()) {
            const ssize_t count = ::pread(*file_, out.data() + done, out.size() - done, offset + off_t(done));
            if (count == 0) break;
            if (count < 0 && errno != EINTR) throwErrno();
            done += std::size_t(std::max(count, ssize_t(0)));
        }
        return done;
    }

private:
    FileDescriptor file_;
    std::int64_t size_;
};

enum class Lock { mine, heldElsewhere, unknown };

Lock lock(const FileDescriptor &file) {
    if (::flock(*file, LOCK_EX | LOCK_NB) == 0) return Lock::mine;
    return errno == EWOULDBLOCK ? Lock::heldElsewhere : Lock::unknown;
}

class LinuxFile : public FileSystem::File {
public:
    LinuxFile(FileDescriptor file, Lock lock) : file_(std::move(file)), lock_(lock) {}

    void write(std::span<const std::byte> bytes) override {
        while (!bytes.empty()) {
            const ssize_t count = ::write(*file_, bytes.data(), bytes.size());
            if (count < 0 && errno != EINTR) throwErrno();
            bytes = bytes.subspan(std::size_t(std::max(count, ssize_t(0))));
            written_ += std::max(count, ssize_t(0));
        }
        startWriteback();
    }

    void rewind() override {
        if (::lseek(*file_, 0, SEEK_SET) != 0) throwErrno();
        written_ = begun_ = 0;
    }
    void truncate(std::int64_t size) override {
        if (::ftruncate(*file_, size) != 0) throwErrno();
    }
    void setModified(std::int64_t ns) override {
        constexpr std::int64_t second = 1'000'000'000;
        const timespec times[] = {{0, UTIME_OMIT}, {ns / second - (ns % second < 0), (ns % second + second) % second}};
        ::futimens(*file_, times);
    }
    void sync() override {
        while (::fsync(*file_) != 0)
            if (errno != EINTR) throwErrno();
    }
    bool isHeld() const override { return lock_ == Lock::mine; }

private:
    // Lets the device begin while the rest is still being made: the same work in all, but sync() has little left to wait for.
    // Space is not reserved ahead: measured, it gains nothing, and a full disk found late costs the old file nothing.
    void startWriteback() {
        constexpr std::int64_t part = 8 << 20;
        if (written_ - begun_ < part) return;
        ::sync_file_range(*file_, begun_, written_ - begun_, SYNC_FILE_RANGE_WRITE);
        begun_ = written_;
    }

    FileDescriptor file_;
    Lock lock_;
    std::int64_t written_ = 0;
    std::int64_t begun_ = 0;
};

bool isStillAt(const FileDescriptor &file, const std::string &path) {
    struct stat there;
    const auto here = statusOf(file);
    return ::lstat(path.c_str(), &there) == 0 && there.st_ino == here.st_ino && there.st_dev == here.st_dev;
}

// A file that nobody holds, held now; closed when there is none.
FileDescriptor abandoned(const std::string &path) {
    // Some network file systems lock only what is open for writing.
    FileDescriptor file(::open(path.c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    const bool isOurs = file.isOpen() && S_ISREG(statusOf(file).st_mode) && lock(file) == Lock::mine;
    // Whoever held it may have given it its place and name meanwhile. While we hold it, nobody does.
    return isOurs && isStillAt(file, path) ? std::move(file) : FileDescriptor();
}

}  // namespace

std::string LinuxFileSystem::resolve(const std::string &path) {
    namespace fs = std::filesystem;
    if (path.empty()) throwErrno(ENOENT);
    std::error_code error;
    fs::path at = fs::absolute(path, error);
    for (int links = 0; !error && fs::is_symlink(fs::symlink_status(at, error)); ++links) {
        if (links == 40) throwErrno(ELOOP);
        at = at.parent_path() / fs::read_symlink(at, error);  // an absolute one replaces the folder
    }
    // A missing file is none to symlink_status(), but sets the error.
    if (error && error != std::errc::no_such_file_or_directory) throw std::system_error(error);
    const fs::path folder = fs::canonical(at.parent_path(), error);
    if (error) throw std::system_error(error);
    return folder / at.filename();
}

std::optional<FileSystem::Identity> LinuxFileSystem::identity(const std::string &path) {
    struct stat status;
    if (::stat(path.c_str(), &status) != 0) {
        if (errno == ENOENT || errno == ENOTDIR) return std::nullopt;
        throwErrno();
    }
    const auto type = status.st_mode & S_IFMT;
    const Kind kind = type == S_IFREG ? Kind::file : type == S_IFDIR ? Kind::folder : Kind::other;
    const std::int64_t modified = status.st_mtim.tv_sec * std::int64_t(1'000'000'000) + status.st_mtim.tv_nsec;
    return Identity{status.st_dev, status.st_ino, status.st_size, modified, kind};
}

std::unique_ptr<ByteSource> LinuxFileSystem::open(const std::string &path) {
    return std::make_unique<LinuxSource>(openRegular(path, O_RDONLY));
}

std::unique_ptr<FileSystem::File> LinuxFileSystem::create(const std::string &path, Access access) {
    FileDescriptor file = openAs(path, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, access == Access::owner ? 0600 : 0666);
    // Before the lock another process may have taken it for abandoned; then it is no longer ours.
    const Lock held = lock(file);
    if (held == Lock::heldElsewhere || !isStillAt(file, path)) throwErrno(EEXIST);
    return std::make_unique<LinuxFile>(std::move(file), held);
}

bool LinuxFileSystem::removeAbandoned(const std::string &path) {
    const FileDescriptor file = abandoned(path);
    return file.isOpen() && ::unlink(path.c_str()) == 0;
}

std::unique_ptr<FileSystem::File> LinuxFileSystem::holdAbandoned(const std::string &path) {
    FileDescriptor file = abandoned(path);
    return file.isOpen() ? std::make_unique<LinuxFile>(std::move(file), Lock::mine) : nullptr;
}

bool LinuxFileSystem::share(const std::string &path, const std::string &as) {
    const FileDescriptor from = openRegular(path, O_RDONLY);
    const FileDescriptor to = openAs(as, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0600);
    if (::ioctl(*to, FICLONE, *from) == 0 && ::fsync(*to) == 0) return true;
    if (::unlink(as.c_str()) != 0) throwErrno();
    return false;
}

bool LinuxFileSystem::addName(const std::string &path, const std::string &name) {
    return ::linkat(AT_FDCWD, path.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0;
}

std::unique_ptr<FileSystem::File> LinuxFileSystem::overwrite(const std::string &path) {
    FileDescriptor file = openRegular(path, O_WRONLY);
    const Lock held = lock(file);
    if (held == Lock::heldElsewhere) throwErrno(EWOULDBLOCK);
    return std::make_unique<LinuxFile>(std::move(file), held);
}

void LinuxFileSystem::copyAttributes(const std::string &from, const std::string &to) { copyFileAttributes(from, to); }

void LinuxFileSystem::rename(const std::string &from, const std::string &to) {
    if (::rename(from.c_str(), to.c_str()) != 0) throwErrno();
}

void LinuxFileSystem::remove(const std::string &path) {
    if (::unlink(path.c_str()) != 0) throwErrno();
}

void LinuxFileSystem::makeFolders(const std::string &path) {
    if (identity(path)) return;
    makeFolders(folderOf(path));
    if (::mkdir(path.c_str(), 0700) != 0 && errno != EEXIST) throwErrno();
    syncFolder(folderOf(path));
}

void LinuxFileSystem::createFolder(const std::string &path) {
    const std::filesystem::path whole = std::filesystem::absolute(path);
    std::error_code error;
    std::filesystem::create_directories(whole.parent_path(), error);
    if (error) throw std::system_error(error);
    if (::mkdir(whole.c_str(), 0777) != 0) throwErrno();
    syncFolder(whole.parent_path());
}

std::vector<std::string> LinuxFileSystem::list(const std::string &folder) {
    std::error_code error;
    std::vector<std::string> names;
    // A failure on the way ends the iteration.
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error))
        names.push_back(entry->path().filename());
    if (error) throw std::system_error(error);
    std::sort(names.begin(), names.end());
    return names;
}

void LinuxFileSystem::moveToTrash(const std::string &path) { trashFile(path); }

// Some file systems have no blocks to count.
std::int64_t LinuxFileSystem::freeBytes(const std::string &folder) {
    struct statvfs status;
    if (::statvfs(folder.c_str(), &status) != 0) throwErrno();
    if (status.f_blocks == 0) return std::numeric_limits<std::int64_t>::max();
    return std::int64_t(status.f_bavail) * std::int64_t(status.f_frsize);
}

void LinuxFileSystem::syncFolder(const std::string &folder) {
    // A folder may let one write but not list, and some file systems cannot sync one: then there is nothing to be done.
    const FileDescriptor file(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!file.isOpen() && errno == EACCES) return;
    if (!file.isOpen()) throwErrno();
    if (::fsync(*file) != 0 && errno != EINVAL && errno != ENOTSUP) throwErrno();
}

void LinuxFileSystem::requireWritable(const std::string &path) {
    if (::faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) != 0) throwErrno();
}

std::string LinuxFileSystem::temporaryFolder() { return userFolder(UserFolder::state) + "/saving"; }

}  // namespace kiv
