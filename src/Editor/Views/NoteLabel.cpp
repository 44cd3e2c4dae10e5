#include "Editor/Views/NoteLabel.h"

#include <QAccessible>
#include <QPainter>

namespace kiv {

NoteLabel::NoteLabel(ViewStyle &style, Kind kind, QWidget *parent) : QLabel(parent), style_(style), kind_(kind) {
    setTextFormat(Qt::PlainText);
    hide();
    styleChanges_ = style.changed.add([this](const ViewStyle &) { update(); });
}

void NoteLabel::setNote(NoteTone tone, const QString &text) {
    if (tone == tone_ && text == QLabel::text()) return;
    tone_ = tone;
    setText(text);
    setVisible(!text.isEmpty());
    if (tone == NoteTone::plain || text.isEmpty()) return;
    QAccessibleEvent event(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&event);
}

int NoteLabel::heightFor(int width) const {
    if (text().isEmpty()) return 0;
    return kind_ == Kind::line ? style_.grown(16) : noteBoxHeight(text(), width, style_);
}

void NoteLabel::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    (kind_ == Kind::box ? paintNoteBox : paintNoteLine)(painter, rect(), tone_, text(), style_);
}

}  // namespace kiv
