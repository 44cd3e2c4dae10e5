#pragma once

#include "Document/DocumentUi.h"
#include "Document/FolderPanelModel.h"
#include "Document/Windows/BrowsingPanel.h"

namespace kiv {

// The window that asks for a folder to write in.
class FolderPanelWindow : public BrowsingPanel {
public:
    using Answer = std::function<void(const std::optional<std::string> &)>;
    // Told once, when the window has gone from the screen.
    FolderPanelWindow(const PanelServices &services, const DocumentUi::FolderChoice &asked, Answer answer, QWidget *owner);

protected:
    std::string text() const override { return model_.text(); }
    void setText(const std::string &text) override { model_.type(text); }
    void setFolder(const std::string &folder) override { model_.setFolder(folder); }
    void setAccess(FolderListing::Access access) override { model_.setAccess(access); }
    void take(const std::string &name) override { model_.take(name); }
    std::optional<BegunPath> begun() const override { return model_.begun(); }
    PathVerdict verdict() const override { return model_.verdict(); }
    std::function<PathCheck(Files &)> check() const override {
        return [path = model_.path()](Files &files) { return checkFolder(files, path); };
    }
    void answer(const std::optional<std::string> &path) override { answer_(path); }

private:
    FolderPanelModel model_;
    Answer answer_;
};

}  // namespace kiv
