#include "Editor/Views/RulerView.h"

#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>

#include "Editor/Surfaces/RulerInput.h"
#include "Editor/Surfaces/WheelInput.h"
#include "Editor/Views/CommandTarget.h"
#include "Editor/Views/EventTools.h"
#include "Editor/Views/RulerPainter.h"

namespace kiv {

struct RulerView::Parts {
    Parts(AudioEditorModel &aModel, ViewStyle &aStyle) : model(aModel), style(aStyle), input(aModel), wheel(aModel) {}

    AudioEditorModel &model;
    ViewStyle &style;
    RulerInput input;
    WheelInput wheel;
    ClickCounter clicks;
    RulerScene scene;
    TextCache texts;
    Subscription modelChanges, styleChanges;
};

RulerView::RulerView(AudioEditorModel &model, ViewStyle &style, QWidget *parent)
    : QWidget(parent), parts_(std::make_unique<Parts>(model, style)), corner_(new QWidget(this)) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMouseTracking(true);
    setAccessibleName(onScreen("Time ruler"));
    takeStyle();
    parts_->modelChanges = model.observers.add([this](const Changes &) { refresh(); });
    parts_->styleChanges = style.changed.add([this](const ViewStyle &) { takeStyle(); });
}

RulerView::~RulerView() = default;

void RulerView::setUnitTip(const QString &tip) {
    corner_->setToolTip(tip);
    setAccessibleDescription(tip);
}

void RulerView::takeStyle() {
    corner_->setGeometry(0, 0, gutter(), parts_->style.grown(rulerHeight));
    setFixedHeight(parts_->style.grown(rulerHeight) + markerLaneHeight);
    refresh();
    update();
}

int RulerView::gutter() const { return gutterWidth(parts_->style.textFactor()); }

void RulerView::refresh() {
    RulerScene scene = rulerScene(parts_->model.state(), viewSize(*this, parts_->style), parts_->scene);
    const Damage damage = rulerDamage(parts_->scene, scene);
    parts_->scene = std::move(scene);
    updateDamaged(*this, damage, parts_->scene.geometry.left);
}

void RulerView::paintEvent(QPaintEvent *event) {
    if (parts_->scene.geometry.size.scale != devicePixelRatioF()) refresh();
    QPainter painter(this);
    useDevicePixels(painter);
    for (const QRect &rect : event->region())
        paintRuler(painter, parts_->scene, parts_->style, parts_->texts, toDevice(rect, parts_->scene.geometry.size.scale));
}

void RulerView::resizeEvent(QResizeEvent *) { refresh(); }

void RulerView::mousePressEvent(QMouseEvent *event) {
    if (event->button() != Qt::LeftButton) return;
    const double scale = devicePixelRatioF();
    parts_->input.press(pointerEvent(*event, scale), clicks(parts_->clicks, *event, scale), parts_->scene.geometry);
}

void RulerView::mouseDoubleClickEvent(QMouseEvent *event) { mousePressEvent(event); }

void RulerView::mouseMoveEvent(QMouseEvent *event) {
    const PointerEvent at = pointerEvent(*event, devicePixelRatioF());
    parts_->input.move(at, parts_->scene.geometry);
    setShape(*this, parts_->input.shape(at, parts_->scene.geometry));
}

void RulerView::mouseReleaseEvent(QMouseEvent *event) {
    if (event->button() == Qt::LeftButton) parts_->input.release();
    setShape(*this, parts_->input.shape(pointerEvent(*event, devicePixelRatioF()), parts_->scene.geometry));
}

bool RulerView::event(QEvent *event) {
    return turnView(*event, parts_->wheel, gutter(), width() - gutter()) || QWidget::event(event);
}

void RulerView::setViewOnly(bool isViewOnly) { parts_->input.setViewOnly(isViewOnly); }

void RulerView::setControlHeld(bool isHeld) { parts_->input.modifiersChanged({false, isHeld}, parts_->scene.geometry); }

bool RulerView::cancelDrag() {
    if (!parts_->input.cancel()) return false;
    setShape(*this, PointerShape::arrow);
    return true;
}

}  // namespace kiv
