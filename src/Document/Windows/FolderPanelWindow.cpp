#include "Document/Windows/FolderPanelWindow.h"

namespace kiv {

FolderPanelWindow::FolderPanelWindow(const PanelServices &services, const DocumentUi::FolderChoice &asked, Answer answer,
                                     QWidget *owner)
    : BrowsingPanel(services, {"Choose a Folder", asked.message, "Path", asked.prompt}, FolderBrowser::Shows::folders, owner),
      model_(asked.folder, homeFolder()),
      answer_(std::move(answer)) {
    begin(model_.folder());
}

}  // namespace kiv
