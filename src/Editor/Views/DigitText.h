#pragma once

#include <QColor>
#include <QFont>
#include <QRectF>
#include <QString>

class QPainter;

// Text whose digits stand in cells as wide as the widest digit, so that numbers do not jitter while they change.
namespace kiv {

double digitTextWidth(const QFont &font, const QString &text);
// One line in the middle of the rectangle's height, at its left or right (Qt::AlignLeft, Qt::AlignRight, Qt::AlignHCenter).
void paintDigitText(QPainter &painter, const QRectF &rect, Qt::Alignment alignment, const QFont &font, const QColor &color,
                    const QString &text);

}  // namespace kiv
