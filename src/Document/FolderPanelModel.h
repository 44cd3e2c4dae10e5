#pragma once

#include <optional>
#include <string>

#include "Document/PanelPaths.h"

namespace kiv {

// What is chosen in a panel that asks for a folder to write in: where one is, and the path that is the answer, which is that
// folder's own until another one is typed or taken from the list. A value; knows nothing of the disk but what it is told.
class FolderPanelModel {
public:
    FolderPanelModel(const std::string &folder, std::string home) : home_(std::move(home)) { setFolder(folder); }

    const std::string &folder() const { return folder_; }
    const std::string &text() const { return text_; }  // as it stands in the field
    std::string path() const { return typedPath(text_, folder_, home_); }

    void setFolder(const std::string &folder);
    // Of the folder that one is in; nothing while it is being read.
    void setAccess(std::optional<FolderListing::Access> access) { access_ = access; }
    void type(const std::string &text) { text_ = text; }
    void take(const std::string &name) { text_ = pathWithin(folder_, name); }

    std::optional<BegunPath> begun() const { return begunPath(text_, folder_, home_); }
    PathVerdict verdict() const;

private:
    std::string home_, folder_, text_;
    std::optional<FolderListing::Access> access_;
};

}  // namespace kiv
