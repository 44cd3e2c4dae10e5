#pragma once

#include <QWidget>
#include <functional>
#include <memory>
#include <optional>

#include "Editor/AudioEditorModel/AudioEditorModel.h"
#include "Editor/Surfaces/Pointer.h"
#include "Editor/Surfaces/WaveformHover.h"
#include "Editor/Surfaces/WaveformRms.h"
#include "Editor/Views/ViewStyle.h"

namespace kiv {

// The sound, with its grid, selection and marks, and the pointer and keys that act on it. Lies right of the GutterView, at the
// same height. Takes the focus; keys reach it as ordinary key events once no command wanted them.
class WaveformView : public QWidget {
public:
    // `rms` must have been made before, for the same model.
    WaveformView(AudioEditorModel &model, ViewStyle &style, WaveformRms &rms, QWidget *parent = nullptr);
    ~WaveformView() override;

    // Where the pointer stands, none once it has left: for the info line.
    std::function<void(std::optional<WaveformHover>)> onHover;
    // A right click or the Menu key, unless only the view may change; the cursor has been set first where a click was outside
    // the selection.
    std::function<void(QPoint global)> onContextMenu;

    // Clicks change nothing then, wheel and middle drag move the view.
    void setViewOnly(bool isViewOnly);
    // For Esc: puts back what the drag in progress has changed. False when there is none.
    bool cancelDrag();
    // Ctrl was pressed or let go, which a drag in progress heeds at once.
    void setControlHeld(bool isHeld);
    // The accent frame while files are dragged over the window.
    void setDropFrame(bool shown);
    // What a screen reader says: the left of the info line.
    void setValueText(const QString &text) { setAccessibleDescription(text); }

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *) override { refresh(); }
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override { mousePressEvent(event); }
    void contextMenuEvent(QContextMenuEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override { focusChanged(*event); }
    void focusOutEvent(QFocusEvent *event) override { focusChanged(*event); }
    void timerEvent(QTimerEvent *event) override;
    bool event(QEvent *event) override;

private:
    struct Parts;

    // Takes over what has changed and asks for the painting of just that.
    void refresh();
    // The ring is drawn inside the edge.
    void focusChanged(const QFocusEvent &event);
    // After every event of the pointer.
    void pointerMoved(const QMouseEvent &event, const PointerEvent &at);

    std::unique_ptr<Parts> parts_;
};

}  // namespace kiv
