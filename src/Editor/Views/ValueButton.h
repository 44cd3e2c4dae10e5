#pragma once

#include <QPushButton>

#include "Editor/Views/InPlaceField.h"
#include "Editor/Views/ViewStyle.h"

namespace kiv {

// A number that is only text until it is clicked (or Enter is pressed on it) and then a field to type another one into.
class ValueButton : public QPushButton {
public:
    ValueButton(ViewStyle &style, QWidget *parent);

    // The type of the number at rest and in the field.
    void setType(int pixels, QFont::Weight weight);
    void setValue(const QString &text);
    const QString &value() const { return value_; }
    // The width that the number takes.
    int textWidth() const;
    // Puts it where the number is to stand; the control reaches a little further to both sides.
    void placeText(const QRect &rect) { setGeometry(rect.adjusted(-reach, 0, reach, 0)); }
    bool isEditing() const { return inPlace_.isOpen(); }
    void edit();

    // Takes what was typed; false leaves the field open with its frame saying that it could not be read.
    std::function<bool(const std::string &typed)> onEntered;
    // The field has closed by Enter or Esc: where the keyboard should go.
    std::function<void()> onLeft;

    // Not so far that the focus ring around it would touch a label before it.
    static constexpr int reach = 3;

protected:
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    QRect fieldPlace() const;

    ViewStyle &style_;
    QString value_;
    int pixels_ = 12;
    QFont::Weight weight_ = QFont::Medium;
    InPlaceField inPlace_{*this};
};

}  // namespace kiv
