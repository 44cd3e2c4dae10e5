#include "Document/FileNames.h"

#include "Platform/FileCopy.h"

namespace kiv {

std::string fileStem(const std::string &path) {
    const std::string name = nameOf(path);
    const std::size_t dot = name.rfind('.');
    return dot == name.npos || dot == 0 ? name : name.substr(0, dot);
}

std::string folderPart(const std::string &path) { return path.substr(0, path.size() - nameOf(path).size()); }

std::string parentFolder(const std::string &path) {
    const std::size_t slash = path.find_last_of('/');
    return slash == path.npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
}

std::string inFolder(const std::string &folder, const std::string &name) { return folder == "." ? name : folder + "/" + name; }

std::string quoted(const std::string &name) { return "“" + name + "”"; }

std::string counted(std::size_t count, const std::string &what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

}  // namespace kiv
