#pragma once

#include "Editor/Views/KnobPainter.h"
#include "Editor/Views/ValueControl.h"

namespace kiv {

// A knob with its value under it. Its steps are hundredths of its range, a tenth of that with Shift.
class Knob : public ValueControl {
public:
    Knob(ViewStyle &style, QWidget *parent);

    void setScene(const KnobScene &scene);
    // What it stands on, if not a sheet.
    void setGround(Rgba ground);
    const ValueFacts &facts() const override { return scene_.facts; }
    QString valueText() const override;
    QSize sizeHint() const override;

    // How far it is to be turned, in parts of its range.
    std::function<void(double fraction)> onTurn;

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void openField(const QString &typed) override;

private:
    QRect knobBox() const;
    QRect textLine() const;

    KnobScene scene_;
    std::optional<Rgba> ground_;
};

}  // namespace kiv
