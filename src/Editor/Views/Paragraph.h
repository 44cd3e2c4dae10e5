#pragma once

#include <QFont>
#include <QRectF>
#include <QString>

class QPainter;

// A text that wraps, in lines of a given height: fonts disagree about theirs.
namespace kiv {

struct ParagraphType {
    QFont font;
    int lineHeight = 16;
};

// As wide as its longest line, when at most this wide.
QSize paragraphSize(const QString &text, const ParagraphType &type, int width);
// The text with its middle left out where it would fill more lines than this.
QString elidedParagraph(const QString &text, const ParagraphType &type, int width, int lines);
// At the upper left of the rectangle, in the painter's pen.
void paintParagraph(QPainter &painter, const QRectF &rect, const ParagraphType &type, const QString &text);

}  // namespace kiv
