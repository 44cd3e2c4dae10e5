#pragma once

#include <QWidget>
#include <memory>

#include "Editor/AudioEditorModel/AudioEditorModel.h"
#include "Editor/Views/ViewStyle.h"

namespace kiv {

// The time ruler, the lane of markers and loop under it, and at their left the corner that names the unit: one widget as wide
// as gutter and waveform together. Sets its own height (40 at the usual type size).
class RulerView : public QWidget {
public:
    RulerView(AudioEditorModel &model, ViewStyle &style, QWidget *parent = nullptr);
    ~RulerView() override;

    // What a click does, as the tip of the corner with the unit's name.
    void setUnitTip(const QString &tip);
    // While a sheet is open: drags and wheel move the view, clicks do nothing.
    void setViewOnly(bool isViewOnly);
    // For Esc: ends the drag in progress and puts the view back. False when there is none.
    bool cancelDrag();
    // Ctrl was pressed or let go, which a drag in progress heeds at once.
    void setControlHeld(bool isHeld);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    bool event(QEvent *event) override;

private:
    struct Parts;

    // Takes over what has changed and asks for the painting of just that.
    void refresh();
    void takeStyle();
    int gutter() const;

    std::unique_ptr<Parts> parts_;
    QWidget *corner_;  // only for its tip
};

}  // namespace kiv
