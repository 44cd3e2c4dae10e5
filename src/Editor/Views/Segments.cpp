#include "Editor/Views/Segments.h"

#include <QFocusEvent>
#include <QKeyEvent>

#include "Editor/Views/FocusRing.h"

namespace kiv {

namespace {

// How far neighbours reach into each other: segments share a border, tabs stand apart.
int shared(ButtonKind kind) { return kind == ButtonKind::tab ? -4 : 1; }

Corners cornersAt(qsizetype index, qsizetype count, ButtonKind kind) {
    if (count == 1 || kind == ButtonKind::tab) return Corners::all;
    return index == 0 ? Corners::left : index == count - 1 ? Corners::right : Corners::none;
}

}  // namespace

Segments::Segments(ViewStyle &style, ButtonKind kind, const QStringList &labels, QWidget *parent)
    : QWidget(parent), kind_(kind) {
    for (qsizetype i = 0; i < labels.size(); ++i) {
        auto *button = new Button(style, kind, this);
        button->setSegment(true);
        button->setCorners(cornersAt(i, labels.size(), kind));
        button->setLabelAndText({}, labels[i]);
        button->setCheckable(true);
        button->setAutoExclusive(true);
        connect(button, &QPushButton::clicked, this, [this, i] {
            setChosen(int(i));
            if (onChosen) onChosen(int(i));
        });
        buttons_.append(button);
    }
    setChosen(0);
    styleChanges_ = style.changed.add([this](const ViewStyle &) { layOut(); });
}

void Segments::setChosen(int index) {
    buttons_[index]->setChecked(true);
    buttons_[index]->raise();  // its border stands over those of its neighbours
}

int Segments::chosen() const {
    for (int i = 0; i < count(); ++i)
        if (buttons_[i]->isChecked()) return i;
    return -1;
}

QSize Segments::sizeHint() const {
    int width = shared(kind_);
    for (const Button *button : buttons_) width += button->sizeHint().width() - shared(kind_);
    return {width, buttons_.first()->sizeHint().height()};
}

void Segments::layOut() {
    int x = 0;
    for (Button *button : buttons_) {
        button->setGeometry(x, 0, button->sizeHint().width(), height());
        x += button->width() - shared(kind_);
    }
    if (kind_ != ButtonKind::tab)
        for (Button *button : buttons_) FocusRing::setPlace(*button, rect().translated(-button->pos()));
    update();
}

void Segments::resizeEvent(QResizeEvent *) { layOut(); }

void Segments::keyPressEvent(QKeyEvent *event) {
    const int step = event->key() == Qt::Key_Left ? -1 : event->key() == Qt::Key_Right ? 1 : 0;
    const int next = chosen() + step;
    if (step == 0) return QWidget::keyPressEvent(event);
    if (next < 0 || next >= count()) return;
    buttons_[next]->click();
    buttons_[next]->setFocus(step > 0 ? Qt::TabFocusReason : Qt::BacktabFocusReason);
}

// The focus given to the row goes on to its choice.
void Segments::focusInEvent(QFocusEvent *event) { buttons_[chosen()]->setFocus(event->reason()); }

}  // namespace kiv
