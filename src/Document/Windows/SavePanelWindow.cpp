#include "Document/Windows/SavePanelWindow.h"

#include <QFontMetricsF>
#include <cmath>

#include "Editor/Views/CommandTarget.h"
#include "Editor/Views/CrispPainting.h"

namespace kiv {

namespace {

constexpr int afterLabel = 10;

}  // namespace

SavePanelWindow::SavePanelWindow(const PanelServices &services, const DocumentUi::SavePanel &asked, Answer answer,
                                 QWidget *owner)
    : BrowsingPanel(services, {asked.title, asked.message, "Name", "Save"}, FolderBrowser::Shows::everything, owner),
      model_(asked, homeFolder()),
      answer_(std::move(answer)) {
    makeFormats();
    begin(model_.folder());
}

void SavePanelWindow::makeFormats() {
    if (!model_.format()) return;
    QStringList labels;
    for (const SaveContainerRow &row : saveContainers()) labels.append(onScreen(row.label));
    containers_ = new Segments(style(), ButtonKind::sheet, labels, this);
    containers_->setAccessibleName(onScreen("Format"));
    containers_->onChosen = [this](int index) {
        model_.chooseContainer(saveContainers()[std::size_t(index)].container);
        showText();
    };
    for (const SaveContainerRow &row : saveContainers()) {
        QStringList bits;
        for (const AudioSaveFormat &format : row.formats) bits.append(onScreen(bitsLabel(format)));
        Segments *&segments = bits_[std::size_t(row.container)];
        segments = new Segments(style(), ButtonKind::sheet, bits, this);
        segments->setAccessibleName(onScreen("Bits"));
        segments->onChosen = [this, formats = row.formats](int index) {
            model_.chooseFormat(formats[std::size_t(index)]);
            refresh();
        };
    }
}

std::function<PathCheck(Files &)> SavePanelWindow::check() const {
    return [model = model_](Files &files) { return checkTarget(files, model); };
}

void SavePanelWindow::answer(const std::optional<std::string> &path) {
    answer_(path ? std::optional(DocumentUi::SaveTarget{*path, model_.format()}) : std::nullopt);
}

int SavePanelWindow::stemLength() const { return int(QString::fromStdString(std::string(stemOf(model_.name()))).size()); }

QList<QWidget *> SavePanelWindow::choices() const {
    return model_.format() ? QList<QWidget *>{containers_, &bitsRow()} : QList<QWidget *>();
}

void SavePanelWindow::measureChoices(SavePanelMeasures &measures) const {
    if (!containers_) return;
    measures.containers = containers_->sizeHint().width();
    measures.bitsLabel = int(std::ceil(QFontMetricsF(style().font(13)).horizontalAdvance(onScreen("Bits")))) + afterLabel;
    for (const Segments *row : bits_) measures.bits = std::max(measures.bits, row->sizeHint().width());
}

void SavePanelWindow::placeChoices() {
    if (!containers_) return;
    const Box &bits = layout().bits;
    containers_->setGeometry(toRect(layout().containers));
    for (Segments *row : bits_) row->setGeometry(bits.x, bits.y, row->sizeHint().width(), bits.height);
}

void SavePanelWindow::paintChoices(QPainter &painter) {
    paintLabel(painter, savePanelPadding, layout().containers, "Format");
    paintLabel(painter, layout().bitsLabelLeft, layout().bits, "Bits");
}

void SavePanelWindow::refreshChoices() {
    if (!model_.format()) return;
    const auto chosen = std::size_t(model_.format()->container);
    containers_->setChosen(int(chosen));
    for (std::size_t i = 0; i < bits_.size(); ++i) bits_[i]->setVisible(i == chosen);
    const auto &formats = saveContainerRow(model_.format()->container).formats;
    for (std::size_t i = 0; i < formats.size(); ++i)
        if (formats[i] == *model_.format()) bitsRow().setChosen(int(i));
}

}  // namespace kiv
