#include "Document/Windows/SavePanelWindow.h"

#include <QCloseEvent>
#include <QKeyEvent>
#include <QPointer>
#include <QScreen>
#include <QTimer>

#include "Editor/Surfaces/EditorWindowLayout.h"
#include "Editor/Views/CommandTarget.h"

namespace kiv {

namespace {

constexpr auto longReading = std::chrono::milliseconds(300);

bool canBeFolder(const QString &name) {
    return !name.trimmed().isEmpty() && name != "." && name != ".." && !name.contains(QChar('\0'));
}

}  // namespace

SavePanelWindow::SavePanelWindow(const SavePanelServices &services, const DocumentUi::SavePanel &asked, Answer answer,
                                 QWidget *owner)
    : QWidget(owner, Qt::Dialog),
      services_(services),
      model_(asked, homeFolder()),
      answer_(std::move(answer)),
      home_(homeFolder()),
      note_(new NoteLabel(services.style, NoteLabel::Kind::box, this)),
      status_(new NoteLabel(services.style, NoteLabel::Kind::line, this)) {
    setWindowModality(Qt::WindowModal);
    setWindowTitle(onScreen(asked.title));
    setAccessibleName(windowTitle());
    setAccessibleDescription(onScreen(asked.message));
    note_->setNote(NoteTone::plain, onScreen(asked.message));
    makeName();
    makeLists();
    makeFormats();
    makeButtons();
    ring_ = new FocusRing(services.style, this);
    path_->onMade = [this](QWidget *crumb) { ring_->follow(crumb); };
    for (auto *button : findChildren<QAbstractButton *>()) ring_->follow(button);
    styleChanges_ = services.style.changed.add([this](const ViewStyle &) { layOut(); });
    resize(usualSize());
    goTo(model_.folder());
    readPlaces();
}

void SavePanelWindow::open() {
    restoreFrame();
    show();
    name_->setFocus(Qt::OtherFocusReason);
    selectStem();
}

void SavePanelWindow::selectStem() {
    name_->setSelection(0, int(QString::fromStdString(std::string(stemOf(model_.name()))).size()));
}

void SavePanelWindow::showName(const QString &name) {
    if (name_->text() != name) name_->setText(name);
    refresh();
}

// What follows from the name and the format.
void SavePanelWindow::refresh() {
    const SavePanelModel::Verdict verdict = model_.verdict();
    save_->setEnabled(verdict.canConfirm && !isChecking_);
    name_->setReadable(!verdict.isFault || model_.meaning() != SavePanelModel::Meaning::nothing);
    say(verdict.isFault ? NoteTone::error : NoteTone::plain, verdict.words);
    if (!model_.format()) return;
    containers_->setChosen(int(model_.format()->container));
    for (std::size_t i = 0; i < bits_.size(); ++i) bits_[i]->setVisible(i == std::size_t(model_.format()->container));
    const auto &formats = saveContainerRow(model_.format()->container).formats;
    for (std::size_t i = 0; i < formats.size(); ++i)
        if (formats[i] == *model_.format()) bitsRow().setChosen(int(i));
}

void SavePanelWindow::say(NoteTone tone, const std::string &words) { status_->setNote(tone, onScreen(words)); }

void SavePanelWindow::goTo(const std::string &folder) {
    model_.setFolder(folder);
    endNewFolder();
    path_->setCrumbs(folderCrumbs(model_.folder(), home_));
    placeRows_.setFolder(model_.folder());
    showName(QString::fromStdString(model_.name()));
    layOut();
    read();
}

void SavePanelWindow::goToParent() {
    if (model_.folder() != "/") goTo(folderAbove(model_.folder()));
}

// What was read for another folder by then is dropped. Rows of the one before go when it takes long, and mean nothing until
// then.
void SavePanelWindow::read() {
    struct Read {
        FolderListing::Access access;
        std::vector<FolderRow> rows;
    };
    if (reading_) reading_->cancel();
    const auto progress = reading_ = std::make_shared<Progress>();
    const auto read = std::make_shared<Read>();
    services_.jobs.run(
        progress,
        [read, &files = services_.files, folder = model_.folder(), now = std::time(nullptr)](Progress &job) {
            const FolderListing listing = listFolder(files, folder, job);
            *read = {listing.access, folderRows(listing, now)};
        },
        [self = QPointer(this), read, progress](std::exception_ptr) {
            if (self && self->reading_ == progress) self->showRows(read->access, std::move(read->rows));
        });
    QTimer::singleShot(longReading, this, [this, progress] {
        if (reading_ == progress) folderRows_.setRows({});
    });
}

void SavePanelWindow::showRows(FolderListing::Access access, std::vector<FolderRow> rows) {
    reading_.reset();
    model_.setAccess(access);
    folderRows_.setRows(std::move(rows));
    files_->scrollToTop();
    refresh();
}

void SavePanelWindow::readPlaces() {
    const auto mounted = std::make_shared<std::vector<Place>>();
    services_.jobs.run(
        std::make_shared<Progress>(), [mounted](Progress &) { *mounted = mountedPlaces(); },
        [self = QPointer(this), mounted](std::exception_ptr) {
            if (!self || mounted->empty()) return;
            std::vector<Place> places = self->placeRows_.places();
            places.insert(places.end(), mounted->begin(), mounted->end());
            self->placeRows_.setPlaces(std::move(places));
        });
}

void SavePanelWindow::takeRow(int row) {
    if (reading_ || folderRows_.row(row).isFolder) return;
    model_.takeName(folderRows_.row(row).name);
    showName(QString::fromStdString(model_.name()));
}

void SavePanelWindow::rowActivated(int row) {
    if (reading_) return;
    if (folderRows_.row(row).isFolder) return goTo(pathWithin(model_.folder(), folderRows_.row(row).name));
    takeRow(row);
    confirm();
}

bool SavePanelWindow::listKey(QKeyEvent *event) {
    const bool isUp = event->key() == Qt::Key_Up && event->modifiers() == Qt::AltModifier;
    if (isUp || event->key() == Qt::Key_Backspace) return goToParent(), true;
    if (event->text() != "/" && event->text() != "~") return false;
    name_->setFocus(Qt::ShortcutFocusReason);
    name_->selectAll();
    name_->insert(event->text());
    nameEdited();
    return true;
}

// A path begun over the proposed stem has no use for the extension that is left of the name.
void SavePanelWindow::nameEdited() {
    const QString before = QString::fromStdString(model_.name()), rest = name_->text().mid(1);
    const bool isPathBegun = name_->text().startsWith('/') || name_->text().startsWith('~');
    if (isPathBegun && rest.startsWith('.') && before.endsWith(rest)) name_->setText(name_->text().left(1));
    model_.typeName(name_->text().toStdString());
    refresh();
    completion_->complete(model_.begunFolder());
}

// Whether the place can be written is asked when it is wanted, for it may be one that was typed.
void SavePanelWindow::confirm() {
    if (isChecking_ || !model_.verdict().canConfirm) return;
    isChecking_ = true;
    const auto check = std::make_shared<SaveCheck>();
    services_.jobs.run(
        std::make_shared<Progress>(),
        [check, &files = services_.files, model = model_](Progress &) { *check = checkTarget(files, model); },
        [self = QPointer(this), check](std::exception_ptr) {
            if (self) self->checked(*check);
        });
}

void SavePanelWindow::checked(const SaveCheck &check) {
    isChecking_ = false;
    using enum SaveCheck::Outcome;
    if (check.outcome == write) return finish(DocumentUi::SaveTarget{check.path, model_.format()});
    if (check.outcome == enterFolder) {
        goTo(check.path);
        return selectStem();
    }
    refresh();
    say(NoteTone::error, check.words);
    name_->setReadable(false);
}

void SavePanelWindow::cancel() { finish(std::nullopt); }

void SavePanelWindow::finish(const std::optional<DocumentUi::SaveTarget> &target) {
    const Answer answer = std::exchange(answer_, nullptr);
    if (!answer) return;
    if (reading_) reading_->cancel();
    saveFrame();
    hide();
    deleteLater();
    answer(target);
}

void SavePanelWindow::closeEvent(QCloseEvent *event) {
    event->ignore();
    cancel();
}

void SavePanelWindow::beginNewFolder() {
    if (newFolder_) return newFolder_->setFocus();
    newFolder_ = new Field(services_.style, FieldContent::text, this);
    newFolder_->setType(13, QFont::Normal);
    newFolder_->setAccessibleName("Name of the new folder");
    newFolder_->setText("New folder");
    newFolder_->onEnter = [this] { makeFolder(newFolder_->text()); };
    newFolder_->onEscape = [this] {
        endNewFolder();
        name_->setFocus(Qt::OtherFocusReason);
    };
    layOut();
    newFolder_->show();
    newFolder_->selectAll();
    newFolder_->setFocus();
}

void SavePanelWindow::endNewFolder() {
    Field *field = std::exchange(newFolder_, nullptr);
    if (!field) return;
    field->hide();
    field->deleteLater();
    layOut();
}

void SavePanelWindow::makeFolder(const QString &name) {
    if (!canBeFolder(name)) return newFolder_->setReadable(false);
    const auto words = std::make_shared<std::string>();
    const std::string path = pathWithin(model_.folder(), name.toStdString());
    services_.jobs.run(
        std::make_shared<Progress>(),
        [words, path, &files = services_.files](Progress &) { *words = newFolderFault(files, path); },
        [self = QPointer(this), words, path](std::exception_ptr) {
            if (self) self->folderMade(path, *words);
        });
}

void SavePanelWindow::folderMade(const std::string &path, const std::string &fault) {
    if (fault.empty()) {
        goTo(path);
        return name_->setFocus(Qt::OtherFocusReason);
    }
    say(NoteTone::error, fault);
    if (newFolder_) newFolder_->setReadable(false);
}

bool SavePanelWindow::focusNextPrevChild(bool next) {
    const QList<QWidget *> all = stops();
    const qsizetype count = all.size();
    qsizetype at = next ? -1 : count;
    for (qsizetype i = 0; i < count; ++i)
        if (all[i] == focusWidget() || all[i]->isAncestorOf(focusWidget())) at = i;
    for (qsizetype step = 1; step <= count; ++step) {
        QWidget *stop = all[(at + (next ? step : -step) + 2 * count) % count];
        if (!stop->isVisible() || !stop->isEnabled()) continue;
        stop->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
        return true;
    }
    return true;
}

void SavePanelWindow::keyPressEvent(QKeyEvent *event) {
    const auto modifiers = event->modifiers() & ~Qt::KeypadModifier;
    const int key = event->key();
    if (key == Qt::Key_Escape) return cancel();
    if (key == Qt::Key_Return || key == Qt::Key_Enter) return confirm();
    if (key == Qt::Key_Up && modifiers == Qt::AltModifier) return goToParent();
    if (key == Qt::Key_N && modifiers == (Qt::ControlModifier | Qt::ShiftModifier)) return beginNewFolder();
    if (key == Qt::Key_F5) return read();
    QWidget::keyPressEvent(event);
}

// Where it stood over its document's window, as far as the screen goes.
void SavePanelWindow::restoreFrame() {
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

void SavePanelWindow::saveFrame() const {
    if (!isVisible()) return;
    const QPoint at = geometry().topLeft() - parentWidget()->window()->geometry().topLeft();
    services_.settings.set(Setting::savePanelFrame, frameText({at.x(), at.y(), width(), height()}));
}

}  // namespace kiv
