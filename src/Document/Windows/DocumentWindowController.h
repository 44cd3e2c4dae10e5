#pragma once

#include <QPointer>
#include <memory>

#include "App/Commands/ShortcutStore.h"
#include "Document/AudioDocument.h"
#include "Document/CommandActions.h"
#include "Document/Windows/DocumentHostingView.h"
#include "Editor/Surfaces/EditorWindowLayout.h"
#include "Editor/Views/AlertSheet.h"

namespace kiv {

struct PanelServices;

// What every document window works with; made once, borrowed.
struct WindowServices {
    DocumentServices document;
    ViewStyle &style;
    ShortcutStore &shortcuts;
};

// One open document and its window: shows what the document asks and tells as sheets and notices, hands commands on to it, and
// closes when the document may go.
class DocumentWindowController : public DocumentUi, public CommandTarget {
public:
    explicit DocumentWindowController(const WindowServices &services);
    ~DocumentWindowController() override;

    AudioDocument &document() { return *document_; }
    DocumentHostingView &view() { return *view_; }

    // Reads the file and shows the window: when it is read, or a moment later when that takes longer. `failed` is told when it
    // cannot be opened; there is no window then. `there` is what the disk says of it, if it has answered.
    void open(const std::string &path, std::function<void(const std::string &error)> failed,
              const DocumentFile::Identity &there = {});
    // Whether this is a file's window, also by another path.
    bool isAt(const std::string &path, const DocumentFile::Identity &there) const;
    // The same with a document that was not closed properly. Where it cannot be brought back, a window with a sound keeps it.
    void restore(std::shared_ptr<const AbandonedJournal> journal, std::function<void(const std::string &error)> failed);
    // Where the window opens if there is no remembered place, or other windows stand at it.
    std::function<Box()> onPlacing;

    // As a click on the window's close button.
    void requestClose();
    // Asks what closing would ask, but leaves the window open: tells whether it may go. Where it has been told so and nothing
    // has been edited since, `mayQuit` holds, and `closeNow` closes the window without another question.
    void confirmQuit(std::function<void(bool mayQuit)> answered);
    bool mayQuit() const;
    void forgetQuit() { quitMark_.reset(); }
    void closeNow();
    bool isClosed() const { return isClosed_; }
    // Also from the task bar.
    void bringForward();
    void saveFrame();

    std::function<void()> onOpenCommand;
    std::function<void()> onClosed;    // the window has gone; the controller may be destroyed soon after
    std::function<void()> onComplete;  // the sound is read and shown

    void ask(const Question &question, std::function<void(std::size_t)> answer) override;
    void chooseFile(const SavePanel &panel, std::function<void(const std::optional<SaveTarget> &)> answer) override;
    void chooseFolder(const FolderChoice &choice, std::function<void(const std::optional<std::string> &)> answer) override;
    void showError(const std::string &message, const std::string &informative) override;
    void showNotice(NoticeKind kind, const std::string &text) override;

    bool isEnabled(EditorCommand command) const override;
    bool isWaiting(EditorCommand command) const override;
    bool isChecked(EditorCommand command) const override;
    bool isToggle(EditorCommand command) const override;
    void perform(EditorCommand command) override;
    QString shortcutText(EditorCommand command) const override;

private:
    void begin(std::function<void(const std::string &error)> failed,
               const std::function<void(std::function<void(const std::string &error)>)> &open);
    void showAlert(AlertTone tone, const Question &question, std::function<void(std::size_t)> answer);
    PanelServices panelServices() const;
    void documentChanged();
    void dialogChanged();
    void showWindow();
    bool mayClose();
    void closeSheets();

    WindowServices services_;
    std::unique_ptr<AudioDocument> document_;
    std::unique_ptr<DocumentHostingView> view_;
    DocumentFile::Identity opened_;
    std::optional<Dialog> shownDialog_;
    int questionsOpen_ = 0;
    // Where the last panel began and where it ended: the next one that would begin there begins where that one ended.
    std::string proposedFolder_, chosenFolder_;
    std::optional<AudioDocument::EditMark> quitMark_;  // of what may go
    bool isClosed_ = false;
    bool wasFailed_ = false;
    Subscription documentChanges_, modelChanges_, shortcutChanges_;
};

}  // namespace kiv
