#include "Editor/Views/MonoSheet.h"

#include <QFontMetricsF>
#include <QKeyEvent>
#include <QPainter>
#include <cmath>

#include "Editor/AudioEditorModel/AudioEditorEdits.h"
#include "Editor/Views/CommandTarget.h"
#include "Editor/Views/CrispPainting.h"

namespace kiv {

namespace {

using Role = AudioEditorThemeColor;

constexpr int sheetWidth = 480;
constexpr int titleLine = 20;
constexpr int tileHeight = 84, tileGap = 8, tileFrame = 2;
constexpr int pictureInset = 12, pictureHeight = 36;
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
    }

    void setColumns(std::vector<float> columns) {
        columns_ = std::move(columns);
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
    void paintColumns(QPainter &painter, const QRectF &tile) const {
        const QColor color = toColor(isChecked() ? style_.colors()[Role::waveFg] : style_.colors().waveOuter);
        const double middle = tile.top() + pictureInset + pictureHeight / 2.0;
        for (std::size_t i = 0; i < columns_.size(); ++i) {
            const double half = std::max(0.5, double(columns_[i]) * pictureHeight / 2);
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
        const QRectF row(left, tile.bottom() - style_.grown(keySize) - 8, label + 1, style_.grown(keySize));
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
    std::vector<float> columns_;
};

MonoSheet::MonoSheet(AudioEditorModel &model, ViewStyle &style, QWidget *parent)
    : Sheet(style, parent),
      model_(model),
      convert_(new Button(style, ButtonKind::sheetDefault, this)),
      cancel_(new Button(style, ButtonKind::sheet, this)) {
    for (AudioEditorMonoSource source : allMonoSources) {
        auto *tile = tiles_[std::size_t(source)] = new Tile(source, style, this);
        connect(tile, &QPushButton::pressed, this, [this, source] { choose(source); });
    }
    readInOrder({tiles_[0], tiles_[1], tiles_[2], cancel_, convert_});
    convert_->setLabelAndText({}, "Convert");
    cancel_->setLabelAndText({}, "Cancel");
    connect(convert_, &QPushButton::clicked, this, [this] { confirm(); });
    connect(cancel_, &QPushButton::clicked, this, [this] { cancel(); });
    setAccessibleName("Convert to Mono");
    modelChanges_ = model.observers.add([this](const Changes &changes) {
        if (changes.containsAny({Change::dialog, Change::audio})) refresh();
    });
    refresh();
}

void MonoSheet::refresh() {
    scene_ = monoSheetScene(model_.state());
    setAccessibleDescription(onScreen(scene_.target));
    QPushButton *chosen = tiles_[std::size_t(scene_.chosen)];
    chosen->setChecked(true);
    setTabRing({chosen, convert_, cancel_});
    update();
}

void MonoSheet::choose(AudioEditorMonoSource source) {
    model_.setMonoSource(source);
    tiles_[std::size_t(source)]->setFocus(Qt::PopupFocusReason);
}

void MonoSheet::confirm() { AudioEditorEdits::confirmDialog(model_); }

void MonoSheet::takeFocus() { tiles_[std::size_t(scene_.chosen)]->setFocus(Qt::PopupFocusReason); }

bool MonoSheet::takeKey(const KeyPress &press) {
    if (press.modifiers & (Shortcut::command | Shortcut::control | Shortcut::option)) return false;
    if (press.namedKey == "left" || press.namedKey == "right")
        return choose(neighbour(scene_.chosen, press.namedKey == "left" ? -1 : 1)), true;
    if (const auto source = press.plain.size() == 1 ? sourceForKey(press.plain[0]) : std::nullopt) return choose(*source), true;
    return Sheet::takeKey(press);
}

int MonoSheet::tilesTop() const { return padding + style().grown(titleLine) + 14; }

QSize MonoSheet::sizeFor(int width) const {
    const int button = buttonHeight(ButtonKind::sheet, style());
    const int wanted = int(std::lround(sheetWidth * style().textFactor()));
    return {std::min(wanted, width), tilesTop() + style().grown(tileHeight) + padding + button + padding};
}

void MonoSheet::resizeEvent(QResizeEvent *) {
    const int count = int(tiles_.size());
    const int tileWidth = (width() - 2 * padding - (count - 1) * tileGap) / count;
    for (int i = 0; i < count; ++i) {
        Tile *tile = tiles_[std::size_t(i)];
        const QRect box(padding + i * (tileWidth + tileGap), tilesTop(), tileWidth, style().grown(tileHeight));
        tile->setGeometry(box.adjusted(-tileFrame, -tileFrame, tileFrame, tileFrame));
        const int columns = (tileWidth - 2 * pictureInset) / columnPitch;
        tile->setColumns(outcomeColumns(model_.state().buffer, allMonoSources[std::size_t(i)], columns));
    }
    placeButtons({convert_, cancel_}, width() - padding, height() - padding - convert_->sizeHint().height());
}

void MonoSheet::paintEvent(QPaintEvent *event) {
    Sheet::paintEvent(event);
    QPainter painter(this);
    const ThemeColors &colors = style().colors();
    const QRectF title(padding, padding, width() - 2 * padding, style().grown(titleLine));
    drawText(painter, title, Qt::AlignLeft, style().font(15, QFont::DemiBold), colors[Role::dialogText], accessibleName());
    drawText(painter, title, Qt::AlignRight, style().font(13), colors.dialogDim, onScreen(scene_.target));
    const QRectF row(padding, convert_->y(), cancel_->x() - padding, convert_->height());
    drawText(painter, row, Qt::AlignLeft, style().font(13), colors.dialogDim, onScreen(scene_.note));
}

}  // namespace kiv
