#pragma once

#include <string>
#include <vector>

namespace kiv {

// A folder as the way to it: one step a folder, from the user's home where it lies there, else from the root.
struct FolderCrumb {
    std::string label;  // "Home", "/", else the folder's name
    std::string path;

    friend bool operator==(const FolderCrumb &, const FolderCrumb &) = default;
};
std::vector<FolderCrumb> folderCrumbs(const std::string &folder, const std::string &home);

// The first step to be shown when steps of these widths, with as much between two of them, must fit into a room: as many of the
// last as fit behind a sign that some are left out, at least one.
std::size_t firstCrumbShown(const std::vector<int> &widths, int between, int signWidth, int room);

// Whether a folder is another one or lies in it.
bool isWithin(const std::string &folder, const std::string &other);

}  // namespace kiv
