#include "Platform/Linux/Trash.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <optional>

#include "Platform/FileCopy.h"
#include "Platform/FileFault.h"
#include "Platform/Linux/FileDescriptor.h"
#include "Platform/Linux/UserFolders.h"

namespace kiv {
namespace {

namespace fs = std::filesystem;

// A trash folder, and the path of what is thrown away as it is noted there.
struct Trash {
    fs::path folder;
    fs::path notedPath;
};

std::optional<struct stat> statusOf(const fs::path &path) {
    struct stat status;
    return ::lstat(path.c_str(), &status) == 0 ? std::optional(status) : std::nullopt;
}

// A folder of the user's own, made if it is missing.
bool isOwnFolder(const fs::path &path) {
    std::error_code ignored;
    fs::create_directories(path.parent_path(), ignored);
    ::mkdir(path.c_str(), 0700);
    const auto status = statusOf(path);
    return status && S_ISDIR(status->st_mode) && status->st_uid == ::geteuid();
}

bool isTrash(const fs::path &folder, dev_t device) {
    if (!isOwnFolder(folder) || statusOf(folder)->st_dev != device) return false;
    return isOwnFolder(folder / "files") && isOwnFolder(folder / "info");
}

// The highest folder on the same file system.
fs::path topFolder(fs::path folder, dev_t device) {
    while (folder.has_relative_path()) {
        const auto above = statusOf(folder.parent_path());
        if (!above || above->st_dev != device) break;
        folder = folder.parent_path();
    }
    return folder;
}

// One that everybody shares must be sticky, or others could take away what is in it.
bool isSharedTrash(const fs::path &folder) {
    const auto status = statusOf(folder);
    return status && S_ISDIR(status->st_mode) && (status->st_mode & S_ISVTX);
}

Trash trashFor(const fs::path &file) {
    const auto status = statusOf(file);
    if (!status) throwErrno();
    const dev_t device = status->st_dev;
    const fs::path home = fs::path(userDataFolder()) / "Trash";
    if (isTrash(home, device)) return {home, file};
    const fs::path top = topFolder(file.parent_path(), device), noted = file.lexically_relative(top);
    const std::string user = std::to_string(::geteuid());
    if (isSharedTrash(top / ".Trash") && isTrash(top / ".Trash" / user, device)) return {top / ".Trash" / user, noted};
    if (isTrash(top / (".Trash-" + user), device)) return {top / (".Trash-" + user), noted};
    throw FileFault(std::errc::not_supported, "There is no trash for this folder");
}

std::string percentEncoded(const std::string &path) {
    static constexpr char digits[] = "0123456789ABCDEF";
    static const std::string plain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_.!~*'()/";
    std::string text;
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        text += plain.find(c) != plain.npos ? std::string(1, c) : std::string{'%', digits[byte / 16], digits[byte % 16]};
    }
    return text;
}

std::string infoText(const fs::path &notedPath) {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    ::localtime_r(&now, &local);
    std::array<char, 32> date;
    std::strftime(date.data(), date.size(), "%Y-%m-%dT%H:%M:%S", &local);
    return "[Trash Info]\nPath=" + percentEncoded(notedPath) + "\nDeletionDate=" + date.data() + "\n";
}

// The note's name, which is longer, has to be one that the file system takes.
fs::path withRoom(const fs::path &name) {
    constexpr std::size_t longest = 230;
    return name.native().size() <= longest ? name
                                           : fs::path(shortened(name.stem().native()) + shortened(name.extension().native()));
}

std::string numbered(const fs::path &name, int number) {
    return number == 1 ? name.string() : name.stem().string() + "." + std::to_string(number) + name.extension().string();
}

// The note comes first and reserves the name.
fs::path writeInfo(const Trash &trash, const std::string &name) {
    const fs::path path = trash.folder / "info" / (name + ".trashinfo");
    const FileDescriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (!file.isOpen()) throwErrno();
    const std::string text = infoText(trash.notedPath);
    if (::write(*file, text.data(), text.size()) != ssize_t(text.size())) {
        ::unlink(path.c_str());
        throwErrno(ENOSPC);
    }
    return path;
}

// False when that name is taken.
bool moveAs(const fs::path &file, const Trash &trash, const std::string &name) {
    if (statusOf(trash.folder / "files" / name)) return false;
    fs::path info;
    try {
        info = writeInfo(trash, name);
    } catch (const std::system_error &error) {
        if (error.code() == std::errc::file_exists) return false;
        throw;
    }
    if (::rename(file.c_str(), (trash.folder / "files" / name).c_str()) == 0) return true;
    const int error = errno;
    ::unlink(info.c_str());
    throwErrno(error);
}

}  // namespace

void trashFile(const std::string &path) {
    const fs::path given = fs::absolute(path);
    const fs::path file = fs::canonical(given.parent_path()) / given.filename();  // a link is thrown away itself
    const Trash trash = trashFor(file);
    for (int number = 1; !moveAs(file, trash, numbered(withRoom(file.filename()), number)); ++number)
        if (number == 10'000) throwErrno(EEXIST);
}

}  // namespace kiv
