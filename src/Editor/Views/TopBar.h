#pragma once

#include <QWidget>
#include <array>

#include "Editor/AudioEditorModel/AudioEditorModel.h"
#include "Editor/Surfaces/TopBarLayout.h"
#include "Editor/Surfaces/TopBarScene.h"
#include "Editor/Surfaces/ValueInput.h"
#include "Editor/Views/Button.h"
#include "Editor/Views/CommandTarget.h"
#include "Editor/Views/ValueButton.h"

namespace kiv {

// The bar of buttons and read-outs under the menu bar.
class TopBar : public QWidget {
public:
    TopBar(AudioEditorModel &model, ViewStyle &style, CommandTarget &target, QWidget *parent);

    // Which commands can act has changed for reasons outside the model.
    void refreshCommands();
    // Titles and shortcuts in the tips.
    void refreshTips();
    int barHeight() const { return style_.grown(44); }

    std::function<void()> onLeft;  // a field of the bar has closed

    Button *button(TopBarItem item) const { return buttons_[std::size_t(item)]; }
    ValueButton &position() const { return *position_; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;

private:
    void makeControls();
    void connectButtons();
    void connectPosition();
    void shareVerticalZoomWheel();
    bool eventFilter(QObject *watched, QEvent *event) override;
    void changed(const Changes &changes);
    void refresh();
    void layOut();
    TopBarMeasures measures() const;
    int positionWidth() const;
    bool enterPosition(const std::string &typed);

    AudioEditorModel &model_;
    ViewStyle &style_;
    CommandTarget &target_;
    std::array<Button *, topBarItemCount> buttons_{};
    ValueButton *position_ = nullptr;
    TopBarScene scene_;
    Box separator_;
    StepCounter wheelSteps_;
    Subscription modelChanges_, styleChanges_;
};

}  // namespace kiv
