#include "Editor/Views/DigitText.h"

#include <QFontMetricsF>
#include <QHash>
#include <QPainter>
#include <algorithm>

namespace kiv {

namespace {

constexpr qsizetype fontsKept = 32, runsKept = 256;

// What is known of one font: the widths of its digits and of what has stood between them. Shaping a text to measure it takes
// longer than painting it, and read-outs show the same few runs again and again.
class Widths {
public:
    explicit Widths(const QFont &font) {
        const QFontMetricsF metrics(font);
        toBaseline_ = (metrics.ascent() - metrics.descent()) / 2;
        for (char digit = '0'; digit <= '9'; ++digit) cell_ = std::max(cell_, of(QString(QChar(digit)), font));
    }

    double cell() const { return cell_; }
    double toBaseline() const { return toBaseline_; }  // from a line's middle down to its baseline
    double of(const QString &run, const QFont &font) {
        if (const auto known = runs_.constFind(run); known != runs_.constEnd()) return *known;
        if (runs_.size() >= runsKept) runs_.clear();
        return *runs_.insert(run, QFontMetricsF(font).horizontalAdvance(run));
    }

private:
    double cell_ = 0, toBaseline_ = 0;
    QHash<QString, double> runs_;
};

// Remembered from call to call; all texts are laid out on one thread.
Widths &widthsOf(const QFont &font) {
    static QHash<QString, Widths> fonts;
    const QString key = font.key();
    if (const auto known = fonts.find(key); known != fonts.end()) return *known;
    if (fonts.size() >= fontsKept) fonts.clear();
    return *fonts.insert(key, Widths(font));
}

// Calls visit(run, x) for every digit and every run of other characters; returns the width of all.
template <class Visit>
double layOut(const QFont &font, const QString &text, Visit visit) {
    Widths &widths = widthsOf(font);
    double x = 0;
    for (qsizetype i = 0, end = 0; i < text.size(); i = end) {
        end = i + 1;
        const bool isDigit = text[i].isDigit();
        while (!isDigit && end < text.size() && !text[end].isDigit()) ++end;
        const QString run = text.mid(i, end - i);
        const double advance = widths.of(run, font);
        visit(run, isDigit ? x + (widths.cell() - advance) / 2 : x);
        x += isDigit ? widths.cell() : advance;
    }
    return x;
}

}  // namespace

double digitTextWidth(const QFont &font, const QString &text) {
    return layOut(font, text, [](const QString &, double) {});
}

void paintDigitText(QPainter &painter, const QRectF &rect, Qt::Alignment alignment, const QFont &font, const QColor &color,
                    const QString &text) {
    const double spare = rect.width() - digitTextWidth(font, text);
    const double left = rect.left() + (alignment & Qt::AlignRight ? spare : alignment & Qt::AlignHCenter ? spare / 2 : 0);
    const double baseline = rect.center().y() + widthsOf(font).toBaseline();
    painter.setFont(font);
    painter.setPen(color);
    layOut(font, text, [&](const QString &run, double x) { painter.drawText(QPointF(left + x, baseline), run); });
}

}  // namespace kiv
