#include "Document/FolderPanelModel.h"

namespace kiv {

void FolderPanelModel::setFolder(const std::string &folder) {
    text_ = folder_ = normalPath(folder);
    access_.reset();
}

PathVerdict FolderPanelModel::verdict() const {
    if (text_.empty() || text_.find('\0') != text_.npos) return {};
    const std::string fault = path() == folder_ ? folderFault(access_) : "";
    return {.canConfirm = fault.empty(), .isFault = !fault.empty(), .words = fault};
}

}  // namespace kiv
