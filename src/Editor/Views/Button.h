#pragma once

#include <QPushButton>

#include "Editor/Views/ButtonPainter.h"

namespace kiv {

// A push button with our own look. Takes the focus from keys alone; Enter presses it, the space bar plays.
class Button : public QPushButton {
public:
    Button(const ViewStyle &style, ButtonKind kind, QWidget *parent = nullptr);

    void setIconName(std::string_view name);
    void setLabelAndText(const QString &label, const QString &text);
    void setCorners(Corners corners);
    void setOver(bool isOver);
    // Switched on, which is not the same as pressed down.
    void setOn(bool isOn);
    void setHasDigits(bool hasDigits);
    // One of a row of choices, which needs less room.
    void setSegment(bool isSegment);
    const ButtonLook &look() const { return look_; }

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;

private:
    template <class T>
    void change(T ButtonLook::*field, const T &value);

    const ViewStyle &style_;
    ButtonLook look_;
};

}  // namespace kiv
