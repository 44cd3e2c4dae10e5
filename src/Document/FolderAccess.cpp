#include "Document/FolderAccess.h"

#include <algorithm>
#include <sstream>

namespace kiv {
namespace {

bool covers(const std::string &allowed, const std::string &folder) {
    return folder == allowed || folder.starts_with(allowed.ends_with('/') ? allowed : allowed + "/");
}

}  // namespace

void FolderAccess::withAccess(const std::string &folder, const std::string &message, Then then) {
    const auto isAllowed = [&](const std::string &allowed) { return covers(allowed, folder); };
    if (files_.isWritable(folder) || std::ranges::any_of(remembered(), isAllowed)) return then(folder);
    ui_.chooseFolder({folder, message, "Allow"}, [this, folder, then = std::move(then)](const auto &chosen) {
        if (!chosen) return then(std::nullopt);
        remember(*chosen);
        then(covers(*chosen, folder) ? folder : *chosen);
    });
}

// A folder a line; what has a line break in its name is asked for every time.
std::vector<std::string> FolderAccess::remembered() {
    std::istringstream stored(settings_.get(Setting::folderBookmarks));
    std::vector<std::string> folders;
    for (std::string line; std::getline(stored, line);) folders.push_back(line);
    const auto isGone = [this](const std::string &folder) {
        const auto identity = files_.identity(folder);
        return !identity || identity->kind != FileSystem::Kind::folder;
    };
    if (std::erase_if(folders, isGone) > 0) store(folders);
    return folders;
}

void FolderAccess::remember(const std::string &folder) {
    std::vector<std::string> folders = remembered();
    if (folder.find('\n') != folder.npos || std::ranges::find(folders, folder) != folders.end()) return;
    folders.push_back(folder);
    store(folders);
}

void FolderAccess::store(const std::vector<std::string> &folders) {
    std::string text;
    for (const std::string &folder : folders) text += (text.empty() ? "" : "\n") + folder;
    settings_.set(Setting::folderBookmarks, text);
}

}  // namespace kiv
