#include <QFontMetricsF>
#include <QPainter>
#include <cmath>

#include "Document/Windows/SavePanelWindow.h"
#include "Editor/Views/CommandTarget.h"
#include "Editor/Views/CrispPainting.h"
#include "Editor/Views/Sheet.h"

// What the panel is made of, where it stands and what is painted around it.
namespace kiv {

namespace {

using Role = AudioEditorThemeColor;

constexpr double bandTone = 0.035;
constexpr int afterLabel = 10;

QRect framed(const Box &box) { return toRect(box).adjusted(-Field::frame, -Field::frame, Field::frame, Field::frame); }

}  // namespace

void SavePanelWindow::makeName() {
    name_ = new Field(services_.style, FieldContent::text, this);
    name_->setType(13, QFont::Normal);
    name_->setPadding(11);
    name_->setAccessibleName("Name");
    name_->onEnter = [this] { confirm(); };
    name_->onEscape = [this] { cancel(); };
    completion_ = new PathCompletion(*name_, services_.files, services_.jobs);
    completion_->onCompleted = [this](const QString &text) {
        model_.typeName(text.toStdString());
        refresh();
    };
    connect(name_, &QLineEdit::textEdited, this, [this] { nameEdited(); });
}

void SavePanelWindow::makeFormats() {
    if (!model_.format()) return;
    QStringList labels;
    for (const SaveContainerRow &row : saveContainers()) labels.append(QString::fromUtf8(row.label.data(), row.label.size()));
    containers_ = new Segments(services_.style, ButtonKind::sheet, labels, this);
    containers_->setAccessibleName("Format");
    containers_->onChosen = [this](int index) {
        model_.chooseContainer(saveContainers()[std::size_t(index)].container);
        showName(QString::fromStdString(model_.name()));
    };
    for (const SaveContainerRow &row : saveContainers()) {
        QStringList bits;
        for (const AudioSaveFormat &format : row.formats) bits.append(QString::fromStdString(bitsLabel(format)));
        Segments *&segments = bits_[std::size_t(row.container)];
        segments = new Segments(services_.style, ButtonKind::sheet, bits, this);
        segments->setAccessibleName("Bits");
        segments->onChosen = [this, formats = row.formats](int index) {
            model_.chooseFormat(formats[std::size_t(index)]);
            refresh();
        };
    }
}

void SavePanelWindow::makeButtons() {
    cancel_ = new Button(services_.style, ButtonKind::sheet, this);
    cancel_->setLabelAndText({}, "Cancel");
    save_ = new Button(services_.style, ButtonKind::sheetDefault, this);
    save_->setLabelAndText({}, "Save");
    connect(cancel_, &QPushButton::clicked, this, [this] { cancel(); });
    connect(save_, &QPushButton::clicked, this, [this] { confirm(); });
}

Segments &SavePanelWindow::bitsRow() const { return *bits_[std::size_t(model_.format()->container)]; }

QList<QWidget *> SavePanelWindow::stops() const {
    QList<QWidget *> stops = QList<QWidget *>{name_} + browser_->stops();
    if (model_.format()) stops += {containers_, &bitsRow()};
    return stops + QList<QWidget *>{save_, cancel_};
}

SavePanelMeasures SavePanelWindow::measures() const {
    const ViewStyle &style = services_.style;
    const auto wide = [&](int width) { return int(std::lround(width * style.textFactor())); };
    SavePanelMeasures m{.note = note_->heightFor(width() - 2 * savePanelPadding),
                        .field = style.grown(32),
                        .crumb = style.grown(24),
                        .status = style.grown(16),
                        .label = wide(72),
                        .places = wide(160),
                        .containers = containers_ ? containers_->sizeHint().width() : 0};
    m.bitsLabel = int(std::ceil(QFontMetricsF(style.font(13)).horizontalAdvance("Bits"))) + afterLabel;
    m.bits = 0;
    for (const Segments *row : bits_)
        if (row) m.bits = std::max(m.bits, row->sizeHint().width());
    return m;
}

QSize SavePanelWindow::usualSize() const {
    const double factor = services_.style.textFactor();
    const SavePanelMeasures usual;
    const int note = note_->text().isEmpty() ? usual.note : 0;
    return {int(savePanelWidth * factor), int((savePanelHeight - note) * factor)};
}

void SavePanelWindow::layOut() {
    const SavePanelMeasures m = measures();
    setMinimumSize(SavePanelLayout::smallestWidth(m), SavePanelLayout::smallestHeight(width(), m));
    layout_ = SavePanelLayout(width(), height(), m);
    note_->setGeometry(toRect(layout_.note));
    name_->setGeometry(framed(layout_.name));
    browser_->place(layout_.folder, layout_.places, layout_.files);
    status_->setGeometry(toRect(layout_.status));
    if (containers_) containers_->setGeometry(toRect(layout_.containers));
    for (Segments *row : bits_)
        if (row) row->setGeometry(layout_.bits.x, layout_.bits.y, row->sizeHint().width(), layout_.bits.height);
    placeButtons({save_, cancel_}, layout_.buttons.x, layout_.buttons.right(), layout_.buttons.y);
    update();
}

void SavePanelWindow::resizeEvent(QResizeEvent *) { layOut(); }

void SavePanelWindow::paintLabel(QPainter &painter, int x, const Box &beside, const QString &text) const {
    painter.setFont(services_.style.font(13));
    painter.setPen(toColor(services_.style.colors().dialogDim));
    painter.drawText(QRect(x, beside.y, width(), beside.height), Qt::AlignLeft | Qt::AlignVCenter | Qt::TextDontClip, text);
}

void SavePanelWindow::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    const ThemeColors &colors = services_.style.colors();
    painter.fillRect(rect(), toColor(colors[Role::dialogBg]));
    paintLabel(painter, savePanelPadding, layout_.name, "Name");
    paintLabel(painter, savePanelPadding, layout_.folder, "Folder");
    browser_->paint(painter, layout_.list, layout_.files);
    if (!containers_) return;
    const QRectF band = toRect(layout_.band);
    fillCrisp(painter, band, toColor(mix(colors[Role::dialogBg], colors[Role::dialogText], bandTone)));
    fillCrisp(painter, QRectF(band.left(), band.top(), band.width(), lineWidth(painter)), toColor(colors.dialogLine));
    paintLabel(painter, savePanelPadding, layout_.containers, "Format");
    paintLabel(painter, layout_.bitsLabelLeft, layout_.bits, "Bits");
}

}  // namespace kiv
