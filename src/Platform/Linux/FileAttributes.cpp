#include "Platform/Linux/FileAttributes.h"

#include <sys/stat.h>
#include <sys/xattr.h>

#include <optional>
#include <vector>

#include "Platform/Linux/FileDescriptor.h"

namespace kiv {
namespace {

constexpr const char *accessList = "system.posix_acl_access";

struct stat statusOf(const std::string &path) {
    struct stat status;
    if (::stat(path.c_str(), &status) != 0) throwErrno();
    return status;
}

// Grows the space until the answer of a call that fills it, like getxattr(), fits. Nothing: there is no such attribute, or the
// file system has none.
template <class Call>
std::optional<std::string> filled(const Call &call) {
    for (std::string space(256, '\0');; space.resize(space.size() * 4)) {
        const ssize_t size = call(space.data(), space.size());
        if (size >= 0) return space.substr(0, std::size_t(size));
        if (errno == ENODATA || errno == ENOTSUP) return std::nullopt;
        if (errno != ERANGE) throwErrno();
    }
}

std::vector<std::string> attributeNames(const std::string &path) {
    const auto list = filled([&](char *space, std::size_t size) { return ::listxattr(path.c_str(), space, size); });
    std::vector<std::string> names;
    for (std::size_t at = 0; list && at < list->size(); at += names.back().size() + 1) names.emplace_back(list->c_str() + at);
    return names;
}

// Labels and signatures of the system are not the user's: a file system may well give the new file its own.
bool belongsToUser(const std::string &name) { return name.starts_with("user.") || name == accessList; }

void copyAttribute(const std::string &name, const std::string &from, const std::string &to) {
    const auto value =
        filled([&](char *space, std::size_t size) { return ::getxattr(from.c_str(), name.c_str(), space, size); });
    if (!value) return;
    if (::setxattr(to.c_str(), name.c_str(), value->data(), value->size(), 0) == 0) return;
    const bool isRefused = errno == EPERM || errno == EACCES || errno == ENOTSUP || errno == EINVAL;
    if (belongsToUser(name) || !isRefused) throwErrno();
}

// The folder may give new files an access list that the old file did not have.
void removeAccessList(const std::string &path) {
    if (::removexattr(path.c_str(), accessList) != 0 && errno != ENODATA && errno != ENOTSUP) throwErrno();
}

// What of the mode may be kept. A group that could not be given to the file leaves its place to another one, which gets no more
// than everybody; the bits that lend the owner's rights to a program go with the owner.
mode_t modeToKeep(const struct stat &old, const struct stat &now) {
    mode_t mode = old.st_mode & 07777;
    if (now.st_gid != old.st_gid) mode = (mode & ~mode_t(02070)) | ((mode & 07) << 3);
    if (now.st_uid != old.st_uid) mode &= ~mode_t(06000);
    return mode;
}

void copyOwner(const struct stat &old, const std::string &to) {
    if (::chown(to.c_str(), old.st_uid, old.st_gid) == 0) return;
    // Other people's files cannot be given back to them, but one's own groups can. Where not even that, modeToKeep() sees to
    // it.
    [[maybe_unused]] const int refused = ::chown(to.c_str(), uid_t(-1), old.st_gid);
}

}  // namespace

void copyFileAttributes(const std::string &from, const std::string &to) {
    const struct stat old = statusOf(from);
    copyOwner(old, to);
    removeAccessList(to);
    for (const std::string &name : attributeNames(from)) copyAttribute(name, from, to);
    // Last: a change of owner clears some bits, and an access list has its mask among them.
    if (::chmod(to.c_str(), modeToKeep(old, statusOf(to))) != 0) throwErrno();
}

}  // namespace kiv
