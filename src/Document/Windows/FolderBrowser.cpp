#include "Document/Windows/FolderBrowser.h"

#include <QKeyEvent>
#include <QPainter>
#include <QPointer>
#include <QTimer>

#include "Document/FileNames.h"
#include "Document/PanelPaths.h"
#include "Editor/Views/CommandTarget.h"
#include "Editor/Views/CrispPainting.h"

namespace kiv {

namespace {

constexpr auto longReading = std::chrono::milliseconds(200);
constexpr int listTop = 8;  // free above the first row, or the names of the columns
constexpr int newFolderWidth = 160, beforeNewFolder = 16;
constexpr int changedWidth = 110, sizeWidth = 100;        // of the columns
constexpr int widthForChanged = 380, widthForSize = 260;  // of the list, for them to be there

QRect framed(const Box &box) { return toRect(box).adjusted(-Field::frame, -Field::frame, Field::frame, Field::frame); }

bool canBeFolder(const QString &name) {
    return !name.trimmed().isEmpty() && name != "." && name != ".." && !name.contains(QChar('\0'));
}

}  // namespace

FolderBrowser::FolderBrowser(ViewStyle &style, Files &files, Jobs &jobs, Shows shows, QWidget *panel)
    : style_(style), disk_(files), jobs_(jobs), shows_(shows), panel_(panel), home_(homeFolder()) {
    makeWay();
    makeLists();
    readPlaces({userPlaces, mountedPlaces});
}

FolderBrowser::~FolderBrowser() {
    if (reading_) reading_->cancel();
}

void FolderBrowser::makeWay() {
    path_ = new PathBar(style_, panel_);
    path_->setAccessibleName(onScreen("Folder"));
    path_->onChosen = [this](const std::string &folder) { goTo(folder); };
    path_->onMade = [this](QWidget *crumb) {
        if (onCrumbMade) onCrumbMade(crumb);
    };
    newFolderButton_ = new QuietButton(style_, "", panel_);
    newFolderButton_->setIconName("plus");
    newFolderButton_->setAccessibleName(onScreen("New Folder"));
    newFolderButton_->setToolTip(onScreen("New Folder (⇧⌘N)"));
    connect(newFolderButton_, &QPushButton::clicked, this, [this] { beginNewFolder(); });
}

void FolderBrowser::makeLists() {
    placeRows_.setPlaces({{"Home", home_}});
    places_ = new RowList(style_, panel_);
    places_->setAccessibleName(onScreen("Places"));
    places_->setMarksCurrent(false);
    places_->setModel(&placeRows_);
    places_->onPressed = places_->onActivated = [this](int row) { goTo(placeRows_.places()[std::size_t(row)].path); };
    files_ = new RowList(style_, panel_);
    files_->setAccessibleName(onScreen(showsFolders() ? "Folders" : "Files"));
    files_->setModel(&folderRows_);
    files_->onPressed = [this](int row) { rowPressed(row); };
    files_->onActivated = [this](int row) { rowActivated(row); };
    for (RowList *list : {places_, files_}) list->onOtherKey = [this](QKeyEvent *event) { return listKey(event); };
}

QList<QWidget *> FolderBrowser::stops() const {
    QList<QWidget *> stops{path_};
    if (newFolder_) stops.append(newFolder_);
    return stops + QList<QWidget *>{newFolderButton_, places_, files_};
}

void FolderBrowser::goTo(const std::string &folder) {
    folder_ = folder;
    endNewFolder();
    std::vector<FolderCrumb> crumbs = folderCrumbs(folder_, home_);
    for (FolderCrumb &crumb : crumbs) crumb.label = shownName(crumb.label);
    path_->setCrumbs(std::move(crumbs));
    placeRows_.setFolder(folder_);
    onFolder(folder_);
    read();
}

void FolderBrowser::goToParent() {
    if (folder_ != "/") goTo(folderAbove(folder_));
}

// What was read for another folder by then is dropped. Rows of the one before mean nothing any more, but go only when it takes
// long: a list that is empty for a moment flickers.
void FolderBrowser::read() {
    struct Read {
        FolderListing::Access access;
        std::vector<FolderRow> rows;
    };
    if (reading_) reading_->cancel();
    const auto progress = reading_ = std::make_shared<Progress>();
    const auto read = std::make_shared<Read>();
    jobs_.read(
        progress,
        [read, &files = disk_, folder = folder_, now = std::time(nullptr), isFolders = showsFolders()](Progress &job) {
            FolderListing listing = listFolder(files, folder, job);
            if (isFolders) std::erase_if(listing.entries, [](const FolderEntry &entry) { return !entry.isFolder; });
            *read = {listing.access, folderRows(listing, now)};
        },
        [self = QPointer(this), read, progress](std::exception_ptr) {
            if (self && self->reading_ == progress) self->showRows(read->access, std::move(read->rows));
        });
    QTimer::singleShot(longReading, this, [this, progress] {
        if (reading_ == progress) showWaiting();
    });
}

void FolderBrowser::showWaiting() {
    folderRows_.setRows({});
    files_->setNote(onScreen("Reading the folder…"));
}

void FolderBrowser::showRows(FolderListing::Access access, std::vector<FolderRow> rows) {
    reading_.reset();
    files_->setNote({});
    folderRows_.setRows(std::move(rows));
    files_->scrollToTop();
    onRead(access);
}

void FolderBrowser::readPlaces(std::vector<ReadPlaces> from) {
    const auto found = std::make_shared<std::vector<Place>>();
    jobs_.read(
        std::make_shared<Progress>(), [found, read = from.front()](Progress &) { *found = read(); },
        [self = QPointer(this), found, rest = std::vector(from.begin() + 1, from.end())](std::exception_ptr) {
            if (!self) return;
            if (!found->empty()) self->placeRows_.addPlaces(*found);
            if (!rest.empty()) self->readPlaces(rest);
        });
}

void FolderBrowser::rowPressed(int row) {
    if (!reading_ && folderRows_.row(row).isFolder == showsFolders()) onTaken(folderRows_.row(row).name, Taken::asName);
}

void FolderBrowser::rowActivated(int row) {
    if (reading_) return;
    const FolderRow &chosen = folderRows_.row(row);
    chosen.isFolder ? goTo(pathWithin(folder_, chosen.name)) : onTaken(chosen.name, Taken::toSave);
}

bool FolderBrowser::listKey(QKeyEvent *event) {
    const bool isUp = event->key() == Qt::Key_Up && event->modifiers() == Qt::AltModifier;
    if (isUp || event->key() == Qt::Key_Backspace) return goToParent(), true;
    if (event->text() != "/" && event->text() != "~") return false;
    onPathBegun(event->text());
    return true;
}

void FolderBrowser::beginNewFolder() {
    if (newFolder_) return newFolder_->setFocus();
    newFolder_ = new Field(style_, FieldContent::text, panel_);
    newFolder_->setType(13, QFont::Normal);
    newFolder_->setAccessibleName(onScreen("Name of the new folder"));
    newFolder_->setText(onScreen("New folder"));
    newFolder_->onEnter = [this] { makeFolder(newFolder_->text()); };
    newFolder_->onEscape = [this] {
        endNewFolder();
        onNewFolderLeft();
    };
    placeWay(way_);
    newFolder_->show();
    newFolder_->selectAll();
    newFolder_->setFocus();
}

void FolderBrowser::endNewFolder() {
    Field *field = std::exchange(newFolder_, nullptr);
    if (field) {
        field->hide();
        field->deleteLater();
    }
    placeWay(way_);
}

void FolderBrowser::makeFolder(const QString &name) {
    if (newFolder_->isReadOnly()) return;
    if (!canBeFolder(name)) return newFolder_->setReadable(false);
    newFolder_->setReadOnly(true);  // until the disk has answered
    const auto words = std::make_shared<std::string>();
    const std::string path = pathWithin(folder_, name.toStdString());
    jobs_.run(
        std::make_shared<Progress>(), [words, path, &files = disk_](Progress &) { *words = newFolderFault(files, path); },
        [self = QPointer(this), field = QPointer(newFolder_), words, path](std::exception_ptr) {
            if (field) field->setReadOnly(false);
            if (self) self->folderMade(path, *words);
        });
}

void FolderBrowser::folderMade(const std::string &path, const std::string &fault) {
    if (fault.empty()) {
        goTo(path);
        return onNewFolderLeft();
    }
    onFault(fault);
    if (newFolder_) newFolder_->setReadable(false);
}

// The field for a new folder's name stands where that folder will be on the way.
void FolderBrowser::placeWay(const Box &box) {
    way_ = box;
    const QSize button = newFolderButton_->sizeHint();
    newFolderButton_->setGeometry(box.right() - button.width(), box.y, button.width(), button.height());
    const int room = box.width - button.width() - beforeNewFolder;
    const int field = newFolder_ ? std::min(int(newFolderWidth * style_.textFactor()), room / 2) : 0;
    path_->setGeometry(box.x, box.y, room - (newFolder_ ? field + beforeNewFolder : 0), box.height);
    if (!newFolder_) return;
    const int height = style_.grown(28);
    const Box place{box.x + path_->usedWidth() + beforeNewFolder, box.y - (height - box.height) / 2, field, height};
    newFolder_->setGeometry(framed(place));
}

void FolderBrowser::place(const Box &way, const Box &places, const Box &files) {
    placeWay(way);
    const int rowsTop = listTop + listHeaderHeight(style_) + 1;
    places_->setGeometry(places.x, places.y + listTop, places.width - 1, places.height - listTop - 1);
    files_->setGeometry(files.x, files.y + rowsTop, files.width, files.height - rowsTop - 1);
    const double factor = style_.textFactor();
    const auto column = [&](int width, int wanted) { return files.width < wanted * factor ? 0 : int(width * factor); };
    files_->setColumns(
        {.second = showsFolders() ? 0 : column(sizeWidth, widthForSize), .third = column(changedWidth, widthForChanged)});
}

void FolderBrowser::paint(QPainter &painter, const Box &box, const Box &files) const {
    paintListBox(painter, toRect(box), style_);
    const double line = lineWidth(painter);
    fillCrisp(painter, QRectF(files.x - line, files.y + line, line, files.height - 2 * line),
              toColor(style_.colors().dialogLine));
    const QRectF header(files.x + RowList::padding, files.y + listTop, files.width - 2 * RowList::padding,
                        listHeaderHeight(style_));
    paintListHeader(painter, header, {onScreen("Name"), onScreen("Size"), onScreen("Changed")}, files_->columns(), style_);
}

}  // namespace kiv
