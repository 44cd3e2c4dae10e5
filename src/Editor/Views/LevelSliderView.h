#pragma once

#include <QSlider>
#include <functional>

#include "Editor/Surfaces/LevelSlider.h"
#include "Editor/Surfaces/ValueInput.h"
#include "Editor/Views/Adjustable.h"
#include "Editor/Views/ViewStyle.h"

namespace kiv {

void paintLevelSlider(QPainter &painter, const QRectF &rect, const LevelSlider &slider, double value, const ViewStyle &style);

// A slider for decibels. Dragged, scrolled, stepped by keys, and put back to 0 by a double-click. To the toolkit its value is
// in tenths.
class LevelSliderView : public QSlider, public Adjustable {
public:
    LevelSliderView(ViewStyle &style, const LevelSlider &slider, QWidget *parent);

    static constexpr int beside = 16;  // room for the labels of the first and last tick

    static int heightFor(const ViewStyle &style);

    void setLevel(double db);
    double level() const { return facts_.value; }
    const ValueFacts &facts() const override { return facts_; }
    QString valueText() const override;
    void setFromOutside(double db) override { choose(db); }
    void stepFromOutside(int steps) override;

    std::function<void(double db)> onLevel;
    std::function<void(int step, bool isSmall)> onStep;

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void choose(double db);
    void placeThumb();

    ViewStyle &style_;
    LevelSlider slider_;
    ValueFacts facts_;
    StepCounter turned_;
};

}  // namespace kiv
