#pragma once

#include <QCheckBox>
#include <QRadioButton>

#include "Editor/Views/ChoicePainter.h"

namespace kiv {

// A toolkit's choice in our own look: Toggle is a QCheckBox or a QRadioButton, which know the keys and the assistive tools.
// Enter presses it as well, for the space bar plays.
template <class Toggle, ChoiceKind kind>
class Choice : public Toggle {
public:
    Choice(ViewStyle &style, const QString &text, QWidget *parent);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    bool hitButton(const QPoint &at) const override { return this->rect().contains(at); }

private:
    ViewStyle &style_;
    Subscription styleChanges_;
};

using CheckBox = Choice<QCheckBox, ChoiceKind::check>;
using RadioButton = Choice<QRadioButton, ChoiceKind::radio>;

extern template class Choice<QCheckBox, ChoiceKind::check>;
extern template class Choice<QRadioButton, ChoiceKind::radio>;

}  // namespace kiv
