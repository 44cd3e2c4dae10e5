#pragma once

#include <optional>
#include <string>

#include "Document/FolderListing.h"

// Paths as they are typed in a panel in which one goes about folders: from "/", from "~" for the user's home, or from the
// folder on that one is in. Pure functions but for those that take the files.
namespace kiv {

std::string folderAbove(const std::string &path);
std::string pathWithin(const std::string &folder, const std::string &name);
// Without "..", "." and a slash at its end.
std::string normalPath(const std::string &path);
// Absolute.
std::string typedPath(const std::string &typed, const std::string &folder, const std::string &home);

// The folder in which a name is being typed, and as much of the name as there is.
struct BegunPath {
    std::string folder, part;
};
// Nothing while there is no slash.
std::optional<BegunPath> begunPath(const std::string &typed, const std::string &folder, const std::string &home);

// Whether what stands in a panel may be confirmed.
struct PathVerdict {
    bool canConfirm = false;
    bool isFault = false;
    bool isInText = false;   // the fault
    std::string words = {};  // what stands against it, or what the user should know
};
// What stands against writing into a folder; nothing while it is being read.
std::string folderFault(std::optional<FolderListing::Access> access);

// What confirming has come to.
struct PathCheck {
    enum class Outcome { take, enterFolder, refuse };

    Outcome outcome = Outcome::refuse;
    std::string path;   // to take, or to enter
    std::string words;  // why not

    static PathCheck refusal(const std::string &words) { return {Outcome::refuse, {}, words}; }
};
// The rest blocks; any thread but the main and audio threads.
bool isFolder(Files &files, const std::string &path);
// Whether a folder can be chosen to write in.
PathCheck checkFolder(Files &files, const std::string &path);
// Makes a folder; the words are empty when that went well.
std::string newFolderFault(Files &files, const std::string &path);

}  // namespace kiv
