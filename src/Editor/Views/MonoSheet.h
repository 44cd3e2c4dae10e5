#pragma once

#include <array>

#include "Editor/Surfaces/MonoSheetScene.h"
#include "Editor/Views/Sheet.h"

namespace kiv {

// The Convert to Mono dialog: a tile for each outcome.
class MonoSheet : public Sheet {
public:
    MonoSheet(AudioEditorModel &model, ViewStyle &style, QWidget *parent = nullptr);

    QSize sizeFor(int width) const override;
    void confirm() override;
    void cancel() override { model_.closeDialog(); }
    void takeFocus() override;
    bool takeKey(const KeyPress &press) override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    class Tile;
    void refresh();
    void choose(AudioEditorMonoSource source);
    int tilesTop() const;

    AudioEditorModel &model_;
    MonoSheetScene scene_;
    std::array<Tile *, allMonoSources.size()> tiles_{};
    Button *convert_, *cancel_;
    Subscription modelChanges_;
};

}  // namespace kiv
