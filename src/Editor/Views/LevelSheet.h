#pragma once

#include "Editor/Surfaces/LevelSheetScene.h"
#include "Editor/Views/Field.h"
#include "Editor/Views/LevelSliderView.h"
#include "Editor/Views/Sheet.h"

namespace kiv {

// The Gain and the Normalize dialog: slider, field, the peak before and after.
class LevelSheet : public Sheet {
public:
    LevelSheet(AudioEditorModel &model, Dialog dialog, ViewStyle &style, QWidget *parent = nullptr);

    QSize sizeFor(int width) const override;
    void confirm() override;
    void cancel() override { model_.closeDialog(); }
    void takeFocus() override;
    bool takeKey(const KeyPress &press) override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    struct Measured {  // the peak, and of what it is
        std::int64_t generation = -1;
        std::optional<FrameRange> range;
        float peak = 0;
    };
    void connectControls();
    void refresh();
    float peak();
    void finishTyping();
    void step(int steps, bool isSmall);
    double paintPeak(QPainter *painter, double x, const QRectF &row) const;
    bool needsTwoRows(int width) const;
    int rowTop() const;

    AudioEditorModel &model_;
    Dialog dialog_;
    LevelSheetScene scene_;
    Measured measured_;
    bool isTyping_ = false;  // the field holds what the user types, which is not to be rewritten
    LevelSliderView *slider_;
    Field *field_;
    Button *apply_, *cancel_;
    Subscription modelChanges_;
};

}  // namespace kiv
