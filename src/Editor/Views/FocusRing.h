#pragma once

#include <QPointer>
#include <QWidget>

#include "Editor/Views/ViewStyle.h"

namespace kiv {

// The accent ring around the control that has the focus, once a key has moved it there. One for a window; follows the controls
// it is told of.
class FocusRing : public QWidget {
public:
    FocusRing(ViewStyle &style, QWidget *window);

    void follow(QWidget *control);
    // Every focusable widget inside but the fields, which show by themselves that they are typed into.
    void followAll(QWidget *container);

    bool eventFilter(QObject *watched, QEvent *event) override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void place();

    ViewStyle &style_;
    QPointer<QWidget> control_;  // the one that wears the ring
    Subscription styleChanges_;
};

}  // namespace kiv
