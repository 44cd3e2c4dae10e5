#pragma once

#include <QPointer>
#include <QWidget>

#include "Editor/Views/ViewStyle.h"

namespace kiv {

// The ring around a control of this place.
void paintFocusRing(QPainter &painter, const QRectF &control, const ViewStyle &style);

// The accent ring around the control that has the focus, once a key has moved it there. One for a window; follows the controls
// it is told of.
class FocusRing : public QWidget {
public:
    FocusRing(ViewStyle &style, QWidget *window);

    void follow(QWidget *control);
    // Every focusable widget inside but the fields, which show by themselves that they are typed into.
    void followAll(QWidget *container);

    // Where the control wears the ring if not around all of itself: a rectangle in its own coordinates, which may change while
    // it has the focus.
    static void setPlace(QWidget &control, const QRect &place);

    QWidget *wearer() const { return control_; }
    // The window has been laid out anew.
    void refresh() { place(); }

    bool eventFilter(QObject *watched, QEvent *event) override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    bool wears(const QWidget &control, const QFocusEvent &event) const;
    void place();

    ViewStyle &style_;
    QPointer<QWidget> control_;  // the one that wears the ring
    QPointer<QWidget> left_;     // the one that wore it last
    Subscription styleChanges_;
};

}  // namespace kiv
