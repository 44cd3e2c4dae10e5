#include <QFontMetricsF>
#include <QPainter>
#include <QScreen>
#include <cmath>

#include "Document/Windows/BrowsingPanel.h"
#include "Editor/Surfaces/EditorWindowLayout.h"
#include "Editor/Views/CommandTarget.h"
#include "Editor/Views/CrispPainting.h"
#include "Editor/Views/Sheet.h"

// Where the panel and its parts stand and what is painted around them.
namespace kiv {

namespace {

using Role = AudioEditorThemeColor;

constexpr double bandTone = 0.035;

QRect framed(const Box &box) { return toRect(box).adjusted(-Field::frame, -Field::frame, Field::frame, Field::frame); }

}  // namespace

void BrowsingPanel::makeButtons(const std::string &confirm) {
    cancel_ = new Button(services_.style, ButtonKind::sheet, this);
    cancel_->setLabelAndText({}, onScreen("Cancel"));
    confirm_ = new Button(services_.style, ButtonKind::sheetDefault, this);
    confirm_->setLabelAndText({}, onScreen(confirm));
    connect(cancel_, &QPushButton::clicked, this, [this] { cancel(); });
    connect(confirm_, &QPushButton::clicked, this, [this] { this->confirm(); });
}

QList<QWidget *> BrowsingPanel::stops() const {
    return QList<QWidget *>{field_} + browser_->stops() + choices() + QList<QWidget *>{confirm_, cancel_};
}

SavePanelMeasures BrowsingPanel::measures() const {
    const auto wide = [&](int width) { return int(std::lround(width * style().textFactor())); };
    SavePanelMeasures m{.note = note_->heightFor(width() - 2 * savePanelPadding),
                        .field = style().grown(32),
                        .crumb = style().grown(24),
                        .status = style().grown(16),
                        .label = wide(72),
                        .places = wide(160),
                        .containers = 0,
                        .bits = 0};
    measureChoices(m);
    return m;
}

QSize BrowsingPanel::usualSize() const {
    const double factor = style().textFactor();
    const SavePanelMeasures usual;
    const int note = note_->text().isEmpty() ? usual.note : 0;
    return {int(savePanelWidth * factor), int((savePanelHeight - note) * factor)};
}

void BrowsingPanel::layOut() {
    const SavePanelMeasures m = measures();
    setMinimumSize(SavePanelLayout::smallestWidth(m), SavePanelLayout::smallestHeight(width(), m));
    layout_ = SavePanelLayout(width(), height(), m);
    note_->setGeometry(toRect(layout_.note));
    field_->setGeometry(framed(layout_.name));
    browser_->place(layout_.folder, layout_.places, layout_.files);
    status_->setGeometry(toRect(layout_.status));
    placeChoices();
    placeButtons({confirm_, cancel_}, layout_.buttons.x, layout_.buttons.right(), layout_.buttons.y);
    update();
}

void BrowsingPanel::resizeEvent(QResizeEvent *) { layOut(); }

void BrowsingPanel::paintLabel(QPainter &painter, int x, const Box &beside, const char *text) const {
    painter.setFont(style().font(13));
    painter.setPen(toColor(style().colors().dialogDim));
    const QRect place(x, beside.y, width(), beside.height);
    painter.drawText(place, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextDontClip, onScreen(text));
}

void BrowsingPanel::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    const ThemeColors &colors = style().colors();
    painter.fillRect(rect(), toColor(colors[Role::dialogBg]));
    paintLabel(painter, savePanelPadding, layout_.name, fieldLabel_.c_str());
    paintLabel(painter, savePanelPadding, layout_.folder, "Folder");
    browser_->paint(painter, layout_.list, layout_.files);
    if (layout_.band.height == 0) return;
    const QRectF band = toRect(layout_.band);
    fillCrisp(painter, band, toColor(mix(colors[Role::dialogBg], colors[Role::dialogText], bandTone)));
    fillCrisp(painter, QRectF(band.left(), band.top(), band.width(), lineWidth(painter)), toColor(colors.dialogLine));
    paintChoices(painter);
}

// Where it stood over its document's window, as far as the screen goes.
void BrowsingPanel::restoreFrame() {
    const QWidget &document = *parentWidget()->window();
    const QRect owner = document.geometry();
    const auto stored = parseFrame(services_.settings.get(Setting::savePanelFrame));
    QRect frame(QPoint(), stored ? QSize(stored->width, stored->height) : usualSize());
    // The title bar is as high as the document's.
    const QMargins bars(0, owner.top() - document.frameGeometry().top(), 0, 0);
    const QRect room = document.screen()->availableGeometry().marginsRemoved(bars);
    frame.setSize(frame.size().expandedTo(minimumSize()).boundedTo(room.size()));
    stored ? frame.moveTopLeft(owner.topLeft() + QPoint(stored->x, stored->y)) : frame.moveCenter(owner.center());
    frame.moveLeft(std::clamp(frame.left(), room.left(), room.right() + 1 - frame.width()));
    frame.moveTop(std::clamp(frame.top(), room.top(), room.bottom() + 1 - frame.height()));
    setGeometry(frame);
}

void BrowsingPanel::saveFrame() const {
    if (!isVisible()) return;
    const QPoint at = geometry().topLeft() - parentWidget()->window()->geometry().topLeft();
    services_.settings.set(Setting::savePanelFrame, frameText({at.x(), at.y(), width(), height()}));
}

}  // namespace kiv
