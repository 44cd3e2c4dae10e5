#pragma once

#include <QLabel>

#include "Editor/Views/NoteBoxPainter.h"

namespace kiv {

// A note in its box, or as a single line, which assistive tools read as a text and are told about when it is a fault.
class NoteLabel : public QLabel {
public:
    enum class Kind { box, line };
    NoteLabel(ViewStyle &style, Kind kind, QWidget *parent);

    void setNote(NoteTone tone, const QString &text);
    int heightFor(int width) const;  // 0 without a text

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    ViewStyle &style_;
    Kind kind_;
    NoteTone tone_ = NoteTone::plain;
    Subscription styleChanges_;
};

}  // namespace kiv
