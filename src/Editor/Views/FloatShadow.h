#pragma once

#include <QPixmap>
#include <QWidget>

#include "Editor/Views/CrispPainting.h"

namespace kiv {

// The shadow and the thin edge around something that floats over the window. A widget beside the floating one, which lets the
// pointer through.
class FloatShadow : public QWidget {
public:
    // A radius beyond half the box's height makes its ends round.
    FloatShadow(ViewStyle &style, double radius, Corners corners, QWidget *parent);

    // Around this box of the parent, nothing of it above `top`.
    void surround(const QRect &box, int top);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QPixmap drawn(double ratio) const;

    ViewStyle &style_;
    double radius_;
    Corners corners_;
    QRect box_;  // in this widget
    QPixmap cache_;
    Subscription styleChanges_;
};

}  // namespace kiv
