#pragma once

#include <QWidget>
#include <functional>

#include "Editor/Views/Button.h"

namespace kiv {

// A row of choices of which one is on. Left and Right move on to the neighbour, at once in force; one stop for the Tab key.
class Segments : public QWidget {
public:
    // The kind is ButtonKind::bar, ButtonKind::sheet or ButtonKind::tab, whose icons are set on the buttons.
    Segments(ViewStyle &style, ButtonKind kind, const QStringList &labels, QWidget *parent);

    void setChosen(int index);
    int chosen() const;
    int count() const { return int(buttons_.size()); }
    Button *button(int index) const { return buttons_[index]; }
    QSize sizeHint() const override;

    std::function<void(int index)> onChosen;

protected:
    void resizeEvent(QResizeEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;

private:
    void layOut();

    ButtonKind kind_;
    QList<Button *> buttons_;
    Subscription styleChanges_;
};

}  // namespace kiv
