#include "Document/FolderAccess.h"

#include <algorithm>
#include <memory>
#include <sstream>
#include <system_error>

#include "Document/PanelPaths.h"

namespace kiv {
namespace {

bool covers(const std::string &allowed, const std::string &folder) {
    return folder == allowed || folder.starts_with(allowed.ends_with('/') ? allowed : allowed + "/");
}

// What cannot be told may be back tomorrow.
bool isGone(Files &files, const std::string &folder) {
    try {
        return !isFolder(files, folder);
    } catch (const std::system_error &) {
        return false;
    }
}

}  // namespace

// Of the remembered folders only those that cover this one are looked at: another one's disk may not answer.
void FolderAccess::withAccess(const std::string &folder, const std::string &message, Then then) {
    std::vector<std::string> allowed = remembered();
    std::erase_if(allowed, [&](const std::string &each) { return !covers(each, folder); });
    const auto mayWrite = std::make_shared<bool>(false);
    core_.work.start(
        DocumentWork::Kind::looking,
        [&files = core_.services.files, folder, allowed, mayWrite](Progress &) {
            const auto isThere = [&](const std::string &each) { return !isGone(files, each); };
            *mayWrite = files.isWritable(folder) || std::ranges::any_of(allowed, isThere);
        },
        [=, this](std::exception_ptr cancelled) {
            core_.tell();
            forgetGone();
            if (cancelled) return then(std::nullopt);
            *mayWrite ? then(folder) : ask(folder, message, then);
        });
}

void FolderAccess::ask(const std::string &folder, const std::string &message, Then then) {
    core_.ui.chooseFolder(
        {folder, message, "Allow"},
        core_.lifetime.guard([this, folder, then = std::move(then)](const std::optional<std::string> &chosen) {
            if (!chosen) return then(std::nullopt);
            remember(*chosen);
            then(covers(*chosen, folder) ? folder : *chosen);
        }));
}

// A folder a line; what has a line break in its name is asked for every time.
std::vector<std::string> FolderAccess::remembered() const {
    std::istringstream stored(core_.services.settings.get(Setting::folderBookmarks));
    std::vector<std::string> folders;
    for (std::string line; std::getline(stored, line);) folders.push_back(line);
    return folders;
}

void FolderAccess::forgetGone() {
    std::vector<std::string> all = remembered();
    if (all.empty() || std::exchange(looksForGone_, true)) return;
    const auto gone = std::make_shared<std::vector<std::string>>(std::move(all));
    core_.services.jobs.read(
        std::make_shared<Progress>(),
        [&files = core_.services.files, gone](Progress &) {
            std::erase_if(*gone, [&](const std::string &each) { return !isGone(files, each); });
        },
        core_.lifetime.guard([this, gone](std::exception_ptr) {
            looksForGone_ = false;
            std::vector<std::string> folders = remembered();
            const auto isForgotten = [&](const auto &each) { return std::ranges::find(*gone, each) != gone->end(); };
            if (std::erase_if(folders, isForgotten) > 0) store(folders);
        }));
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
    core_.services.settings.set(Setting::folderBookmarks, text);
}

}  // namespace kiv
