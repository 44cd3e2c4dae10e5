#include "Document/SavePanelModel.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "Document/FileNames.h"
#include "Platform/FileCopy.h"

namespace kiv {
namespace {

constexpr std::size_t longestName = 255;  // bytes, on every file system that matters

bool isOnly(const std::string &text, const char *characters) { return text.find_first_not_of(characters) == text.npos; }

std::string normal(const std::string &path) {
    std::string text = std::filesystem::path(path).lexically_normal();
    while (text.size() > 1 && text.ends_with('/')) text.pop_back();
    return text;
}

bool isFolder(Files &files, const std::string &path) {
    const auto identity = files.identity(path);
    return identity && identity->kind == FileSystem::Kind::folder;
}

}  // namespace

std::string folderAbove(const std::string &path) {
    const std::size_t slash = path.find_last_of('/');
    return slash == path.npos || slash == 0 ? "/" : path.substr(0, slash);
}

std::string pathWithin(const std::string &folder, const std::string &name) {
    return folder.ends_with('/') ? folder + name : folder + '/' + name;
}

SavePanelModel::SavePanelModel(const DocumentUi::SavePanel &asked, std::string home)
    : home_(std::move(home)), folder_(folderAbove(asked.path)), format_(asked.format), wished_(asked.format) {
    if (format_) format_ = formatIn(format_->container, *format_);
    fixedExtension_ = extensionOf(nameOf(asked.path));
    name_ = proposedName_ = finishedName(nameOf(asked.path), extension());
}

std::string SavePanelModel::extension() const {
    return format_ ? std::string(saveContainerRow(format_->container).extensions.front()) : fixedExtension_;
}

void SavePanelModel::setFolder(const std::string &folder) {
    if (isPath()) name_ = meaning() == Meaning::file ? nameOf(name_) : proposedName_;
    if (isOnly(name_, " ")) name_ = proposedName_;
    folder_ = normal(folder);
    access_.reset();
}

void SavePanelModel::typeName(const std::string &name) {
    name_ = name;
    const auto container = containerOfExtension(extensionOf(nameOf(name)));
    if (format_ && container && *container != format_->container) format_ = formatIn(*container, *wished_);
}

void SavePanelModel::takeName(const std::string &name) {
    typeName(name);
    applyExtension();
}

void SavePanelModel::chooseContainer(SaveContainer container) {
    format_ = formatIn(container, wished_.value_or(AudioSaveFormat{}));
    if (meaning() == Meaning::file) applyExtension();
}

void SavePanelModel::chooseFormat(const AudioSaveFormat &format) { format_ = wished_ = format; }

void SavePanelModel::applyExtension() {
    const std::string last = nameOf(name_);
    name_ = name_.substr(0, name_.size() - last.size()) + finishedName(last, extension());
}

bool SavePanelModel::isPath() const { return name_.find('/') != name_.npos || name_ == "~"; }

SavePanelModel::Meaning SavePanelModel::meaning() const {
    const std::string last = nameOf(name_);
    if (name_.find('\0') != name_.npos) return Meaning::nothing;
    if (isPath() && (last.empty() || last == "~" || last == "." || last == "..")) return Meaning::folder;
    if (isOnly(last, " ") || isOnly(last, ".")) return Meaning::nothing;
    return finishedName(last, extension()).size() > longestName ? Meaning::nothing : Meaning::file;
}

std::string SavePanelModel::typedPath() const {
    if (name_ == "~" || name_.starts_with("~/")) return normal(home_ + name_.substr(1));
    return normal(name_.starts_with('/') ? name_ : pathWithin(folder_, name_));
}

std::string SavePanelModel::target() const {
    const std::string path = typedPath();
    return pathWithin(folderAbove(path), finishedName(nameOf(path), extension()));
}

std::optional<SavePanelModel::Begun> SavePanelModel::begunFolder() const {
    if (name_.find('/') == name_.npos) return std::nullopt;
    const std::string part = nameOf(name_);
    const bool isFromHome = name_.starts_with("~/");
    const std::string above = name_.substr(0, name_.size() - part.size());
    if (isFromHome) return Begun{normal(home_ + above.substr(1)), part};
    return Begun{normal(above.starts_with('/') ? above : pathWithin(folder_, above)), part};
}

SavePanelModel::Verdict SavePanelModel::verdict() const {
    using Access = FolderListing::Access;
    const Meaning what = meaning();
    const std::string last = nameOf(name_), finished = finishedName(last, extension());
    if (what == Meaning::folder) return {.canConfirm = true};
    if (what == Meaning::nothing && finished.size() > longestName) return {.isFault = true, .words = "The name is too long"};
    const bool concernsFolder = !isPath();
    if (concernsFolder && access_ == Access::missing) return {.isFault = true, .words = "This folder is no longer there"};
    if (concernsFolder && access_ == Access::unreadable) return {.isFault = true, .words = "This folder cannot be read"};
    if (concernsFolder && access_ == Access::readOnly) return {.isFault = true, .words = "This folder cannot be written to"};
    if (what == Meaning::nothing) return {};
    return {.canConfirm = true, .words = finished == last ? "" : "Will be saved as " + quoted(finished)};
}

SaveCheck checkTarget(Files &files, const SavePanelModel &model) {
    const std::string typed = model.typedPath(), target = model.target(), folder = folderAbove(target);
    const auto refusal = [](const std::string &words) { return SaveCheck{SaveCheck::Outcome::refuse, {}, words}; };
    try {
        if (model.isPath() && isFolder(files, typed)) return {SaveCheck::Outcome::enterFolder, typed, {}};
        if (model.meaning() == SavePanelModel::Meaning::folder) return refusal("There is no folder " + quoted(typed));
        if (!isFolder(files, folder)) return refusal("There is no folder " + quoted(folder));
        if (isFolder(files, target)) return refusal(quoted(nameOf(target)) + " is a folder");
        if (!files.isWritable(folder)) return refusal(quoted(nameOf(folder)) + " cannot be written to");
    } catch (const std::system_error &error) {
        return refusal(error.what());
    }
    return {SaveCheck::Outcome::write, target, {}};
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
