#pragma once

#include <QWidget>
#include <array>
#include <functional>
#include <memory>
#include <optional>

#include "Document/SavePanelModel.h"
#include "Document/Windows/FolderRows.h"
#include "Document/Windows/PathCompletion.h"
#include "Editor/Surfaces/SavePanelLayout.h"
#include "Editor/Views/Field.h"
#include "Editor/Views/FocusRing.h"
#include "Editor/Views/NoteLabel.h"
#include "Editor/Views/PathBar.h"
#include "Editor/Views/RowList.h"
#include "Editor/Views/Segments.h"
#include "Platform/Jobs.h"
#include "Preferences/Settings.h"

namespace kiv {

struct SavePanelServices {
    Files &files;
    Jobs &jobs;
    Settings &settings;
    ViewStyle &style;
};

// The window that asks where a sound is to be saved, under what name and in what format; over a document's window, which waits
// for it. Folders are read off the main thread. Deletes itself once it has its answer.
class SavePanelWindow : public QWidget {
public:
    using Answer = std::function<void(const std::optional<DocumentUi::SaveTarget> &)>;
    // Told once, when the window has gone from the screen.
    SavePanelWindow(const SavePanelServices &services, const DocumentUi::SavePanel &asked, Answer answer, QWidget *owner);

    void open();
    void confirm();
    void cancel();
    void goTo(const std::string &folder);
    void goToParent();
    void beginNewFolder();

protected:
    bool focusNextPrevChild(bool next) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    void makeName();
    void makeLists();
    void makeFormats();
    void makeButtons();
    void layOut();
    void layOutFolder(const Box &box);
    void placeLists(const Box &places, const Box &files);
    QSize usualSize() const;
    SavePanelMeasures measures() const;
    Segments &bitsRow() const;
    QList<QWidget *> stops() const;
    void paintLists(QPainter &painter) const;
    void paintLabel(QPainter &painter, int x, const Box &beside, const QString &text) const;

    void selectStem();
    void showName(const QString &name);
    void nameEdited();
    void refresh();
    void read();
    void readPlaces();
    void showRows(FolderListing::Access access, std::vector<FolderRow> rows);
    void rowActivated(int row);
    void takeRow(int row);
    bool listKey(QKeyEvent *event);
    void checked(const SaveCheck &check);
    void makeFolder(const QString &name);
    void folderMade(const std::string &path, const std::string &fault);
    void endNewFolder();
    void say(NoteTone tone, const std::string &words);
    void finish(const std::optional<DocumentUi::SaveTarget> &target);
    void restoreFrame();
    void saveFrame() const;

    SavePanelServices services_;
    SavePanelModel model_;
    Answer answer_;
    std::string home_;
    FolderRows folderRows_;
    PlaceRows placeRows_;
    std::shared_ptr<Progress> reading_;  // while there is a folder being read
    bool isChecking_ = false;
    NoteLabel *note_, *status_;
    Field *name_;
    PathCompletion *completion_;
    PathBar *path_;
    Field *newFolder_ = nullptr;
    QuietButton *newFolderButton_;
    RowList *places_, *files_;
    Segments *containers_ = nullptr;
    std::array<Segments *, 3> bits_{};
    Button *cancel_, *save_;
    FocusRing *ring_;
    SavePanelLayout layout_{savePanelWidth, savePanelHeight, {}};
    Subscription styleChanges_;
};

}  // namespace kiv
