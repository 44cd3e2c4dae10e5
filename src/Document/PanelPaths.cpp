#include "Document/PanelPaths.h"

#include <filesystem>
#include <system_error>

#include "Document/FileNames.h"
#include "Platform/FileCopy.h"

namespace kiv {

std::string folderAbove(const std::string &path) {
    const std::size_t slash = path.find_last_of('/');
    return slash == path.npos || slash == 0 ? "/" : path.substr(0, slash);
}

std::string pathWithin(const std::string &folder, const std::string &name) {
    return folder.ends_with('/') ? folder + name : folder + '/' + name;
}

std::string normalPath(const std::string &path) {
    std::string text = std::filesystem::path(path).lexically_normal();
    while (text.size() > 1 && text.ends_with('/')) text.pop_back();
    return text;
}

std::string typedPath(const std::string &typed, const std::string &folder, const std::string &home) {
    if (typed == "~" || typed.starts_with("~/")) return normalPath(home + typed.substr(1));
    return normalPath(typed.starts_with('/') ? typed : pathWithin(folder, typed));
}

std::optional<BegunPath> begunPath(const std::string &typed, const std::string &folder, const std::string &home) {
    const std::size_t slash = typed.find_last_of('/');
    if (slash == typed.npos) return std::nullopt;
    return BegunPath{typedPath(typed.substr(0, slash + 1), folder, home), typed.substr(slash + 1)};
}

std::string folderFault(std::optional<FolderListing::Access> access) {
    if (access == FolderListing::Access::missing) return "This folder is no longer there";
    if (access == FolderListing::Access::unreadable) return "This folder cannot be read";
    return access == FolderListing::Access::readOnly ? "This folder cannot be written to" : "";
}

bool isFolder(Files &files, const std::string &path) {
    const auto identity = files.identity(path);
    return identity && identity->kind == FileSystem::Kind::folder;
}

PathCheck checkFolder(Files &files, const std::string &path) {
    try {
        if (!isFolder(files, path)) return PathCheck::refusal("There is no folder " + quoted(path));
        if (!files.isWritable(path)) return PathCheck::refusal(quoted(nameOf(path)) + " cannot be written to");
    } catch (const std::system_error &error) {
        return PathCheck::refusal(error.what());
    }
    return {PathCheck::Outcome::take, path, {}};
}

std::string newFolderFault(Files &files, const std::string &path) {
    try {
        if (files.identity(path)) return quoted(nameOf(path)) + " already exists";
        files.createFolder(path);
    } catch (const std::system_error &error) {
        return error.what();
    }
    return {};
}

}  // namespace kiv
