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

    // Its size when at most this wide.
    virtual QSize sizeFor(int width) const = 0;
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
    void drawText(QPainter &painter, const QRectF &rect, Qt::Alignment alignment, const QFont &font, Rgba color,
                  const QString &text) const;

private:
    ViewStyle &style_;
    QList<QWidget *> ring_;
    Subscription styleChanges_;
};

// Puts buttons in a row with its right end at `right`, the first one rightmost; returns the left end of the row.
int placeButtons(const QList<Button *> &buttons, int right, int y);

}  // namespace kiv
