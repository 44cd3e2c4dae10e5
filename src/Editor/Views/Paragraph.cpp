#include "Editor/Views/Paragraph.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QTextLayout>
#include <QTextOption>
#include <algorithm>
#include <cmath>

namespace kiv {

namespace {

// Calls visit(line) for every line of a width; returns how many there are.
template <class Visit>
int forEachLine(const QString &text, const QFont &font, double width, Visit visit) {
    QString broken = text;
    QTextLayout layout(broken.replace('\n', QChar::LineSeparator), font);
    // A name longer than a line breaks where it must.
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    layout.beginLayout();
    int count = 0;
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine(), ++count) {
        line.setLineWidth(width);
        visit(line, count);
    }
    layout.endLayout();
    return count;
}

}  // namespace

QSize paragraphSize(const QString &text, const ParagraphType &type, int width) {
    if (text.isEmpty()) return {0, 0};
    double widest = 0;
    const int lines = forEachLine(text, type.font, width,
                                  [&](const QTextLine &line, int) { widest = std::max(widest, line.naturalTextWidth()); });
    return {int(std::ceil(widest)), lines * type.lineHeight};
}

QString elidedParagraph(const QString &text, const ParagraphType &type, int width, int lines) {
    const auto fits = [&](const QString &candidate) {
        return paragraphSize(candidate, type, width).height() <= lines * type.lineHeight;
    };
    if (fits(text)) return text;
    const auto keeping = [&](qsizetype kept) { return text.left((kept + 1) / 2) + "…" + text.right(kept / 2); };
    qsizetype kept = 0;
    for (qsizetype step = text.size(); step > 0; step /= 2)
        while (kept + step < text.size() && fits(keeping(kept + step))) kept += step;
    return keeping(kept);
}

void paintParagraph(QPainter &painter, const QRectF &rect, const ParagraphType &type, const QString &text) {
    const QFontMetricsF metrics(type.font, painter.device());
    const double shift = (type.lineHeight - metrics.ascent() - metrics.descent()) / 2;
    forEachLine(text, type.font, rect.width(), [&](const QTextLine &line, int index) {
        line.draw(&painter, rect.topLeft() + QPointF(0, index * type.lineHeight + shift));
    });
}

}  // namespace kiv
