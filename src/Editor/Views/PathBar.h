#pragma once

#include <functional>
#include <vector>

#include "Editor/Surfaces/FolderCrumbs.h"
#include "Editor/Views/QuietButton.h"

namespace kiv {

// The way to a folder, a step to press for each. One stop for the Tab key: Left and Right move from step to step, Enter goes
// there. Where there is too little room the first steps are left out.
class PathBar : public QWidget {
public:
    PathBar(ViewStyle &style, QWidget *parent);

    void setCrumbs(std::vector<FolderCrumb> crumbs);
    int barHeight() const { return style_.grown(24); }
    // How far the steps shown reach to the right.
    int usedWidth() const { return usedWidth_; }
    // The steps, for the ring that shows where the keyboard is.
    std::function<void(QWidget *crumb)> onMade;
    std::function<void(const std::string &path)> onChosen;

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;

private:
    void layOut();
    void moveFocus(int step);

    ViewStyle &style_;
    std::vector<FolderCrumb> crumbs_;
    QList<QuietButton *> buttons_;
    std::size_t firstShown_ = 0;
    int usedWidth_ = 0;
    Subscription styleChanges_;
};

}  // namespace kiv
