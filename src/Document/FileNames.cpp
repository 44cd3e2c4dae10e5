#include "Document/FileNames.h"

#include <algorithm>

#include "Platform/FileCopy.h"

namespace kiv {
namespace {

// Bytes of a character at the start that is none to be shown: controls, line breaks, and what changes the direction of text.
std::size_t unfitLength(std::string_view rest) {
    const auto byte = [&](std::size_t i) { return i < rest.size() ? static_cast<unsigned char>(rest[i]) : 0; };
    if (byte(0) < 0x20 || byte(0) == 0x7F) return 1;
    if (byte(0) == 0xC2 && byte(1) >= 0x80 && byte(1) < 0xA0) return 2;
    if (byte(0) != 0xE2) return 0;
    const bool turns = (byte(1) == 0x80 && byte(2) >= 0xA8 && byte(2) <= 0xAE) ||  // U+2028 … 202E
                       (byte(1) == 0x81 && byte(2) >= 0xA6 && byte(2) <= 0xA9);    // U+2066 … 2069
    return turns ? 3 : 0;
}

}  // namespace

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

std::string shownName(std::string_view name) {
    std::string shown;
    for (std::size_t at = 0, unfit; at < name.size(); at += std::max<std::size_t>(unfit, 1)) {
        unfit = unfitLength(name.substr(at));
        shown += unfit > 0 ? "\uFFFD" : std::string(1, name[at]);
    }
    return shown;
}

std::string quoted(const std::string &name) { return "“" + shownName(name) + "”"; }

std::string counted(std::size_t count, const std::string &what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

}  // namespace kiv
