#include "Document/Windows/DocumentWindowController.h"

#include <QApplication>
#include <QTimer>
#include <chrono>
#include <filesystem>

#include "Document/FileNames.h"
#include "Document/Windows/FolderPanelWindow.h"
#include "Document/Windows/SavePanelWindow.h"
#include "Editor/Views/AlertSheet.h"
#include "Editor/Views/CrispPainting.h"
#include "Editor/Views/LevelSheet.h"
#include "Editor/Views/MonoSheet.h"
#include "Editor/Views/StretchSheet.h"

namespace kiv {

namespace {

using namespace std::chrono_literals;

// A small file is read within this time, and its window then appears with the sound in it.
constexpr auto showAfter = 30ms;

// "[*]" is where the mark of unsaved changes goes; in a name it stands for itself.
QString windowTitle(const std::string &name) {
    return QString::fromStdString(name).replace("[*]", "[*][*]") + "[*] — Kiv Audio Editor";
}

// Modes whose bar or panel the window does not have yet, and what would enter one. What acts only inside them waits with them.
bool entersMissingMode(EditorCommand command) {
    using enum EditorCommand;
    return command == slicer || command == eq || command == editLoop || command == findLoop || command == spectral;
}

FileFacts factsOf(const AudioFileFormat *format) {
    return format ? FileFacts{format->typeName, format->bitsDescription, format->sampleRate} : FileFacts{};
}

}  // namespace

DocumentWindowController::DocumentWindowController(const WindowServices &services)
    : services_(services), document_(std::make_unique<AudioDocument>(services.document, *this)) {
    // Not before the body: the view asks what can act while it is made.
    view_ = std::make_unique<DocumentHostingView>(document_->model(), services.document.jobs, services.style, *this);
    view_->onClosing = [this] { return mayClose(); };
    // A long edit or a search can be cancelled in no other way; playback can be stopped in two.
    view_->onStop = [this] {
        const bool endsWork = document_->isEditing() || document_->isSearching();
        document_->player().isPlaying() && !endsWork ? document_->player().stop() : document_->cancelWork();
    };
    view_->onActivated = [this] {
        if (questionsOpen_ == 0 && !isWaiting(EditorCommand::revert)) document_->checkDisk();
    };
    documentChanges_ = document_->observers.add([this](const AudioDocument &) { documentChanged(); });
    modelChanges_ = document_->model().observers.add([this](const Changes &changes) {
        if (changes.contains(Change::dialog)) dialogChanged();
    });
    shortcutChanges_ = services.shortcuts.didChange.add([this](const ShortcutStore &) { view_->refreshTips(); });
}

DocumentWindowController::~DocumentWindowController() = default;

void DocumentWindowController::open(const std::string &path, std::function<void(const std::string &)> failed,
                                    const DocumentFile::Identity &there) {
    opened_ = there;
    begin(std::move(failed), [&](auto opened) { document_->open(path, opened); });
}

bool DocumentWindowController::isAt(const std::string &path, const DocumentFile::Identity &there) const {
    const bool isBeingRead = !document_->contents();
    return document_->isAt(path, there) || (isBeingRead && there && there == opened_);
}

void DocumentWindowController::restore(std::shared_ptr<const AbandonedJournal> journal,
                                       std::function<void(const std::string &)> failed) {
    begin(std::move(failed), [&](auto opened) { document_->restore(journal, opened); });
}

void DocumentWindowController::begin(std::function<void(const std::string &)> failed,
                                     const std::function<void(std::function<void(const std::string &)>)> &open) {
    open([this, failed = std::move(failed)](const std::string &error) {
        wasFailed_ = !error.empty() && !document_->contents();
        if (wasFailed_) {
            isClosed_ = true;
            view_->hide();
        }
        if (!error.empty()) return failed(error);
        showWindow();
        if (onComplete) onComplete();
    });
    documentChanged();
    QTimer::singleShot(showAfter, view_.get(), [this] {
        if (!wasFailed_) showWindow();
    });
}

void DocumentWindowController::showWindow() {
    if (view_->isVisible() || isClosed_) return;
    if (onPlacing) view_->setGeometry(toRect(onPlacing()));
    view_->show();
}

void DocumentWindowController::saveFrame() {
    const QRect frame = view_->isMaximized() || view_->isFullScreen() ? view_->normalGeometry() : view_->geometry();
    if (frame.isValid() && view_->isVisible())
        services_.document.settings.set(Setting::documentWindowFrame,
                                        frameText({frame.x(), frame.y(), frame.width(), frame.height()}));
}

void DocumentWindowController::documentChanged() {
    view_->setWindowTitle(windowTitle(shownName(document_->name())));
    view_->setWindowModified(document_->isEdited());
    view_->infoLine().setFacts(factsOf(document_->format()));
    view_->setReading(document_->work() == AudioDocument::Work::reading);
    view_->busyLine().setBusy(document_->progress().has_value(), [this] { return document_->progress().value_or(0); });
    view_->topBar().refreshCommands();
}

void DocumentWindowController::dialogChanged() {
    const std::optional<Dialog> dialog = document_->model().state().dialog;
    if (dialog == shownDialog_) return;
    const bool hadSheet = shownDialog_.has_value();
    shownDialog_ = dialog;
    if (hadSheet) view_->sheets().dismiss();
    if (!dialog) return;
    if (*dialog == Dialog::mono)
        view_->sheets().show(std::make_unique<MonoSheet>(document_->model(), services_.style));
    else if (*dialog == Dialog::timeStretch)
        view_->sheets().show(std::make_unique<StretchSheet>(document_->model(), services_.style));
    else
        view_->sheets().show(std::make_unique<LevelSheet>(document_->model(), *dialog, services_.style));
}

void DocumentWindowController::showAlert(AlertTone tone, const Question &question, std::function<void(std::size_t)> answer) {
    auto answered = [this, answer = std::move(answer)](std::size_t button) {
        view_->sheets().dismiss();
        if (answer) answer(button);
    };
    view_->sheets().show(std::make_unique<AlertSheet>(services_.style, tone, question, std::move(answered)));
}

void DocumentWindowController::ask(const Question &question, std::function<void(std::size_t)> answer) {
    ++questionsOpen_;
    bringForward();
    showAlert(AlertTone::warning, question, [this, answer = std::move(answer)](std::size_t button) {
        --questionsOpen_;
        answer(button);
    });
}

PanelServices DocumentWindowController::panelServices() const {
    return {services_.document.files, services_.document.jobs, services_.document.settings, services_.style};
}

// Parts of a sound often go to one folder, which need not be the sound's own.
void DocumentWindowController::chooseFile(const SavePanel &panel,
                                          std::function<void(const std::optional<SaveTarget> &)> answer) {
    ++questionsOpen_;
    bringForward();
    SavePanel asked = panel;
    std::error_code isUnknown;  // a folder that is no longer there has no path
    if (const auto whole = std::filesystem::absolute(panel.path, isUnknown); !isUnknown) asked.path = whole;
    const std::string proposed = folderAbove(asked.path);
    const bool isPart = !panel.format;
    if (isPart && proposed == proposedFolder_)
        asked.path = pathWithin(chosenFolder_, panel.path.substr(panel.path.find_last_of('/') + 1));
    const auto answered = [this, proposed, isPart, answer = std::move(answer)](const std::optional<SaveTarget> &target) {
        --questionsOpen_;
        if (target && isPart && proposed != chosenFolder_) proposedFolder_ = proposed;
        if (target && isPart) chosenFolder_ = folderAbove(target->path);
        answer(target);
    };
    (new SavePanelWindow(panelServices(), asked, answered, view_.get()))->open();
}

void DocumentWindowController::chooseFolder(const FolderChoice &choice,
                                            std::function<void(const std::optional<std::string> &)> answer) {
    ++questionsOpen_;
    bringForward();
    const auto answered = [this, answer = std::move(answer)](const std::optional<std::string> &folder) {
        --questionsOpen_;
        answer(folder);
    };
    FolderChoice asked = choice;
    std::error_code isUnknown;
    if (const auto whole = std::filesystem::absolute(choice.folder, isUnknown); !isUnknown) asked.folder = whole;
    (new FolderPanelWindow(panelServices(), asked, answered, view_.get()))->open();
}

void DocumentWindowController::showError(const std::string &message, const std::string &informative) {
    showAlert(AlertTone::error, {message, informative, {"OK"}}, {});
}

void DocumentWindowController::showNotice(NoticeKind kind, const std::string &text) {
    view_->notice().tell(kind, onScreen(text));
}

bool DocumentWindowController::isEnabled(EditorCommand command) const {
    if (isWaiting(command) || entersMissingMode(command)) return false;
    if (command == EditorCommand::open || command == EditorCommand::close) return true;
    return kiv::isEnabled(command, *document_);
}

bool DocumentWindowController::isWaiting(EditorCommand command) const {
    const bool hasSheet = (view_ && view_->openSheet()) || document_->model().state().dialog;
    return hasSheet && !actsUnderSheets(command);
}

bool DocumentWindowController::isChecked(EditorCommand command) const {
    const CommandAction *row = action(command);
    return row && row->checked && row->checked(*document_);
}

bool DocumentWindowController::isToggle(EditorCommand command) const {
    const CommandAction *row = action(command);
    return row && row->checked;
}

void DocumentWindowController::perform(EditorCommand command) {
    if (!isEnabled(command)) return;
    if (command == EditorCommand::open) return onOpenCommand ? onOpenCommand() : void();
    if (command == EditorCommand::close) return requestClose();
    kiv::perform(command, *document_);
}

QString DocumentWindowController::shortcutText(EditorCommand command) const {
    const auto shortcut = services_.shortcuts.shortcut(command);
    return shortcut ? onScreen(shortcut->displayString()) : QString();
}

void DocumentWindowController::requestClose() { view_->close(); }

// The first time it asks the document, which may want an answer from the user; what closes the window in the end is the
// document's word.
bool DocumentWindowController::mayClose() {
    if (isClosed_) return true;
    if (questionsOpen_ > 0) {
        bringForward();
        return false;
    }
    closeSheets();
    document_->confirmClose([this](bool mayGo) {
        if (mayGo) closeNow();
    });
    return false;
}

void DocumentWindowController::closeSheets() {
    document_->model().closeDialog();
    view_->sheets().dismissAll();
}

void DocumentWindowController::bringForward() {
    showWindow();
    view_->setWindowState(view_->windowState() & ~Qt::WindowMinimized);
    view_->raise();
    view_->activateWindow();
}

void DocumentWindowController::closeNow() {
    if (std::exchange(isClosed_, true)) return;
    saveFrame();
    document_->player().stop();
    document_->letGo();
    QTimer::singleShot(0, view_.get(), [this] {
        view_->close();
        if (onClosed) onClosed();
    });
}

bool DocumentWindowController::mayQuit() const { return isClosed_ || quitMark_ == document_->editMark(); }

// A question about something else has to be answered first: it is shown, and the quit is off.
void DocumentWindowController::confirmQuit(std::function<void(bool)> answered) {
    if (questionsOpen_ > 0) bringForward();
    if (questionsOpen_ > 0 && !document_->isCloseAsked()) return answered(false);
    if (questionsOpen_ == 0 && (document_->isEdited() || document_->isEditing())) closeSheets();
    document_->confirmClose([this, answered = std::move(answered)](bool mayGo) {
        if (mayGo) quitMark_ = document_->editMark();
        answered(mayGo);
    });
}

}  // namespace kiv
