#pragma once

#include <array>

#include "Document/SavePanelModel.h"
#include "Document/Windows/BrowsingPanel.h"
#include "Editor/Views/Segments.h"

namespace kiv {

// The window that asks where a sound is to be saved, under what name and in what format.
class SavePanelWindow : public BrowsingPanel {
public:
    using Answer = std::function<void(const std::optional<DocumentUi::SaveTarget> &)>;
    // Told once, when the window has gone from the screen.
    SavePanelWindow(const PanelServices &services, const DocumentUi::SavePanel &asked, Answer answer, QWidget *owner);

protected:
    std::string text() const override { return model_.name(); }
    void setText(const std::string &text) override { model_.typeName(text); }
    void setFolder(const std::string &folder) override { model_.setFolder(folder); }
    void setAccess(FolderListing::Access access) override { model_.setAccess(access); }
    void take(const std::string &name) override { model_.takeName(name); }
    void keepText() override { model_.keepName(); }
    std::optional<BegunPath> begun() const override { return model_.begunFolder(); }
    PathVerdict verdict() const override { return model_.verdict(); }
    std::function<PathCheck(Files &)> check() const override;
    void answer(const std::optional<std::string> &path) override;
    int stemLength() const override;

    QList<QWidget *> choices() const override;
    void measureChoices(SavePanelMeasures &measures) const override;
    void placeChoices() override;
    void paintChoices(QPainter &painter) override;
    void refreshChoices() override;

private:
    void makeFormats();
    Segments &bitsRow() const { return *bits_[std::size_t(model_.format()->container)]; }

    SavePanelModel model_;
    Answer answer_;
    Segments *containers_ = nullptr;
    std::array<Segments *, 3> bits_{};
};

}  // namespace kiv
