#pragma once

#include <cstdint>
#include <ctime>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Files.h"
#include "Support/Progress.h"

// What a folder holds, to be shown and chosen from.
namespace kiv {

struct FolderEntry {
    std::string name;
    bool isFolder = false;
    std::int64_t size = 0;        // bytes
    std::int64_t modifiedNs = 0;  // since 1970

    friend bool operator==(const FolderEntry &, const FolderEntry &) = default;
};

struct FolderListing {
    enum class Access { writable, readOnly, unreadable, missing };

    Access access = Access::missing;
    std::vector<FolderEntry> entries;  // in the order of their bytes; no hidden ones and nothing but files and folders
};

// Blocks; any thread but the main and audio threads. A cancelled one is not whole.
FolderListing listFolder(Files &files, const std::string &folder, const Progress &progress);

// "512 bytes", "28.8 MB", "115 MB": in powers of a thousand, to a tenth below a hundred.
std::string sizeText(std::int64_t bytes);
// "Today", "Yesterday", "3 Nov", with the year when it is another one than now. In the user's time zone.
std::string dateText(std::int64_t modifiedNs, std::time_t now);

// The folders whose names begin with what was typed, those that do so letter for letter first.
std::vector<std::string> completions(const std::vector<FolderEntry> &entries, std::string_view begun);

}  // namespace kiv
