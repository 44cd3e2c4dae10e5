#include "Editor/Views/RowList.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QStyledItemDelegate>

#include "Editor/Views/ScrollBar.h"

namespace kiv {

namespace {

class RowDelegate : public QStyledItemDelegate {
public:
    explicit RowDelegate(RowList &list) : QStyledItemDelegate(&list), list_(list) {}

    QSize sizeHint(const QStyleOptionViewItem &, const QModelIndex &) const override {
        return {1, listRowHeight(list_.style())};
    }
    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override {
        const bool isCurrent = index == list_.currentIndex();
        const ListRowLook look{.isChosen = index.data(RowList::isChosenRole).toBool() || (isCurrent && list_.marksCurrent()),
                               .isHovered = option.state.testFlag(QStyle::State_MouseOver),
                               .isDim = index.data(RowList::isDimRole).toBool(),
                               .isFocused = isCurrent && list_.isFocusedByKey()};
        const ListRow row{index.data().toString(), index.data(RowList::secondRole).toString(),
                          index.data(RowList::thirdRole).toString(), index.data(RowList::iconRole).toString().toStdString()};
        paintListRow(*painter, option.rect, row, look, list_.columns(), list_.style());
    }

private:
    RowList &list_;
};

bool isMoving(int key) {
    return key == Qt::Key_Up || key == Qt::Key_Down || key == Qt::Key_Home || key == Qt::Key_End || key == Qt::Key_PageUp ||
           key == Qt::Key_PageDown;
}

}  // namespace

RowList::RowList(ViewStyle &style, QWidget *parent) : QListView(parent), style_(style) {
    setFrameShape(QFrame::NoFrame);
    setUniformItemSizes(true);
    setEditTriggers(NoEditTriggers);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBar(new ScrollBar(style, this));
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);  // it is as wide as the padding, and shows nothing when not needed
    setVerticalScrollMode(ScrollPerPixel);
    setItemDelegate(new RowDelegate(*this));
    setMouseTracking(true);
    viewport()->setAttribute(Qt::WA_Hover);
    viewport()->setAutoFillBackground(false);
    setAutoFillBackground(false);
    setViewportMargins(padding, 0, 0, 0);
    styleChanges_ = style.changed.add([this](const ViewStyle &) { applyStyle(); });
    applyStyle();
}

void RowList::applyStyle() {
    QPalette colors = palette();
    colors.setColor(QPalette::Base, toColor(style_.colors().field));
    setPalette(colors);
    setFont(style_.font(13));
    verticalScrollBar()->setSingleStep(listRowHeight(style_));
    scheduleDelayedItemsLayout();
    viewport()->update();
}

void RowList::setColumns(const ListColumns &columns) {
    columns_ = columns;
    viewport()->update();
}

void RowList::setNote(const QString &note) {
    if (note == note_) return;
    note_ = note;
    setAccessibleDescription(note);
    viewport()->update();
}

void RowList::paintEvent(QPaintEvent *event) {
    QListView::paintEvent(event);
    if (note_.isEmpty() || !model() || model()->rowCount() > 0) return;
    QPainter painter(viewport());
    paintListNote(painter, QRectF(0, 0, viewport()->width(), listRowHeight(style_)), note_, style_);
}

void RowList::keyPressEvent(QKeyEvent *event) {
    if (isMoving(event->key())) isFocusedByKey_ = true;
    const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (isEnter && currentIndex().isValid() && onActivated) return onActivated(currentIndex().row());
    if (event->key() == Qt::Key_Space && !event->modifiers() && currentIndex().isValid() && onPressed)
        return onPressed(currentIndex().row());
    if (onOtherKey && onOtherKey(event)) return;
    if (event->key() == Qt::Key_Escape || isEnter) return event->ignore();
    QListView::keyPressEvent(event);
}

void RowList::focusInEvent(QFocusEvent *event) {
    isFocusedByKey_ = event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason;
    QListView::focusInEvent(event);
    viewport()->update();
}

void RowList::focusOutEvent(QFocusEvent *event) {
    isFocusedByKey_ = false;
    QListView::focusOutEvent(event);
    viewport()->update();
}

void RowList::mousePressEvent(QMouseEvent *event) {
    isFocusedByKey_ = false;
    QListView::mousePressEvent(event);
    const QModelIndex index = indexAt(event->position().toPoint());
    if (index.isValid() && event->button() == Qt::LeftButton && onPressed) onPressed(index.row());
}

void RowList::mouseDoubleClickEvent(QMouseEvent *event) {
    const QModelIndex index = indexAt(event->position().toPoint());
    if (index.isValid() && event->button() == Qt::LeftButton && onActivated) onActivated(index.row());
}

}  // namespace kiv
