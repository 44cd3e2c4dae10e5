#include "Editor/Views/StretchSheetPainter.h"

#include <QPainter>
#include <cmath>

#include "Editor/Views/CommandTarget.h"
#include "Editor/Views/CrispPainting.h"
#include "Editor/Views/DigitText.h"

namespace kiv {

namespace {

using Role = AudioEditorThemeColor;

// A word of the line of lengths and what stays free behind it.
struct Word {
    std::string text;
    QFont::Weight weight;
    Rgba color;
    int after;
};

std::vector<Word> lengthWords(const StretchSheetScene &scene, const ThemeColors &colors) {
    const Rgba text = colors[Role::dialogText];
    return {{"Length", QFont::Normal, colors.dialogDim, 8},
            {scene.lengthBefore + " →", QFont::Normal, text, 4},
            {scene.lengthAfter, QFont::DemiBold, text, 0}};
}

void paintLengths(QPainter &painter, QRectF row, const StretchSheetScene &scene, const ViewStyle &style) {
    for (const Word &word : lengthWords(scene, style.colors())) {
        const QFont font = style.font(13, word.weight);
        paintDigitText(painter, row, Qt::AlignLeft, font, toColor(word.color), onScreen(word.text));
        row.setLeft(row.left() + digitTextWidth(font, onScreen(word.text)) + word.after);
    }
}

}  // namespace

int stretchLengthWidth(const StretchSheetScene &scene, const ViewStyle &style) {
    double width = 0;
    for (const Word &word : lengthWords(scene, style.colors()))
        width += digitTextWidth(style.font(13, word.weight), onScreen(word.text)) + word.after;
    return int(std::ceil(width));
}

void paintStretchSheet(QPainter &painter, const StretchSheetGeometry &geometry, const StretchSheetScene &scene,
                       const ViewStyle &style) {
    const ThemeColors &colors = style.colors();
    const auto text = [&](const Box &box, Qt::Alignment alignment, const QFont &font, Rgba color, const QString &words) {
        paintDigitText(painter, toRect(box), alignment, font, toColor(color), words);
    };
    text(geometry.title(), Qt::AlignLeft, style.font(15, QFont::DemiBold), colors[Role::dialogText], onScreen("Pitch / Time"));
    text(geometry.title(), Qt::AlignRight, style.font(13), colors.dialogDim, onScreen(scene.target));
    text(geometry.labelOver(geometry.segments()), Qt::AlignLeft, style.font(12), colors.dialogDim, onScreen("Mode"));
    for (const StretchNumber &number : stretchNumbers)
        if (const auto box = geometry.field(number.field))
            text(geometry.labelOver(*box), Qt::AlignLeft, style.font(12), colors.dialogDim, onScreen(number.label));
    paintLengths(painter, toRect(geometry.length()), scene, style);
}

}  // namespace kiv
