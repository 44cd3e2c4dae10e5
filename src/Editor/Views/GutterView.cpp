#include "Editor/Views/GutterView.h"

#include <QPaintEvent>
#include <QPainter>
#include <QWheelEvent>

#include "Editor/Surfaces/WheelInput.h"
#include "Editor/Views/CommandTarget.h"
#include "Editor/Views/EventTools.h"
#include "Editor/Views/GutterPainter.h"

namespace kiv {

struct GutterView::Parts {
    Parts(AudioEditorModel &aModel, ViewStyle &aStyle) : model(aModel), style(aStyle), wheel(aModel) {}

    AudioEditorModel &model;
    ViewStyle &style;
    WheelInput wheel;
    GutterScene scene;
    TextCache texts;
    Subscription modelChanges, styleChanges;
};

GutterView::GutterView(AudioEditorModel &model, ViewStyle &style, QWidget *parent)
    : QWidget(parent), parts_(std::make_unique<Parts>(model, style)) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAccessibleName(onScreen("Levels"));
    takeStyle();
    parts_->modelChanges = model.observers.add([this](const Changes &changes) {
        if (changes.containsAny({Change::audio, Change::verticalZoom})) refresh();
    });
    parts_->styleChanges = style.changed.add([this](const ViewStyle &) { takeStyle(); });
}

GutterView::~GutterView() = default;

void GutterView::takeStyle() {
    setFixedWidth(gutterWidth(parts_->style.textFactor()));
    refresh();
    update();
}

void GutterView::refresh() {
    GutterScene scene = gutterScene(parts_->model.state(), viewSize(*this, parts_->style));
    if (scene == parts_->scene) return;
    parts_->scene = std::move(scene);
    update();
}

void GutterView::paintEvent(QPaintEvent *) {
    if (parts_->scene.size.scale != devicePixelRatioF()) refresh();
    QPainter painter(this);
    useDevicePixels(painter);
    paintGutter(painter, parts_->scene, parts_->style, parts_->texts);
}

void GutterView::resizeEvent(QResizeEvent *) { refresh(); }

void GutterView::wheelEvent(QWheelEvent *event) { parts_->wheel.turnVertical(wheelTurn(*event, width()).up); }

}  // namespace kiv
