#pragma once

#include <QPointer>
#include <QWidget>
#include <memory>

#include "Document/Windows/KeyWindow.h"
#include "Editor/Surfaces/WaveformRms.h"
#include "Editor/Views/BusyLine.h"
#include "Editor/Views/FocusRing.h"
#include "Editor/Views/InfoLine.h"
#include "Editor/Views/Menu.h"
#include "Editor/Views/Notice.h"
#include "Editor/Views/OverviewView.h"
#include "Editor/Views/RulerView.h"
#include "Editor/Views/SheetHost.h"
#include "Editor/Views/TopBar.h"
#include "Editor/Views/WaveformView.h"

namespace kiv {

// The content of a document's window: everything from the menu bar to the info line, laid out one under the other, with sheets
// and notices over it. Audio files may be dropped on it.
class DocumentHostingView : public QWidget, public KeyWindow {
public:
    DocumentHostingView(AudioEditorModel &model, Jobs &jobs, ViewStyle &style, CommandTarget &target);
    ~DocumentHostingView() override;

    CommandTarget &commandTarget() override { return target_; }
    Sheet *openSheet() override { return sheets_->current(); }

    MenuBar &menuBar() { return *menuBar_; }
    TopBar &topBar() { return *topBar_; }
    InfoLine &infoLine() { return *infoLine_; }
    WaveformView &waveform() { return *waveform_; }
    SheetHost &sheets() { return *sheets_; }
    Notice &notice() { return *notice_; }
    BusyLine &busyLine() { return *busyLine_; }
    // Titles and shortcuts in the tips.
    void refreshTips();
    // While the file is read (again): what would be done to the sound by the pointer meanwhile would be lost.
    void setReading(bool isReading);
    // Whether all of what the waveform shows is known.
    bool isSoundComplete() const;

    std::function<void(const std::vector<std::string> &paths)> onDropped;
    std::function<bool()> onClosing;    // whether the window may close now
    std::function<void()> onStop;       // Esc, when nothing of the window's own was there to end
    std::function<void()> onActivated;  // the window has got the focus
    std::function<void()> onQuit;

protected:
    void resizeEvent(QResizeEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void changeEvent(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    void connectParts();
    void holdSound();
    void orderTabs();
    void layOut();
    void zoomByWheel(QWheelEvent *event);
    void focusNextPart(int direction);
    bool cancelDrag();
    void setControlHeld(bool isHeld);
    void returnFocus();

    AudioEditorModel &model_;
    ViewStyle &style_;
    CommandTarget &target_;
    WaveformRms rms_;
    MenuBar *menuBar_;
    TopBar *topBar_;
    OverviewView *overview_;
    RulerView *ruler_;
    QWidget *gutter_;
    WaveformView *waveform_;
    InfoLine *infoLine_;
    BusyLine *busyLine_;
    Notice *notice_;
    FocusRing *ring_;
    QPointer<QWidget> beforeSheets_;  // the control that a key had gone to
    std::unique_ptr<SheetHost> sheets_;
    bool isReading_ = false;
    Subscription styleChanges_;
};

}  // namespace kiv
