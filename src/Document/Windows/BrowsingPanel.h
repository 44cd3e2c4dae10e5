#pragma once

#include <QWidget>
#include <functional>
#include <memory>
#include <optional>

#include "Document/PanelPaths.h"
#include "Document/Windows/FolderBrowser.h"
#include "Document/Windows/PathCompletion.h"
#include "Editor/Surfaces/SavePanelLayout.h"
#include "Editor/Views/Button.h"
#include "Editor/Views/Field.h"
#include "Editor/Views/FocusRing.h"
#include "Editor/Views/NoteLabel.h"
#include "Preferences/Settings.h"

namespace kiv {

struct PanelServices {
    Files &files;
    Jobs &jobs;
    Settings &settings;
    ViewStyle &style;
};

// The window that asks where something is to be written, over a document's window, which waits for it: a note, a field to type
// in, the way, places, what the folder holds, and two buttons. What is chosen, and what else there is to choose, is its heirs'.
// Folders are read and asked off the main thread; whatever does not answer holds nothing else up. Deletes itself once it has
// its answer.
class BrowsingPanel : public QWidget {
public:
    void open();
    void confirm();
    void cancel();
    FolderBrowser &browser() { return *browser_; }

protected:
    struct Texts {
        std::string title, message, field, confirm;
    };
    BrowsingPanel(const PanelServices &services, const Texts &texts, FolderBrowser::Shows shows, QWidget *owner);
    // The last thing that an heir's constructor does.
    void begin(const std::string &folder);

    // What is chosen, as the heir knows it.
    virtual std::string text() const = 0;  // of the field
    virtual void setText(const std::string &text) = 0;
    virtual void setFolder(const std::string &folder) = 0;
    virtual void setAccess(FolderListing::Access access) = 0;
    virtual void take(const std::string &name) = 0;
    virtual void keepText() {}  // before a path is begun over it
    virtual std::optional<BegunPath> begun() const = 0;
    virtual PathVerdict verdict() const = 0;
    virtual std::function<PathCheck(Files &)> check() const = 0;
    virtual void answer(const std::optional<std::string> &path) = 0;  // once
    // The part of the text that is chosen at first.
    virtual int stemLength() const { return int(QString::fromStdString(text()).size()); }

    // More to choose, in a band under the list.
    virtual QList<QWidget *> choices() const { return {}; }
    virtual void measureChoices(SavePanelMeasures &) const {}
    virtual void placeChoices() {}
    virtual void paintChoices(QPainter &) {}
    virtual void refreshChoices() {}

    // What follows from the text and the choices.
    void refresh();
    void showText();
    void paintLabel(QPainter &painter, int x, const Box &beside, const char *text) const;
    ViewStyle &style() const { return services_.style; }
    const SavePanelLayout &layout() const { return layout_; }

    bool focusNextPrevChild(bool next) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    void makeField(const std::string &name);
    void connectBrowser();
    void makeButtons(const std::string &confirm);
    void layOut();
    QSize usualSize() const;
    SavePanelMeasures measures() const;
    QList<QWidget *> stops() const;
    bool takeShortcut(int key, Qt::KeyboardModifiers modifiers);

    void edited();
    void selectStem();
    void beginPath(const QString &typed);
    void checked(const PathCheck &check);
    void forgetCheck();
    void say(NoteTone tone, const std::string &words);
    void finish(const std::optional<std::string> &path);
    void restoreFrame();
    void saveFrame() const;

    PanelServices services_;
    std::string fieldLabel_;
    std::shared_ptr<Progress> checking_;  // while the disk is asked whether what is chosen can be
    bool isAnswered_ = false;
    NoteLabel *note_, *status_;
    Field *field_;
    PathCompletion *completion_;
    std::unique_ptr<FolderBrowser> browser_;
    Button *cancel_, *confirm_;
    FocusRing *ring_;
    SavePanelLayout layout_{savePanelWidth, savePanelHeight, {}};
    Subscription styleChanges_;
};

}  // namespace kiv
