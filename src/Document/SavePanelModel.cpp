#include "Document/SavePanelModel.h"

#include <system_error>

#include "Document/FileNames.h"
#include "Platform/FileCopy.h"

namespace kiv {
namespace {

constexpr std::size_t longestName = 255;  // bytes, on every file system that matters

bool isOnly(const std::string &text, const char *characters) { return text.find_first_not_of(characters) == text.npos; }

}  // namespace

SavePanelModel::SavePanelModel(const DocumentUi::SavePanel &asked, std::string home)
    : home_(std::move(home)), folder_(folderAbove(asked.path)), format_(asked.format), wished_(asked.format) {
    if (format_) format_ = formatIn(format_->container, *format_);
    fixedExtension_ = extensionOf(nameOf(asked.path));
    name_ = proposedName_ = finishedName(nameOf(asked.path), extension());
}

void SavePanelModel::keepName() {
    if (!isPath() && meaning() == Meaning::file) proposedName_ = finishedName(name_, extension());
}

std::string SavePanelModel::extension() const {
    return format_ ? std::string(saveContainerRow(format_->container).extensions.front()) : fixedExtension_;
}

void SavePanelModel::setFolder(const std::string &folder) {
    if (isPath()) name_ = meaning() == Meaning::file ? nameOf(name_) : proposedName_;
    if (isOnly(name_, " ")) name_ = proposedName_;
    folder_ = normalPath(folder);
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

std::string SavePanelModel::typedPath() const { return kiv::typedPath(name_, folder_, home_); }

std::string SavePanelModel::target() const {
    const std::string path = typedPath();
    return pathWithin(folderAbove(path), finishedName(nameOf(path), extension()));
}

std::optional<BegunPath> SavePanelModel::begunFolder() const { return begunPath(name_, folder_, home_); }

PathVerdict SavePanelModel::verdict() const {
    const Meaning what = meaning();
    const std::string last = nameOf(name_), finished = finishedName(last, extension());
    if (what == Meaning::folder) return {.canConfirm = true};
    if (what == Meaning::nothing && finished.size() > longestName)
        return {.isFault = true, .isInText = true, .words = "The name is too long"};
    const bool concernsFolder = !isPath();
    if (const std::string fault = concernsFolder ? folderFault(access_) : ""; !fault.empty())
        return {.isFault = true, .words = fault};
    if (what == Meaning::nothing) return {};
    return {.canConfirm = true, .words = finished == last ? "" : "Will be saved as " + quoted(finished)};
}

PathCheck checkTarget(Files &files, const SavePanelModel &model) {
    const std::string typed = model.typedPath(), target = model.target(), folder = folderAbove(target);
    try {
        if (model.isPath() && isFolder(files, typed)) return {PathCheck::Outcome::enterFolder, typed, {}};
        if (model.meaning() == SavePanelModel::Meaning::folder)
            return PathCheck::refusal("There is no folder " + quoted(typed));
        if (!isFolder(files, folder)) return PathCheck::refusal("There is no folder " + quoted(folder));
        if (isFolder(files, target)) return PathCheck::refusal(quoted(nameOf(target)) + " is a folder");
        if (!files.isWritable(folder)) return PathCheck::refusal(quoted(nameOf(folder)) + " cannot be written to");
    } catch (const std::system_error &error) {
        return PathCheck::refusal(error.what());
    }
    return {PathCheck::Outcome::take, target, {}};
}

}  // namespace kiv
