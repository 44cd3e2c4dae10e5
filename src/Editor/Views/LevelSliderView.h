#pragma once

#include "Editor/Surfaces/LevelSlider.h"
#include "Editor/Views/ValueControl.h"

namespace kiv {

void paintLevelSlider(QPainter &painter, const QRectF &rect, const LevelSlider &slider, double value, const ViewStyle &style);

// A slider for decibels: its thumb follows the pointer, all else is as with every number.
class LevelSliderView : public ValueControl {
public:
    LevelSliderView(ViewStyle &style, const LevelSlider &slider, QWidget *parent);

    static constexpr int beside = 16;  // room for the labels of the first and last tick

    static int heightFor(const ViewStyle &style);

    void setLevel(double db);
    double level() const { return facts_.value; }
    const ValueFacts &facts() const override { return facts_; }
    QString valueText() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void openField(const QString &) override {}

private:
    void placeThumb();

    LevelSlider slider_;
    ValueFacts facts_;
};

}  // namespace kiv
