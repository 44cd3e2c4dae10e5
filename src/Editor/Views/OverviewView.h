#pragma once

#include <QWidget>
#include <memory>

#include "Editor/AudioEditorModel/AudioEditorModel.h"
#include "Editor/Surfaces/WaveformRms.h"
#include "Editor/Views/ViewStyle.h"

namespace kiv {

// The whole sound in one strip, and the part of it that is in view. As wide as gutter and waveform together: it leaves the
// gutter's width free at its left.
class OverviewView : public QWidget {
public:
    // `rms` must have been made before, for the same model.
    OverviewView(AudioEditorModel &model, ViewStyle &style, WaveformRms &rms, QWidget *parent = nullptr);
    ~OverviewView() override;

    // For Esc: ends the drag in progress and puts the view back. False when there is none.
    bool cancelDrag();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    bool event(QEvent *event) override;

private:
    struct Parts;

    // Takes over what has changed and asks for the painting of just that.
    void refresh();

    std::unique_ptr<Parts> parts_;
};

}  // namespace kiv
