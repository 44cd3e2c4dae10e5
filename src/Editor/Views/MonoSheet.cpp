#include "Editor/Views/MonoSheet.h"

#include <QFontMetricsF>
#include <QKeyEvent>
#include <QPainter>
#include <cmath>

#include "Editor/Views/CommandTarget.h"
#include "Editor/Views/CrispPainting.h"

namespace kiv {

namespace {

using Role = AudioEditorThemeColor;

constexpr int sheetWidth = 480;
constexpr int tileHeight = 84, tileGap = 8, tileFrame = 2;
constexpr int pictureInset = 12, pictureToLabel = 10, underLabel = 8;
constexpr int columnPitch = 2;
constexpr int keySize = 18, keyPadding = 6, textToKey = 6;

}  // namespace

// Two pixels larger on every side than what one sees, for the frame of the chosen one.
class MonoSheet::Tile : public QPushButton {
public:
    Tile(AudioEditorMonoSource source, ViewStyle &style, MonoSheet *sheet)
        : QPushButton(sheet), source_(source), style_(style), sheet_(*sheet) {
        setText(onScreen(tileLabel(source)));
        setCheckable(true);
        setAutoExclusive(true);
        setFocusPolicy(Qt::TabFocus);
        setToolTip(tipText(onScreen(tileHelp(source)), text().left(1)));
    }

    // Its outcome in so many columns.
    void showOutcome(const AudioEditorState &state, int columns) {
        if (state.generation == generation_ && columns == int(columns_.size())) return;
        generation_ = state.generation;
        columns_ = outcomeColumns(state.buffer, source_, columns);
        update();
    }

protected:
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        const ThemeColors &colors = style_.colors();
        const QRectF tile = QRectF(rect()).adjusted(tileFrame, tileFrame, -tileFrame, -tileFrame);
        if (isChecked()) {
            paintBox(painter, rect(), 10, toColor(colors[Role::accentBg]));
            paintBox(painter, tile, 8, toColor(colors[Role::waveBg]));
        } else {
            paintBox(painter, tile, 8, toColor(colors[Role::waveBg]), toColor(colors.fieldBorder));
        }
        paintColumns(painter, tile);
        paintLabel(painter, tile);
    }

    void mouseDoubleClickEvent(QMouseEvent *) override { sheet_.confirm(); }
    void keyPressEvent(QKeyEvent *event) override { event->ignore(); }

private:
    QRectF labelRow(const QRectF &tile) const {
        const double height = style_.grown(keySize);
        return {tile.left(), tile.bottom() - height - underLabel, tile.width(), height};
    }

    void paintColumns(QPainter &painter, const QRectF &tile) const {
        const QColor color = toColor(isChecked() ? style_.colors()[Role::waveFg] : style_.colors().waveOuter);
        const double height = labelRow(tile).top() - pictureToLabel - tile.top() - pictureInset;
        const double middle = tile.top() + pictureInset + height / 2;
        for (std::size_t i = 0; i < columns_.size(); ++i) {
            const double half = std::max(0.5, double(columns_[i]) * height / 2);
            const double x = tile.left() + pictureInset + double(i) * columnPitch;
            fillCrisp(painter, QRectF(x, middle - half, 1, 2 * half), color);
        }
    }

    void paintLabel(QPainter &painter, const QRectF &tile) const {
        const ThemeColors &colors = style_.colors();
        const QFont font = style_.font(13, QFont::Medium);
        const double label = QFontMetricsF(font).horizontalAdvance(QPushButton::text());
        const double keyWidth = std::max<double>(
            keySize, QFontMetricsF(style_.font(11)).horizontalAdvance(QPushButton::text()[0]) + 2 * keyPadding);
        const double left = tile.center().x() - (label + textToKey + keyWidth) / 2;
        const QRectF row(left, labelRow(tile).top(), label + 1, labelRow(tile).height());
        painter.setFont(font);
        painter.setPen(toColor(colors[Role::dialogText]));
        painter.drawText(row, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextDontClip, QPushButton::text());
        const QRectF key(left + label + textToKey, row.top(), keyWidth, row.height());
        paintBox(painter, key, 4, toColor(colors[Role::waveBg]), toColor(colors.fieldBorder));
        painter.setFont(style_.font(11));
        painter.setPen(toColor(colors.dialogDim));
        painter.drawText(key, Qt::AlignCenter, QPushButton::text().left(1));
    }

    AudioEditorMonoSource source_;
    ViewStyle &style_;
    MonoSheet &sheet_;
    std::int64_t generation_ = -1;
    std::vector<float> columns_;
};

MonoSheet::MonoSheet(AudioEditorModel &model, ViewStyle &style, QWidget *parent)
    : DialogSheet(model, Dialog::mono, {"Convert to Mono", "Convert"}, style, parent) {
    for (AudioEditorMonoSource source : allMonoSources) {
        auto *tile = tiles_[std::size_t(source)] = new Tile(source, style, this);
        connect(tile, &QPushButton::pressed, this, [this, source] { choose(source); });
    }
    refresh();
}

void MonoSheet::refresh() {
    scene_ = monoSheetScene(model().state());
    setAccessibleDescription(onScreen(scene_.target));
    QPushButton *chosen = tiles_[std::size_t(scene_.chosen)];
    chosen->setChecked(true);
    setOrder({chosen}, {tiles_[0], tiles_[1], tiles_[2]});
    layOut(scene_.target);
}

void MonoSheet::choose(AudioEditorMonoSource source) {
    model().setMonoSource(source);
    tiles_[std::size_t(source)]->setFocus(Qt::PopupFocusReason);
}

void MonoSheet::takeFocus() { tiles_[std::size_t(scene_.chosen)]->setFocus(Qt::PopupFocusReason); }

bool MonoSheet::takeKey(const KeyPress &press) {
    if (press.modifiers & (Shortcut::command | Shortcut::control | Shortcut::option)) return false;
    if (press.namedKey == "left" || press.namedKey == "right")
        return choose(neighbour(scene_.chosen, press.namedKey == "left" ? -1 : 1)), true;
    if (const auto source = press.plain.size() == 1 ? sourceForKey(press.plain[0]) : std::nullopt) return choose(*source), true;
    return Sheet::takeKey(press);
}

int MonoSheet::wishedWidth() const { return int(std::lround(sheetWidth * style().textFactor())); }

int MonoSheet::bodyHeight(int, const DialogSheetDistances &) const { return style().grown(tileHeight); }

void MonoSheet::placeBody(const QRect &body, const DialogSheetDistances &) {
    const int count = int(tiles_.size());
    const int tileWidth = (body.width() - (count - 1) * tileGap) / count;
    for (int i = 0; i < count; ++i) {
        Tile *tile = tiles_[std::size_t(i)];
        const QRect box(body.left() + i * (tileWidth + tileGap), body.top(), tileWidth, body.height());
        tile->setGeometry(box.adjusted(-tileFrame, -tileFrame, tileFrame, tileFrame));
        tile->showOutcome(model().state(), (tileWidth - 2 * pictureInset) / columnPitch);
    }
}

int MonoSheet::paintNote(QPainter *painter, const QRectF &row) const {
    return paintWords(painter, row, {{scene_.note, QFont::Normal, style().colors().dialogDim, 0}});
}

}  // namespace kiv
