#pragma once

#include "Editor/Views/ParameterCellPainter.h"
#include "Editor/Views/ValueControl.h"

namespace kiv {

// A setting of a mode bar: its name over its value. Two pixels larger on every side than the box one sees, for the frame that
// it wears while a value is typed.
class ParameterCell : public ValueControl {
public:
    using ValueControl::ValueControl;

    static constexpr int frame = Field::frame;

    void setScene(const ParameterCellScene &scene);
    const ValueFacts &facts() const override { return scene_.facts; }
    QString valueText() const override;
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void openField(const QString &typed) override;

private:
    QRect box() const { return rect().adjusted(frame, frame, -frame, -frame); }

    ParameterCellScene scene_;
};

}  // namespace kiv
