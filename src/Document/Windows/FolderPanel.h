#pragma once

#include "Document/DocumentUi.h"

class QWidget;

namespace kiv {

// Asks for a folder with the desktop's own dialog, which belongs to the window and goes with it. What it should say stands in
// its title, for such dialogs have no other place for it.
void showFolderPanel(QWidget *window, const DocumentUi::FolderChoice &choice,
                     std::function<void(const std::optional<std::string> &)> answer);

}  // namespace kiv
