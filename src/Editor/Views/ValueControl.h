#pragma once

#include <QWidget>

#include "Editor/Surfaces/Pointer.h"
#include "Editor/Surfaces/ValueInput.h"
#include "Editor/Views/Adjustable.h"
#include "Editor/Views/InPlaceField.h"

namespace kiv {

// What a parameter cell and a knob have in common: a number that is scrolled, dragged with the pointer hidden, stepped by keys,
// typed over, and put back to its default by a double-click.
class ValueControl : public QWidget, public Adjustable {
public:
    ValueControl(ViewStyle &style, double pixelsPerStep, Stepping stepping, QWidget *parent);

    ValueInput &input() { return input_; }
    InPlaceField &inPlace() { return inPlace_; }

    // From assistive tools, in the unit of the facts.
    std::function<void(double value)> onValue;
    void setFromOutside(double value) override;
    void stepFromOutside(int steps) override { input_.key(steps > 0 ? ValueKey::up : ValueKey::down, false); }

protected:
    // Opens the field over the value, holding what has been typed already.
    virtual void openField(const QString &typed) = 0;
    void tellValueChanged();
    ViewStyle &style() const { return style_; }

    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void returnPointer();

    ViewStyle &style_;
    ValueInput input_;
    InPlaceField inPlace_{*this};
    QPoint pressedAt_;  // on the screen
    Subscription styleChanges_;
};

}  // namespace kiv
