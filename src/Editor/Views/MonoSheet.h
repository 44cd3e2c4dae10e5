#pragma once

#include <array>

#include "Editor/Surfaces/MonoSheetScene.h"
#include "Editor/Views/DialogSheet.h"

namespace kiv {

// The Convert to Mono dialog: a tile for each outcome.
class MonoSheet : public DialogSheet {
public:
    MonoSheet(AudioEditorModel &model, ViewStyle &style, QWidget *parent = nullptr);

    void takeFocus() override;
    bool takeKey(const KeyPress &press) override;

protected:
    void refresh() override;
    int wishedWidth() const override;
    int bodyHeight(int width, const DialogSheetDistances &distances) const override;
    void placeBody(const QRect &body, const DialogSheetDistances &distances) override;
    int paintNote(QPainter *painter, const QRectF &row) const override;

private:
    class Tile;
    void choose(AudioEditorMonoSource source);

    MonoSheetScene scene_;
    std::array<Tile *, allMonoSources.size()> tiles_{};
};

}  // namespace kiv
