#pragma once

#include <QRectF>
#include <QString>

#include "Editor/Views/ViewStyle.h"

class QPainter;

namespace kiv {

enum class NoteTone { plain, warning, error };

// Something to know about what stands below: a sign and a text that wraps, in a box.
void paintNoteBox(QPainter &painter, const QRectF &box, NoteTone tone, const QString &text, const ViewStyle &style);
int noteBoxHeight(const QString &text, int width, const ViewStyle &style);

// The same as one line without a box, in small type.
void paintNoteLine(QPainter &painter, const QRectF &line, NoteTone tone, const QString &text, const ViewStyle &style);

}  // namespace kiv
