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
constexpr int listTop = 8;  // free above the first row, or the names of the columns
constexpr int newFolderWidth = 160, beforeNewFolder = 16;
constexpr int changedWidth = 110, sizeWidth = 100;        // of the columns
constexpr int widthForChanged = 380, widthForSize = 260;  // of the list, for them to be there
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

void SavePanelWindow::makeLists() {
    path_ = new PathBar(services_.style, this);
    path_->setAccessibleName("Folder");
    path_->onChosen = [this](const std::string &folder) { goTo(folder); };
    newFolderButton_ = new QuietButton(services_.style, "", this);
    newFolderButton_->setIconName("plus");
    newFolderButton_->setAccessibleName("New Folder");
    newFolderButton_->setToolTip("New Folder (Ctrl+Shift+N)");
    connect(newFolderButton_, &QPushButton::clicked, this, [this] { beginNewFolder(); });
    placeRows_.setPlaces(userPlaces());
    places_ = new RowList(services_.style, this);
    places_->setAccessibleName("Places");
    places_->setMarksCurrent(false);
    places_->setModel(&placeRows_);
    places_->onPressed = places_->onActivated = [this](int row) { goTo(placeRows_.places()[std::size_t(row)].path); };
    files_ = new RowList(services_.style, this);
    files_->setAccessibleName("Files");
    files_->setModel(&folderRows_);
    files_->onPressed = [this](int row) { takeRow(row); };
    files_->onActivated = [this](int row) { rowActivated(row); };
    for (RowList *list : {places_, files_}) list->onOtherKey = [this](QKeyEvent *event) { return listKey(event); };
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
    QList<QWidget *> stops{name_, path_};
    if (newFolder_) stops.append(newFolder_);
    stops += {newFolderButton_, places_, files_};
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
    layOutFolder(layout_.folder);
    placeLists(layout_.places, layout_.files);
    status_->setGeometry(toRect(layout_.status));
    if (containers_) containers_->setGeometry(toRect(layout_.containers));
    for (Segments *row : bits_)
        if (row) row->setGeometry(layout_.bits.x, layout_.bits.y, row->sizeHint().width(), layout_.bits.height);
    placeButtons({save_, cancel_}, layout_.buttons.right(), layout_.buttons.y);
    update();
}

// The field for a new folder's name stands where that folder will be on the way.
void SavePanelWindow::layOutFolder(const Box &box) {
    const QSize button = newFolderButton_->sizeHint();
    newFolderButton_->setGeometry(box.right() - button.width(), box.y, button.width(), button.height());
    const int room = box.width - button.width() - beforeNewFolder;
    const int field = newFolder_ ? std::min(int(newFolderWidth * services_.style.textFactor()), room / 2) : 0;
    path_->setGeometry(box.x, box.y, room - (newFolder_ ? field + beforeNewFolder : 0), box.height);
    if (!newFolder_) return;
    const int height = services_.style.grown(28);
    const Box place{box.x + path_->usedWidth() + beforeNewFolder, box.y - (height - box.height) / 2, field, height};
    newFolder_->setGeometry(framed(place));
}

void SavePanelWindow::placeLists(const Box &places, const Box &files) {
    const int rowsTop = listTop + listHeaderHeight(services_.style) + 1;
    places_->setGeometry(places.x, places.y + listTop, places.width - 1, places.height - listTop - 1);
    files_->setGeometry(files.x, files.y + rowsTop, files.width, files.height - rowsTop - 1);
    const double factor = services_.style.textFactor();
    const auto column = [&](int width, int wanted) { return files.width < wanted * factor ? 0 : int(width * factor); };
    files_->setColumns({.second = column(sizeWidth, widthForSize), .third = column(changedWidth, widthForChanged)});
}

void SavePanelWindow::resizeEvent(QResizeEvent *) { layOut(); }

void SavePanelWindow::paintLabel(QPainter &painter, int x, const Box &beside, const QString &text) const {
    painter.setFont(services_.style.font(13));
    painter.setPen(toColor(services_.style.colors().dialogDim));
    painter.drawText(QRect(x, beside.y, width(), beside.height), Qt::AlignLeft | Qt::AlignVCenter | Qt::TextDontClip, text);
}

void SavePanelWindow::paintLists(QPainter &painter) const {
    const ViewStyle &style = services_.style;
    paintListBox(painter, toRect(layout_.list), style);
    const Box &files = layout_.files;
    const double line = lineWidth(painter);
    fillCrisp(painter, QRectF(files.x - line, files.y + line, line, files.height - 2 * line),
              toColor(style.colors().dialogLine));
    const QRectF header(files.x + RowList::padding, files.y + listTop, files.width - 2 * RowList::padding,
                        listHeaderHeight(style));
    paintListHeader(painter, header, {"Name", "Size", "Changed"}, files_->columns(), style);
}

void SavePanelWindow::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    const ThemeColors &colors = services_.style.colors();
    painter.fillRect(rect(), toColor(colors[Role::dialogBg]));
    paintLabel(painter, savePanelPadding, layout_.name, "Name");
    paintLabel(painter, savePanelPadding, layout_.folder, "Folder");
    paintLists(painter);
    if (!containers_) return;
    const QRectF band = toRect(layout_.band);
    fillCrisp(painter, band, toColor(mix(colors[Role::dialogBg], colors[Role::dialogText], bandTone)));
    fillCrisp(painter, QRectF(band.left(), band.top(), band.width(), lineWidth(painter)), toColor(colors.dialogLine));
    paintLabel(painter, savePanelPadding, layout_.containers, "Format");
    paintLabel(painter, layout_.bitsLabelLeft, layout_.bits, "Bits");
}

}  // namespace kiv
