#pragma once

#include "Editor/Surfaces/LevelSheetScene.h"
#include "Editor/Views/DialogSheet.h"
#include "Editor/Views/Field.h"
#include "Editor/Views/LevelSliderView.h"

namespace kiv {

// The Gain and the Normalize dialog: slider, field, the peak before and after.
class LevelSheet : public DialogSheet {
public:
    LevelSheet(AudioEditorModel &model, Dialog dialog, ViewStyle &style, QWidget *parent = nullptr);

    Field &field() const { return *field_; }
    LevelSliderView &slider() const { return *slider_; }

    void takeFocus() override;
    bool takeKey(const KeyPress &press) override;

protected:
    void refresh() override;
    int wishedWidth() const override;
    int bodyHeight(int width, const DialogSheetDistances &distances) const override;
    void placeBody(const QRect &body, const DialogSheetDistances &distances) override;
    int paintNote(QPainter *painter, const QRectF &row) const override;

private:
    struct Measured {  // the peak, and of what it is
        std::int64_t generation = -1;
        std::optional<FrameRange> range;
        float peak = 0;
    };
    void connectInput(ValueInput &input);
    void connectField();
    void set(double db);
    float peak();

    Dialog dialog_;
    LevelSheetScene scene_;
    Measured measured_;
    bool isTyping_ = false;  // the field holds what the user types, which is not to be rewritten
    LevelSliderView *slider_;
    Field *field_;
};

}  // namespace kiv
