#pragma once

#include <QPushButton>
#include <string>

#include "Editor/Views/ViewStyle.h"

namespace kiv {

// A button in a window that is only its text or its icon until the pointer is on it. Enter presses it.
class QuietButton : public QPushButton {
public:
    QuietButton(ViewStyle &style, const QString &text, QWidget *parent);

    void setIconName(std::string_view name);
    QSize sizeHint() const override;

    static constexpr int beside = 4;  // what stands free beside the text

protected:
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    ViewStyle &style_;
    std::string icon_;
};

}  // namespace kiv
