#pragma once

#include "Editor/Surfaces/InfoFields.h"
#include "Editor/Views/ValueControl.h"

namespace kiv {

// A number that is only text at rest. A click (or Enter on it) turns it into a field to type another one into; two quick ones
// reset it.
class ValueReadout : public ValueControl {
public:
    ValueReadout(ViewStyle &style, QWidget *parent);

    // The type of the number at rest and in the field.
    void setType(int pixels, QFont::Weight weight);
    void setValue(const QString &text, const ValueFacts &facts);
    const ValueFacts &facts() const override { return facts_; }
    QString valueText() const override { return value_; }
    // The width that the number takes.
    int textWidth() const;
    // Puts it where the number is to stand; the control reaches a little further to both sides.
    void placeText(const QRect &rect) { setGeometry(rect.adjusted(-reach, 0, reach, 0)); }

    // Not so far that the focus ring around it would touch a label before it.
    static constexpr int reach = 3;

protected:
    void paintEvent(QPaintEvent *event) override;
    void openField(const QString &typed) override;
    void clicked() override { openField({}); }
    bool event(QEvent *event) override;

private:
    QRect fieldPlace() const;

    QString value_;
    ValueFacts facts_;
    int pixels_ = 12;
    QFont::Weight weight_ = QFont::Medium;
};

// Lets it set a place of the model.
void connectInfoField(ValueReadout &readout, AudioEditorModel &model, InfoField field);

}  // namespace kiv
