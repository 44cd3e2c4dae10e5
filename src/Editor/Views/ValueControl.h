#pragma once

#include <QWidget>

#include "Editor/Views/Adjustable.h"
#include "Editor/Views/InPlaceField.h"
#include "Editor/Views/ValueEvents.h"

namespace kiv {

// What cells, knobs, sliders and read-outs have in common: a number that is scrolled, dragged with the pointer hidden, stepped
// by keys, typed over, and put back to its default by a double-click.
class ValueControl : public QWidget, public Adjustable {
public:
    ValueControl(ViewStyle &style, QWidget *parent, double pixelsPerStep = stepPixels, Stepping stepping = Stepping::whole);

    ValueInput &input() { return input_; }
    InPlaceField &inPlace() { return inPlace_; }

    // From assistive tools, in the unit of the facts.
    std::function<void(double value)> onValue;
    void setFromOutside(double value) override;
    void stepFromOutside(int steps) override { input_.key(steps > 0 ? ValueKey::up : ValueKey::down, false); }
    void openFromOutside() override { openField({}); }

protected:
    // Opens the field over the value, holding what has been typed already.
    virtual void openField(const QString &typed) = 0;
    // A click makes it ready for typing; a drag leaves the keyboard where it was.
    virtual void clicked() { setFocus(Qt::MouseFocusReason); }
    void tellValueChanged();
    ViewStyle &style() const { return style_; }
    bool event(QEvent *event) override;

private:
    ViewStyle &style_;
    ValueInput input_;
    ValueEvents events_{*this, input_};
    InPlaceField inPlace_{*this};
    Subscription styleChanges_;
};

}  // namespace kiv
