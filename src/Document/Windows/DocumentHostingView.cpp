#include "Document/Windows/DocumentHostingView.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QPalette>
#include <QWheelEvent>
#include <algorithm>

#include "Document/Windows/AudioDrag.h"
#include "Editor/Surfaces/EditorWindowLayout.h"
#include "Editor/Views/CommandMenu.h"
#include "Editor/Views/CrispPainting.h"
#include "Editor/Views/GutterView.h"

namespace kiv {

DocumentHostingView::DocumentHostingView(AudioEditorModel &model, Jobs &jobs, ViewStyle &style, CommandTarget &target)
    : model_(model),
      style_(style),
      target_(target),
      rms_(model, jobs),
      menuBar_(new MenuBar(style, this)),
      topBar_(new TopBar(model, style, target, this)),
      overview_(new OverviewView(model, style, rms_, this)),
      ruler_(new RulerView(model, style, this)),
      gutter_(new GutterView(model, style, this)),
      waveform_(new WaveformView(model, style, rms_, this)),
      infoLine_(new InfoLine(model, style, this)),
      busyLine_(new BusyLine(style, this)),
      notice_(new Notice(style, this)),
      ring_(new FocusRing(style, this)),
      sheets_(std::make_unique<SheetHost>(style, this)) {
    setMinimumSize(editorWindowMinimumWidth, editorWindowMinimumHeight);
    setAcceptDrops(true);
    connectParts();
    orderTabs();
    ring_->followAll(topBar_);
    ring_->followAll(infoLine_);
    ring_->follow(overview_);
    styleChanges_ = style.changed.add([this](const ViewStyle &) { layOut(); });
    layOut();
    refreshTips();
    waveform_->setFocus();
}

DocumentHostingView::~DocumentHostingView() = default;

void DocumentHostingView::connectParts() {
    waveform_->onHover = [this](std::optional<WaveformHover> hover) { infoLine_->setPointer(hover); };
    waveform_->onContextMenu = [this](QPoint global) { popUpContextMenu(style_, target_, this, global); };
    busyLine_->onShown = [this](std::optional<double> fraction) { infoLine_->setProgress(fraction); };
    infoLine_->onSpokenText = [this](const QString &text) { waveform_->setValueText(text); };
    waveform_->setValueText(infoLine_->spokenText());
    infoLine_->onLeft = topBar_->onLeft = [this] { returnFocus(); };
    sheets_->onWheel = [this](QWheelEvent *event) { zoomByWheel(event); };
    sheets_->onFirst = [this] { beforeSheets_ = ring_->wearer(); };
    sheets_->onShown = [this](Sheet &sheet) {
        holdSound();
        ring_->followAll(&sheet);
        topBar_->refreshCommands();
    };
    sheets_->onGone = [this] {
        holdSound();
        returnFocus();
        topBar_->refreshCommands();
        if (beforeSheets_ && beforeSheets_->isEnabled()) beforeSheets_->setFocus(Qt::TabFocusReason);
    };
}

// What a sheet acts on stays as it is while the sheet is open. Its clicks keep the focus, too.
void DocumentHostingView::holdSound() {
    const bool isViewOnly = openSheet() || isReading_;
    waveform_->setFocusPolicy(openSheet() ? Qt::NoFocus : Qt::StrongFocus);
    waveform_->setViewOnly(isViewOnly);
    ruler_->setViewOnly(isViewOnly);
}

void DocumentHostingView::setReading(bool isReading) {
    if (std::exchange(isReading_, isReading) != isReading) holdSound();
}

void DocumentHostingView::refreshTips() {
    constexpr auto unit = EditorCommand::toggleTimeUnit;
    topBar_->refreshTips();
    ruler_->setUnitTip(tipText(titleText(unit), target_.shortcutText(unit)));
}

void DocumentHostingView::orderTabs() {
    QWidget *last = waveform_;
    for (QWidget *part :
         {static_cast<QWidget *>(topBar_), static_cast<QWidget *>(overview_), static_cast<QWidget *>(infoLine_)}) {
        QList<QWidget *> stops = part->findChildren<QWidget *>(Qt::FindDirectChildrenOnly);
        if (part->focusPolicy() != Qt::NoFocus) stops.prepend(part);
        for (QWidget *stop : stops) {
            if (stop->focusPolicy() == Qt::NoFocus) continue;
            setTabOrder(last, stop);
            last = stop;
        }
    }
}

void DocumentHostingView::layOut() {
    const EditorWindowMeasures measures{.menuBar = menuBar_->isVisibleTo(this) ? menuBar_->sizeHint().height() : 0,
                                        .topBar = topBar_->barHeight(),
                                        .ruler = ruler_->height(),
                                        .gutter = gutter_->width(),
                                        .infoLine = infoLine_->lineHeight()};
    const EditorWindowLayout layout(width(), height(), measures);
    menuBar_->setGeometry(toRect(layout.menuBar));
    topBar_->setGeometry(toRect(layout.topBar));
    overview_->setVisible(!layout.overview.isEmpty());
    overview_->setGeometry(toRect(layout.overview));
    ruler_->setGeometry(toRect(layout.ruler));
    gutter_->setGeometry(toRect(layout.gutter));
    waveform_->setGeometry(toRect(layout.waveform));
    infoLine_->setGeometry(toRect(layout.infoLine));
    busyLine_->setGeometry(0, layout.topBar.bottom(), width(), BusyLine::thickness);
    notice_->placeOver(toRect(layout.waveform));
    sheets_->setRoom(rect().adjusted(0, layout.topBar.bottom(), 0, 0));
    ring_->refresh();
    QPalette colors = palette();
    colors.setColor(QPalette::Window, style_.color(AudioEditorThemeColor::topbarBg));
    setPalette(colors);
}

void DocumentHostingView::resizeEvent(QResizeEvent *) { layOut(); }

void DocumentHostingView::closeEvent(QCloseEvent *event) { event->setAccepted(!onClosing || onClosing()); }

void DocumentHostingView::changeEvent(QEvent *event) {
    if (event->type() == QEvent::ActivationChange && isActiveWindow() && onActivated) onActivated();
    if (event->type() == QEvent::ApplicationFontChange) style_.setDesktopFont(QApplication::font());
    QWidget::changeEvent(event);
}

bool DocumentHostingView::isSoundComplete() const {
    const auto isKnown = [](const std::vector<float> &powers) {
        return std::none_of(powers.begin(), powers.end(), [](float power) { return power < 0; });
    };
    const auto &channels = rms_.powers().channels;
    return !model_.state().buffer.isEmpty() && std::all_of(channels.begin(), channels.end(), isKnown);
}

bool DocumentHostingView::cancelDrag() { return waveform_->cancelDrag() || ruler_->cancelDrag() || overview_->cancelDrag(); }

void DocumentHostingView::keyPressEvent(QKeyEvent *event) {
    const bool isBackwards = event->modifiers() & Qt::ShiftModifier;
    if (openSheet() && event->key() != Qt::Key_F10) return event->ignore();
    switch (event->key()) {
        case Qt::Key_Control:
            setControlHeld(true);
            break;
        case Qt::Key_Escape:
            if (!cancelDrag() && onStop) onStop();
            break;
        case Qt::Key_F6:
            focusNextPart(isBackwards ? -1 : 1);
            break;
        case Qt::Key_F10:
            menuBar_->open();
            break;
        case Qt::Key_Q:
            if (event->modifiers() == Qt::ControlModifier && onQuit) onQuit();
            break;
        default:
            QWidget::keyPressEvent(event);
    }
}

void DocumentHostingView::keyReleaseEvent(QKeyEvent *event) {
    if (event->key() == Qt::Key_Control) setControlHeld(false);
}

void DocumentHostingView::setControlHeld(bool isHeld) {
    waveform_->setControlHeld(isHeld);
    ruler_->setControlHeld(isHeld);
}

// To the waveform, but for a control that a key had gone to before a sheet came. What has closed may have passed the focus on
// there as the Tab key would, and no key did.
void DocumentHostingView::returnFocus() {
    waveform_->clearFocus();
    waveform_->setFocus();
}

// From part to part: into the first control of each.
void DocumentHostingView::focusNextPart(int direction) {
    const QList<QWidget *> parts{waveform_, topBar_, overview_, infoLine_};
    qsizetype at = 0;
    for (qsizetype i = 0; i < parts.size(); ++i)
        if (parts[i] == focusWidget() || (focusWidget() && parts[i]->isAncestorOf(focusWidget()))) at = i;
    for (qsizetype step = 1; step <= parts.size(); ++step) {
        QWidget *part = parts[(at + direction * step + 2 * parts.size()) % parts.size()];
        if (!part->isVisible()) continue;
        QList<QWidget *> stops = part->findChildren<QWidget *>(Qt::FindDirectChildrenOnly);
        stops.prepend(part);
        for (QWidget *stop : stops)
            if (stop->isVisible() && stop->isEnabled() && stop->focusPolicy() != Qt::NoFocus)
                return stop->setFocus(Qt::ShortcutFocusReason);
    }
}

void DocumentHostingView::zoomByWheel(QWheelEvent *event) {
    QWheelEvent copy(waveform_->mapFromGlobal(event->globalPosition()), event->globalPosition(), event->pixelDelta(),
                     event->angleDelta(), event->buttons(), event->modifiers(), event->phase(), event->inverted());
    QCoreApplication::sendEvent(waveform_, &copy);
}

void DocumentHostingView::dragEnterEvent(QDragEnterEvent *event) {
    if (audioURLs(*event->mimeData()).empty()) return;
    waveform_->setDropFrame(true);
    event->setDropAction(Qt::CopyAction);
    event->accept();
}

void DocumentHostingView::dragLeaveEvent(QDragLeaveEvent *) { waveform_->setDropFrame(false); }

void DocumentHostingView::dropEvent(QDropEvent *event) {
    waveform_->setDropFrame(false);
    event->setDropAction(Qt::CopyAction);
    event->accept();
    if (onDropped) onDropped(audioURLs(*event->mimeData()));
}

}  // namespace kiv
