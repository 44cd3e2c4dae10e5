#include "Editor/Views/WaveformView.h"

#include <QBasicTimer>
#include <QContextMenuEvent>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QTimerEvent>
#include <algorithm>
#include <utility>

#include "Editor/Surfaces/WaveformInput.h"
#include "Editor/Surfaces/WheelInput.h"
#include "Editor/Views/CommandTarget.h"
#include "Editor/Views/EventTools.h"
#include "Editor/Views/WaveformPainter.h"

namespace kiv {

struct WaveformView::Parts {
    Parts(AudioEditorModel &aModel, ViewStyle &aStyle, WaveformRms &aRms)
        : model(aModel), style(aStyle), rms(aRms), input(aModel), wheel(aModel) {}

    static constexpr int interval = 16;  // milliseconds between the steps of scrolling
    AudioEditorModel &model;
    ViewStyle &style;
    WaveformRms &rms;
    WaveformInput input;
    WheelInput wheel;
    ClickCounter clicks;
    QBasicTimer scrolling;  // runs only while a selection is dragged past a side
    WaveformViewState view;
    WaveformScene scene;
    WaveformPixels pixels;
    TextCache texts;
    Subscription modelChanges, rmsChanges, styleChanges;
};

WaveformView::WaveformView(AudioEditorModel &model, ViewStyle &style, WaveformRms &rms, QWidget *parent)
    : QWidget(parent), parts_(std::make_unique<Parts>(model, style, rms)) {
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAccessibleName(onScreen("Waveform"));
    setShape(*this, PointerShape::textBeam);
    parts_->modelChanges = model.observers.add([this](const Changes &) { refresh(); });
    parts_->rmsChanges = rms.completed.add([this](const WaveformRms &) { refresh(); });
    parts_->styleChanges = style.changed.add([this](const ViewStyle &) { refresh(), update(); });
}

WaveformView::~WaveformView() = default;

void WaveformView::refresh() {
    parts_->view.powersRevision = parts_->rms.revision();
    const WaveformScene before =
        std::exchange(parts_->scene, waveformScene(parts_->model.state(), viewSize(*this, parts_->style), parts_->view));
    updateDamaged(*this, waveformDamage(before, parts_->scene));
    if (onHover && before.pointed != parts_->scene.pointed) onHover(parts_->scene.pointed);
}

void WaveformView::pointerMoved(const QMouseEvent &event, const PointerEvent &at) {
    parts_->view.pointer = rect().contains(event.position().toPoint()) ? std::optional(at) : std::nullopt;
    parts_->view.isButtonDown = event.buttons() != Qt::NoButton;
    runWhile(parts_->input.scrollSpeed(parts_->scene.geometry) != 0, parts_->scrolling, Parts::interval, *this);
    refresh();
    setShape(*this, parts_->input.shape(at, parts_->scene.geometry));
}

void WaveformView::paintEvent(QPaintEvent *event) {
    if (parts_->scene.geometry.size.scale != devicePixelRatioF()) refresh();
    const WaveformScene &scene = parts_->scene;
    parts_->pixels.update(soundSource(parts_->model.state(), parts_->rms), scene, parts_->style.colors());
    QPainter painter(this);
    useDevicePixels(painter);
    for (const QRect &rect : event->region())
        paintWaveform(painter, scene, parts_->pixels, parts_->style, parts_->texts, toDevice(rect, scene.geometry.size.scale));
}

void WaveformView::mousePressEvent(QMouseEvent *event) {
    const PointerEvent at = pointerEvent(*event, devicePixelRatioF());
    const auto countClicks = [&] { return clicks(parts_->clicks, *event, devicePixelRatioF()); };
    parts_->input.press(buttonOf(*event), at, countClicks, parts_->scene.geometry);
    pointerMoved(*event, at);
}

void WaveformView::mouseMoveEvent(QMouseEvent *event) {
    const PointerEvent at = pointerEvent(*event, devicePixelRatioF());
    parts_->input.move(at, parts_->scene.geometry);
    pointerMoved(*event, at);
}

void WaveformView::mouseReleaseEvent(QMouseEvent *event) {
    if (!(event->buttons() & (Qt::LeftButton | Qt::MiddleButton))) parts_->input.release();
    pointerMoved(*event, pointerEvent(*event, devicePixelRatioF()));
}

void WaveformView::timerEvent(QTimerEvent *) { parts_->input.scroll(Parts::interval / 1000.0, parts_->scene.geometry); }

// From the keyboard the menu opens at the cursor.
void WaveformView::contextMenuEvent(QContextMenuEvent *event) {
    if (!onContextMenu || parts_->input.isViewOnly() || parts_->input.isDragging()) return;
    if (event->reason() != QContextMenuEvent::Keyboard) return onContextMenu(event->globalPos());
    const int cursor = std::clamp(int(parts_->scene.marks.cursor / devicePixelRatioF()), 0, width() - 1);
    onContextMenu(mapToGlobal(QPoint(cursor, height() / 2)));
}

void WaveformView::leaveEvent(QEvent *) {
    parts_->view.pointer.reset();
    refresh();
}

void WaveformView::setControlHeld(bool isHeld) { parts_->input.modifiersChanged({false, isHeld}, parts_->scene.geometry); }

void WaveformView::focusChanged(const QFocusEvent &event) {
    parts_->view.keyFocus = event.gotFocus() && isMovedByKey(event);
    refresh();
}

void WaveformView::keyPressEvent(QKeyEvent *event) {
    const auto key = viewKey(*event);
    if (!key) return QWidget::keyPressEvent(event);
    parts_->input.key(*key, modifiersOf(event->modifiers()), parts_->scene.geometry);
}

bool WaveformView::event(QEvent *event) {
    if (!turnView(*event, parts_->wheel, 0, width())) return QWidget::event(event);
    parts_->input.viewMoved(parts_->scene.geometry);
    return true;
}

void WaveformView::setViewOnly(bool isViewOnly) {
    parts_->scrolling.stop();
    parts_->input.setViewOnly(isViewOnly);
}

bool WaveformView::cancelDrag() {
    parts_->scrolling.stop();
    return parts_->input.cancel();
}

void WaveformView::setDropFrame(bool shown) {
    parts_->view.dropFrame = shown;
    refresh();
}

}  // namespace kiv
