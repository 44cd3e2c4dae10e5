#pragma once

#include <QObject>
#include <QPoint>

#include "Editor/Surfaces/ValueInput.h"

class QKeyEvent;
class QMouseEvent;
class QWidget;

namespace kiv {

// Hands the events of a widget that shows a number on to its input, with the pointer of a drag hidden and put back. Esc ends
// the drag, whoever has the keyboard.
class ValueEvents : public QObject {
public:
    ValueEvents(QWidget &control, ValueInput &input) : control_(control), input_(input) {}

    // For the widget's event(). True when the event has been the number's, and is nobody else's.
    bool take(QEvent &event);

    std::function<void()> onClick;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool press(QMouseEvent &event);
    bool move(QMouseEvent &event);
    bool release(QMouseEvent &event);
    bool key(QKeyEvent &event);
    void beginDrag();
    void returnPointer();
    void giveUp();
    void endDrag();

    QWidget &control_;
    ValueInput &input_;
    QPoint pressedAt_;  // on the screen
};

}  // namespace kiv
