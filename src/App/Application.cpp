#include "App/Application.h"

#include <QApplication>
#include <QEventLoop>
#include <QEventLoopLocker>
#include <QFileDialog>
#include <QScreen>
#include <QTimer>
#include <algorithm>
#include <filesystem>

#include "App/MainMenu.h"
#include "App/Translucency.h"
#include "Document/FileNames.h"
#include "Document/Windows/AboutWindow.h"
#include "Document/Windows/AudioDrag.h"
#include "Document/Windows/MessageWindow.h"
#include "Editor/Views/Accessible.h"
#include "Editor/Views/CrispPainting.h"
#include "Editor/Views/Icons.h"
#include "Platform/FileCopy.h"
#include "Platform/Linux/UserFolders.h"

namespace kiv {

namespace {

constexpr std::chrono::milliseconds longLook(200), patienceAtEnd(500);

JournalFolder journalFolder(FileSystem &fileSystem) {
    try {
        return {fileSystem, userFolder(UserFolder::state) + "/journals"};
    } catch (const std::system_error &error) {
        return {.fileSystem = fileSystem, .path = {}, .whyNone = error.what()};
    }
}

Box toBox(const QRect &rect) { return {rect.x(), rect.y(), rect.width(), rect.height()}; }

std::vector<Box> freeScreens() {
    std::vector<Box> boxes;
    for (const QScreen *screen : QGuiApplication::screens()) boxes.push_back(toBox(screen->availableGeometry()));
    return boxes;
}

// The disk is not asked.
std::filesystem::path wholePath(const std::string &path) {
    std::error_code isUnknown;  // the folder that the program is in may be gone
    return std::filesystem::absolute(path, isUnknown).lexically_normal();
}

// The stored choice; anything else means the one that follows the desktop.
const AudioEditorTheme &chosenTheme(const Settings &settings, const Appearance &appearance) {
    const std::string choice = settings.get(Setting::theme);
    const bool isDark = choice == "dark" || (choice != "light" && appearance.isDark());
    return isDark ? AudioEditorTheme::dark() : AudioEditorTheme::light();
}

}  // namespace

Application::Application(const LaunchOptions &options, double millisecondsAtMain)
    : defaults_(FileDefaults::usualPath()),
      settings_(defaults_),
      shortcuts_(defaults_),
      recorder_(shortcuts_),
      files_(makeFiles(fileSystem_)),
      journals_(journalFolder(fileSystem_)),
      jobs_(mainLoop_),
      output_(mainLoop_),
      playback_(output_, mainLoop_, log_),
      appearance_(QtAppearance::sessionBus()),
      style_(chosenTheme(settings_, appearance_)),
      leftBehind_(journals_, jobs_, style_),
      tips_(style_),
      keys_(shortcuts_, recorder_, makeKeyboard()) {
    if (options.reportsPainting) paintReport_ = std::make_unique<PaintReport>(millisecondsAtMain);
    if (options.reportsState) stateReport_ = std::make_unique<StateReport>();
    installAccessibility();
    style_.setReducesMotion(appearance_.reducesMotion());
    style_.setTranslucency(windowsMayBeTranslucent());
    appearanceChanges_ = appearance_.changed.add([this](const Appearance &) { applyAppearance(); });
    outsideEnd_.onSignal = [this] { endNow(); };
    outsideEnd_.onSessionEnds = [this](QSessionManager &session) { prepareSessionEnd(session); };
    outsideEnd_.onDie = [this] { die(); };
    outsideEnd_.onExit = [this] {
        for (const auto &document : documents_) document->document().writeJournalNow();
    };
    for (const std::string &file : options.files) openFile(file);
    if (options.files.empty()) showDropWindow();
    // Not before the first window is painted.
    QTimer::singleShot(0, &keys_, [] { QGuiApplication::setWindowIcon(QIcon(applicationIcon(64, 1))); });
    leftBehind_.isOpening = [this] { return isOpening(); };
    leftBehind_.onRestore = [this](auto journal) { restore(journal); };
    QTimer::singleShot(0, &keys_, [this] { leftBehind_.look(); });
}

bool Application::end() {
    for (const auto &document : documents_) document->saveFrame();
    documents_.clear();
    const bool isAlone = jobs_.end(patienceAtEnd);
    if (!isAlone) defaults_.finish();
    return isAlone;
}

void Application::applyAppearance() {
    style_.setReducesMotion(appearance_.reducesMotion());
    if (const auto font = appearance_.font()) {
        QFont wished(QString::fromStdString(font->family));
        wished.setPointSizeF(font->points);
        style_.setDesktopFont(wished);
    }
    style_.setTheme(chosenTheme(settings_, appearance_));
}

// Nobody is asked, for nobody may be there: what is not saved is safe in the journals. The second time does not wait for them.
void Application::endNow() {
    if (std::exchange(endsNow_, true)) return QCoreApplication::exit(0);
    flushJournals([] { QCoreApplication::exit(0); });
}

void Application::flushJournals(std::function<void()> done) {
    const std::shared_ptr<void> last(nullptr, [done = std::move(done)](void *) { done(); });
    for (const auto &document : documents_) document->document().flushJournal([last] {});
}

// The desktop waits for the return. Where it lets the program ask, that asks as Quit does, and its user may call the end off;
// but nothing is closed, since others may call it off as well.
void Application::prepareSessionEnd(QSessionManager &session) {
    QEventLoop waiting;
    if (!session.allowsInteraction()) {
        flushJournals([&] { QTimer::singleShot(0, &waiting, &QEventLoop::quit); });
        waiting.exec();
        return;
    }
    onQuitDecided_ = [&](bool quits) { waiting.exit(quits); };
    QTimer::singleShot(0, &keys_, [this] { asksQuit_ ? asksQuit_->bringForward() : askBeforeQuitting(); });
    if (waiting.exec() == 0) session.cancel();
    session.release();
}

// What its user has given up, when asked at the session's end, goes.
void Application::die() {
    if (!asksQuit_)
        std::erase_if(documents_, [](const auto &document) {
            if (!document->mayQuit()) return false;
            document->saveFrame();
            document->document().letGo();
            return true;
        });
    endNow();
}

void Application::connectController(DocumentWindowController &controller) {
    controller.onOpenCommand = [this] { chooseFiles(); };
    controller.onPlacing = [this] { return placeForNextWindow(); };
    controller.onClosed = [this, &controller] { forget(&controller); };
    controller.view().onQuit = [this] { quit(); };
    controller.view().onDropped = [this](const std::vector<std::string> &paths) {
        for (const std::string &path : paths) openFile(path);
    };
    fillMainMenu(controller.view().menuBar(), controller, shortcuts_, {[this] { quit(); }, [this] { showAbout(); }});
}

DocumentWindowController &Application::addWindow() {
    const WindowServices services{
        {*files_, jobs_, settings_, clipboard_, &playback_, &decoders_, Peaks::kept, &journals_}, style_, shortcuts_};
    DocumentWindowController &controller = *documents_.emplace_back(std::make_unique<DocumentWindowController>(services));
    connectController(controller);
    // The program may not end with another window before this one is there.
    controller.onComplete = [this, running = std::make_shared<QEventLoopLocker>()] { documentShown(); };
    if (stateReport_) stateReport_->watch(controller.document().model());
    if (paintReport_)
        paintReport_->watch(&controller.view().waveform(), [&controller] { return controller.view().isSoundComplete(); });
    return controller;
}

// Also where it was opened through a link.
DocumentWindowController *Application::windowOf(const std::string &path, const DocumentFile::Identity &there) const {
    const auto open = std::ranges::find_if(documents_, [&](const auto &each) {
        return !each->isClosed() && (each->isAt(path, there) || wholePath(each->document().path()) == wholePath(path));
    });
    return open == documents_.end() ? nullptr : open->get();
}

// The disk is asked whose file it is. One that takes its time is read in a window of its own.
void Application::openFile(const std::string &path) {
    if (DocumentWindowController *const open = windowOf(path, {})) return open->bringForward();
    const auto opening = openings_.emplace_back(std::make_shared<Opening>(path));
    const auto goOn = [this, waiting = std::weak_ptr(opening)](const DocumentFile::Identity &there) {
        const auto answered = waiting.lock();
        if (!answered || answered->there) return;
        answered->there.emplace(there);
        openAnswered();
    };
    const auto found = std::make_shared<DocumentFile::Identity>();
    jobs_.read(
        std::make_shared<Progress>(), [&files = *files_, path, found](Progress &) { *found = files.identity(path); },
        [found, goOn](std::exception_ptr) { goOn(*found); });
    QTimer::singleShot(longLook, &keys_, [goOn] { goOn({}); });
}

// In their order, so that of two paths to one file the second finds the window of the first.
void Application::openAnswered() {
    while (!openings_.empty() && openings_.front()->there) {
        const auto next = openings_.front();
        openings_.pop_front();
        openFound(next->path, *next->there);
    }
}

void Application::openFound(const std::string &path, const DocumentFile::Identity &there) {
    if (DocumentWindowController *const open = windowOf(path, there)) return open->bringForward();
    DocumentWindowController &controller = addWindow();
    const auto failed = [this, &controller, path](const std::string &error) {
        fileFailed(&controller, quoted(nameOf(path)) + " could not be opened", error);
    };
    controller.open(path, failed, there);
}

// In the window that has the file open already, if nothing has been done there; when it is just being read, afterwards.
void Application::restore(std::shared_ptr<const AbandonedJournal> journal) {
    const auto open = std::ranges::find_if(documents_, [&](const auto &each) {
        const AudioDocument &document = each->document();
        const bool isUntouched = !document.isEdited() && (document.contents() || document.isBusy());
        return isUntouched && wholePath(document.path()) == wholePath(journal->document);
    });
    if (open != documents_.end() && (*open)->document().isBusy()) {
        constexpr int soon = 100;
        return QTimer::singleShot(soon, &keys_, [this, journal] { restore(journal); });
    }
    DocumentWindowController &controller = open == documents_.end() ? addWindow() : **open;
    controller.restore(journal, [this, &controller, path = journal->document](const std::string &error) {
        fileFailed(&controller, quoted(nameOf(path)) + " could not be restored", error);
    });
}

// A window that has a sound stays.
void Application::fileFailed(DocumentWindowController *controller, const std::string &message, const std::string &error) {
    const bool isEmpty = !controller->document().contents();
    if (isEmpty) forget(controller);
    if (error == AudioDocument::cancelledText) return leftBehind_.askNext();
    const auto isGone = [](const auto &document) { return document->isClosed(); };
    if (isEmpty && std::ranges::all_of(documents_, isGone)) showDropWindow();
    showMessageWindow(style_, message, error);
    leftBehind_.askNext();
}

bool Application::isOpening() const {
    return !openings_.empty() || std::ranges::any_of(documents_, [](const auto &each) {
        const AudioDocument &document = each->document();
        return document.isBusy() && !document.contents();
    });
}

void Application::documentShown() {
    if (dropWindow_) dropWindow_->close();
    dropWindow_.reset();
    leftBehind_.askNext();
}

// Not at once: it is one of the controller's own calls that leads here.
void Application::forget(DocumentWindowController *controller) {
    QTimer::singleShot(0, &keys_, [this, controller] {
        if (controller == asksQuit_) asksQuit_ = nullptr;
        std::erase_if(documents_, [&](const auto &document) { return document.get() == controller; });
    });
}

void Application::showDropWindow() {
    if (dropWindow_) return;
    if (!settings_.get(Setting::emptyWindowAtLaunch)) return chooseFiles();
    dropWindow_ = std::make_unique<DropWindowController>(style_, shortcuts_);
    dropWindow_->onOpenCommand = [this] { chooseFiles(); };
    dropWindow_->onQuit = [this] { quit(); };
    dropWindow_->onDropped = [this](const std::vector<std::string> &paths) {
        for (const std::string &path : paths) openFile(path);
    };
    dropWindow_->show();
}

void Application::chooseFiles() {
    auto *dialog = new QFileDialog(QApplication::activeWindow());
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(QFileDialog::ExistingFiles);
    dialog->setNameFilters({"Audio files (*." + audioExtensions().join(" *.") + ")", "All files (*)"});
    QObject::connect(dialog, &QFileDialog::urlsSelected, &keys_, [this](const QList<QUrl> &urls) {
        for (const QUrl &url : urls) openFile(localPath(url));
    });
    QObject::connect(dialog, &QFileDialog::finished, &keys_,
                     [this] { QTimer::singleShot(0, &keys_, [this] { quitIfAlone(); }); });
    dialog->open();
}

// The desktop's own file dialog is no window of ours whose closing would end the program.
void Application::quitIfAlone() {
    const QWidgetList windows = QApplication::topLevelWidgets();
    const bool hasWindow = std::any_of(windows.begin(), windows.end(), [](QWidget *window) { return window->isVisible(); });
    if (documents_.empty() && !hasWindow) QCoreApplication::quit();
}

Box Application::placeForNextWindow() const {
    const std::vector<Box> screens = freeScreens();
    const Box frame = openingFrame(parseFrame(settings_.get(Setting::documentWindowFrame)), screens);
    std::vector<Box> others;
    for (const auto &document : documents_)
        if (document->view().isVisible()) others.push_back(toBox(document->view().geometry()));
    return cascaded(frame, others, screens);
}

void Application::showAbout() { showAboutWindow(style_); }

// What was answered at the end of a session that was called off does not count.
void Application::quit() {
    if (asksQuit_) return asksQuit_->bringForward();
    for (const auto &document : documents_) document->forgetQuit();
    askBeforeQuitting();
}

// Also those that were opened or edited while another one asked.
void Application::askBeforeQuitting() {
    const auto next = std::ranges::find_if(documents_, [](const auto &document) { return !document->mayQuit(); });
    if (next == documents_.end()) return quitDecided(true);
    asksQuit_ = next->get();
    asksQuit_->confirmQuit([this](bool mayQuit) {
        asksQuit_ = nullptr;
        mayQuit ? askBeforeQuitting() : quitDecided(false);
    });
}

// The program ends with its last window.
void Application::quitDecided(bool quits) {
    if (!quits)
        for (const auto &document : documents_) document->forgetQuit();
    if (const auto decided = std::exchange(onQuitDecided_, nullptr)) return decided(quits);
    if (!quits) return;
    if (dropWindow_) dropWindow_->close();
    for (const auto &document : documents_) document->closeNow();
}

}  // namespace kiv
