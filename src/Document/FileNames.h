#pragma once

#include <string>
#include <string_view>

// Names of files, in paths and in what the user is told. Pure functions.
namespace kiv {

std::string fileStem(const std::string &path);                             // "Drums" of "/music/Drums.wav"
std::string folderPart(const std::string &path);                           // with the slash behind it; "" of a name alone
std::string parentFolder(const std::string &path);                         // "." of a name alone
std::string inFolder(const std::string &folder, const std::string &name);  // nothing before the name in "."
// As it may be shown: a replacement character for whatever would break the line or turn the text around it.
std::string shownName(std::string_view name);
std::string quoted(const std::string &name);                      // “name”, as it may be shown
std::string counted(std::size_t count, const std::string &what);  // "1 slice", "2 slices"

}  // namespace kiv
