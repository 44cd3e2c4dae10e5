#include "Editor/Views/DigitText.h"

#include <QFontMetricsF>
#include <QPainter>
#include <algorithm>

namespace kiv {

namespace {

double cellWidth(const QFontMetricsF &metrics) {
    double widest = 0;
    for (char digit = '0'; digit <= '9'; ++digit) widest = std::max(widest, metrics.horizontalAdvance(QChar(digit)));
    return widest;
}

// Calls visit(run, x, width) for every digit and every run of other characters; returns the width of all.
template <class Visit>
double layOut(const QFont &font, const QString &text, Visit visit) {
    const QFontMetricsF metrics(font);
    const double cell = cellWidth(metrics);
    double x = 0;
    for (qsizetype i = 0, end = 0; i < text.size(); i = end) {
        end = i + 1;
        const bool isDigit = text[i].isDigit();
        while (!isDigit && end < text.size() && !text[end].isDigit()) ++end;
        const QString run = text.mid(i, end - i);
        const double advance = metrics.horizontalAdvance(run);
        visit(run, isDigit ? x + (cell - advance) / 2 : x);
        x += isDigit ? cell : advance;
    }
    return x;
}

}  // namespace

double digitTextWidth(const QFont &font, const QString &text) {
    return layOut(font, text, [](const QString &, double) {});
}

void paintDigitText(QPainter &painter, const QRectF &rect, Qt::Alignment alignment, const QFont &font, const QColor &color,
                    const QString &text) {
    const QFontMetricsF metrics(font, painter.device());
    const double spare = rect.width() - digitTextWidth(font, text);
    const double left = rect.left() + (alignment & Qt::AlignRight ? spare : alignment & Qt::AlignHCenter ? spare / 2 : 0);
    const double baseline = rect.center().y() + (metrics.ascent() - metrics.descent()) / 2;
    painter.setFont(font);
    painter.setPen(color);
    layOut(font, text, [&](const QString &run, double x) { painter.drawText(QPointF(left + x, baseline), run); });
}

}  // namespace kiv
