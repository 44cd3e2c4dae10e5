#pragma once

#include <functional>
#include <memory>
#include <string>

#include "Document/FolderListing.h"
#include "Document/Windows/FolderRows.h"
#include "Editor/Surfaces/Box.h"
#include "Editor/Views/Field.h"
#include "Editor/Views/PathBar.h"
#include "Editor/Views/RowList.h"
#include "Platform/Files.h"
#include "Platform/Jobs.h"

namespace kiv {

// The parts of a panel in which one goes about folders: the way to the present one, a button that makes a new one, places to go
// to, and what the folder holds. They are children of the panel, which gives them their room. Folders are read and made off the
// main thread.
class FolderBrowser : public QObject {
public:
    enum class Shows { everything, folders };
    FolderBrowser(ViewStyle &style, Files &files, Jobs &jobs, Shows shows, QWidget *panel);
    ~FolderBrowser() override;

    const std::string &folder() const { return folder_; }
    void goTo(const std::string &folder);
    void goToParent();
    void goHome() { goTo(home_); }
    void read();
    void beginNewFolder();
    // No row is the one that is meant.
    void clearRow() { files_->setCurrentIndex({}); }

    // Where its parts stand: the way's row, and the two halves of the list's box.
    void place(const Box &way, const Box &places, const Box &files);
    void paint(QPainter &painter, const Box &box, const Box &files) const;
    // For the Tab key, in their order.
    QList<QWidget *> stops() const;

    std::function<void(const std::string &folder)> onFolder;
    std::function<void(FolderListing::Access access)> onRead;
    // The name of a file, or of a folder where there are only these, is taken by a press; a file's for good by a double-click
    // or Enter, which enter a folder.
    enum class Taken { asName, toSave };
    std::function<void(const std::string &name, Taken taken)> onTaken;
    std::function<void(const std::string &words)> onFault;
    std::function<void()> onNewFolderLeft;
    std::function<void(const QString &typed)> onPathBegun;  // "/" or "~" where no name is typed
    std::function<void(QWidget *crumb)> onCrumbMade;

private:
    bool showsFolders() const { return shows_ == Shows::folders; }
    void makeWay();
    void makeLists();
    // One after the other: what hangs at the medium that is asked last holds up nothing else.
    using ReadPlaces = std::vector<Place> (*)();
    void readPlaces(std::vector<ReadPlaces> from);
    void showWaiting();
    void showRows(FolderListing::Access access, std::vector<FolderRow> rows);
    void rowPressed(int row);
    void rowActivated(int row);
    bool listKey(QKeyEvent *event);
    void placeWay(const Box &box);
    void makeFolder(const QString &name);
    void folderMade(const std::string &path, const std::string &fault);
    void endNewFolder();

    ViewStyle &style_;
    Files &disk_;
    Jobs &jobs_;
    Shows shows_;
    QWidget *panel_;
    std::string home_, folder_;
    FolderRows folderRows_;
    PlaceRows placeRows_;
    std::shared_ptr<Progress> reading_;  // while there is a folder being read
    PathBar *path_;
    QuietButton *newFolderButton_;
    Field *newFolder_ = nullptr;
    RowList *places_, *files_;
    Box way_;
};

}  // namespace kiv
