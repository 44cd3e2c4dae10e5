#include "Editor/Views/OverviewView.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QWheelEvent>

#include "Editor/Surfaces/OverviewInput.h"
#include "Editor/Surfaces/WheelInput.h"
#include "Editor/Views/CommandTarget.h"
#include "Editor/Views/EventTools.h"
#include "Editor/Views/OverviewPainter.h"
#include "Editor/Views/PainterTools.h"

namespace kiv {

struct OverviewView::Parts {
    Parts(AudioEditorModel &aModel, ViewStyle &aStyle, WaveformRms &aRms)
        : model(aModel), style(aStyle), rms(aRms), input(aModel), wheel(aModel) {}

    AudioEditorModel &model;
    ViewStyle &style;
    WaveformRms &rms;
    OverviewInput input;
    WheelInput wheel;
    OverviewScene scene;
    OverviewImage image;
    Subscription modelChanges, rmsChanges, styleChanges;
};

OverviewView::OverviewView(AudioEditorModel &model, ViewStyle &style, WaveformRms &rms, QWidget *parent)
    : QWidget(parent), parts_(std::make_unique<Parts>(model, style, rms)) {
    setFocusPolicy(Qt::TabFocus);
    setMouseTracking(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAccessibleName(onScreen("Overview"));
    parts_->modelChanges = model.observers.add([this](const Changes &) { refresh(); });
    parts_->rmsChanges = rms.completed.add([this](const WaveformRms &) { refresh(); });
    parts_->styleChanges = style.changed.add([this](const ViewStyle &) {
        refresh();
        update();
    });
}

OverviewView::~OverviewView() = default;

void OverviewView::refresh() {
    OverviewScene scene = overviewScene(parts_->model.state(), viewSize(*this, parts_->style), parts_->rms.revision());
    const Damage damage = overviewDamage(parts_->scene, scene);
    parts_->scene = std::move(scene);
    const QString spoken = onScreen(spokenView(parts_->model.state()));
    if (spoken != accessibleDescription()) setAccessibleDescription(spoken);
    updateDamaged(*this, damage, parts_->scene.geometry.left);
}

void OverviewView::paintEvent(QPaintEvent *event) {
    if (parts_->scene.geometry.size.scale != devicePixelRatioF()) refresh();
    const ThemeColors &colors = parts_->style.colors();
    parts_->image.update(soundSource(parts_->model.state(), parts_->rms), parts_->scene.geometry, overviewLook(colors));
    QPainter painter(this);
    useDevicePixels(painter);
    for (const QRect &rect : event->region())
        paintOverview(painter, parts_->scene, parts_->image, colors, toDevice(rect, parts_->scene.geometry.size.scale));
}

void OverviewView::resizeEvent(QResizeEvent *) { refresh(); }

void OverviewView::mousePressEvent(QMouseEvent *event) {
    if (event->button() != Qt::LeftButton) return;
    const PointerEvent at = pointerEvent(*event, devicePixelRatioF());
    parts_->input.press(at, parts_->scene.geometry);
    setShape(*this, parts_->input.shape(at, parts_->scene.geometry));
}

void OverviewView::mouseMoveEvent(QMouseEvent *event) {
    const PointerEvent at = pointerEvent(*event, devicePixelRatioF());
    parts_->input.move(at, parts_->scene.geometry);
    setShape(*this, parts_->input.shape(at, parts_->scene.geometry));
}

void OverviewView::mouseReleaseEvent(QMouseEvent *event) {
    if (event->buttons() & Qt::LeftButton) return;
    parts_->input.release();
    setShape(*this, parts_->input.shape(pointerEvent(*event, devicePixelRatioF()), parts_->scene.geometry));
}

void OverviewView::mouseDoubleClickEvent(QMouseEvent *event) {
    if (event->button() == Qt::LeftButton) parts_->input.doubleClick();
}

void OverviewView::wheelEvent(QWheelEvent *event) {
    const double x = event->position().x() * devicePixelRatioF();
    parts_->wheel.turnAround(wheelTurn(*event, width()), overviewFrameAt(parts_->scene.geometry, x));
}

void OverviewView::keyPressEvent(QKeyEvent *event) {
    if (const auto key = viewKey(*event))
        parts_->input.key(*key);
    else
        QWidget::keyPressEvent(event);
}

bool OverviewView::event(QEvent *event) {
    const auto pinch = pinchOf(*event);
    if (!pinch) return QWidget::event(event);
    parts_->wheel.pinchAround(pinch->factor, overviewFrameAt(parts_->scene.geometry, pinch->x * devicePixelRatioF()));
    return true;
}

bool OverviewView::cancelDrag() {
    if (!parts_->input.cancel()) return false;
    setShape(*this, PointerShape::arrow);
    return true;
}

}  // namespace kiv
