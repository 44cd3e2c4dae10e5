#include "Editor/Surfaces/FolderCrumbs.h"

namespace kiv {

bool isWithin(const std::string &folder, const std::string &other) {
    if (other == "/") return folder.starts_with('/');
    return folder == other || folder.starts_with(other + '/');
}

std::vector<FolderCrumb> folderCrumbs(const std::string &folder, const std::string &home) {
    const bool isAtHome = !home.empty() && isWithin(folder, home);
    std::vector<FolderCrumb> crumbs{isAtHome ? FolderCrumb{"Home", home} : FolderCrumb{"/", "/"}};
    std::size_t from = isAtHome ? home.size() : 0;
    while (from < folder.size()) {
        const std::size_t begin = from + 1, end = std::min(folder.find('/', begin), folder.size());
        if (end > begin) crumbs.push_back({folder.substr(begin, end - begin), folder.substr(0, end)});
        from = end;
    }
    return crumbs;
}

std::size_t firstCrumbShown(const std::vector<int> &widths, int between, int signWidth, int room) {
    int all = -between;
    for (const int width : widths) all += width + between;
    if (all <= room || widths.empty()) return 0;
    std::size_t first = widths.size() - 1;
    for (int used = signWidth + between + widths[first]; first > 0; --first) {
        used += between + widths[first - 1];
        if (used > room) break;
    }
    return first;
}

}  // namespace kiv
