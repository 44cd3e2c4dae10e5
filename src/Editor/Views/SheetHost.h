#pragma once

#include <QVariantAnimation>
#include <QWidget>
#include <deque>
#include <memory>

#include "Editor/Views/FloatShadow.h"
#include "Editor/Views/Sheet.h"

namespace kiv {

// Hangs sheets from the lower edge of the top bar, one at a time; others wait their turn. Slides them down unless the desktop
// asks for reduced motion.
class SheetHost {
public:
    SheetHost(ViewStyle &style, QWidget *window);
    ~SheetHost();

    Sheet *current() const { return sheet_; }
    // Shows the sheet now or when those before it are gone.
    void show(std::unique_ptr<Sheet> sheet);
    // Takes the present sheet away; it may be the caller's own.
    void dismiss();
    void dismissAll();
    // The room for sheets: they hang from its upper edge.
    void setRoom(const QRect &room);

    std::function<void()> onFirst;  // before one is shown where none was
    std::function<void(Sheet &)> onShown;
    std::function<void()> onGone;  // the last one has left
    std::function<void(QWheelEvent *)> onWheel;

private:
    void showNext();
    void place(double progress);

    ViewStyle &style_;
    QWidget *clip_;  // what of the sheet has come out from under the bar
    FloatShadow *shadow_;
    Sheet *sheet_ = nullptr;
    std::deque<std::unique_ptr<Sheet>> waiting_;
    QVariantAnimation slide_;
    double shown_ = 1;
    QRect room_;
};

}  // namespace kiv
