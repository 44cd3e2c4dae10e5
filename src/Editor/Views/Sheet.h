#pragma once

#include <QWidget>
#include <functional>

#include "App/Commands/Shortcut.h"
#include "Editor/Views/Button.h"
#include "Editor/Views/ViewStyle.h"

namespace kiv {

// One thing that hangs from the top bar and wants an answer. Knows how large it is and what the keys mean; the SheetHost shows
// it and takes it away.
class Sheet : public QWidget {
public:
    explicit Sheet(ViewStyle &style, QWidget *parent = nullptr);

    static constexpr int padding = 16;

    // Its size when this much room is there. It is no larger, but for texts that are longer than the lowest window can hold.
    virtual QSize sizeFor(const QSize &room) const = 0;
    // What Enter and Esc do.
    virtual void confirm() = 0;
    virtual void cancel() = 0;
    // Puts the focus where typing should go.
    virtual void takeFocus() = 0;
    // A key that no control of the sheet wanted, or that was pressed while something outside had the focus; true when it meant
    // something here.
    virtual bool takeKey(const KeyPress &press);

    // sizeFor has another answer now.
    std::function<void()> onSizeChanged;
    // A wheel that turned over it: the waveform zooms all the same.
    std::function<void(QWheelEvent *)> onWheel;

protected:
    bool focusNextPrevChild(bool next) override;
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

    // The focusable children in their tab order.
    void setTabRing(const QList<QWidget *> &ring) { ring_ = ring; }
    // Puts the children into the order in which they are seen, for those who have them read to them.
    static void readInOrder(const QList<QWidget *> &children);
    ViewStyle &style() const { return style_; }

private:
    ViewStyle &style_;
    QList<QWidget *> ring_;
    Subscription styleChanges_;
};

// Puts buttons into a row of this width, the first one rightmost, and into further rows under it where it has no room for all.
// Their height without placing them, and with it.
int buttonRowsHeight(const QList<Button *> &buttons, int width);
void placeButtons(const QList<Button *> &buttons, int left, int right, int y);

}  // namespace kiv
