#include "App/Application.h"

#include <sys/socket.h>
#include <unistd.h>

#include <QApplication>
#include <QEventLoop>
#include <QEventLoopLocker>
#include <QFileDialog>
#include <QScreen>
#include <QTimer>
#include <algorithm>
#include <csignal>
#include <filesystem>

#include "App/MainMenu.h"
#include "App/Translucency.h"
#include "Document/Windows/AboutWindow.h"
#include "Document/Windows/AudioDrag.h"
#include "Document/Windows/MessageWindow.h"
#include "Editor/Views/Accessible.h"
#include "Editor/Views/CrispPainting.h"
#include "Editor/Views/Icons.h"
#include "Platform/Linux/UserFolders.h"

namespace kiv {

namespace {

int signalPipe[2] = {-1, -1};

// Only what a signal handler may do: the rest happens when the loop reads the byte.
extern "C" void writeSignal(int) {
    const char byte = 1;
    [[maybe_unused]] const auto written = ::write(signalPipe[0], &byte, 1);
}

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
    catchSignals();
    QObject::connect(qGuiApp, &QGuiApplication::commitDataRequest, &keys_,
                     [this](QSessionManager &session) { endWithSession(session); });
    for (const std::string &file : options.files) openFile(file);
    if (options.files.empty()) showDropWindow();
    // Not before the first window is painted.
    QTimer::singleShot(0, &keys_, [] { QGuiApplication::setWindowIcon(QIcon(applicationIcon(64, 1))); });
    leftBehind_.onRestore = [this](auto journal) { restore(journal); };
    QTimer::singleShot(0, &keys_, [this] { leftBehind_.look(); });
}

Application::~Application() {
    for (const auto &document : documents_) document->saveFrame();
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

void Application::catchSignals() {
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, signalPipe) != 0) return;
    signals_ = std::make_unique<QSocketNotifier>(signalPipe[1], QSocketNotifier::Read);
    QObject::connect(signals_.get(), &QSocketNotifier::activated, signals_.get(), [this] {
        char byte;
        if (::read(signalPipe[1], &byte, 1) == 1) endBySignal();
    });
    for (int number : {SIGTERM, SIGINT, SIGHUP}) std::signal(number, writeSignal);
}

// Nobody is asked, for nobody may be there: what is not saved is safe in the journals. The second one does not wait for them.
void Application::endBySignal() {
    if (std::exchange(endsBySignal_, true)) return QCoreApplication::exit(0);
    flushJournals([] { QCoreApplication::exit(0); });
}

void Application::flushJournals(std::function<void()> done) {
    const std::shared_ptr<void> last(nullptr, [done = std::move(done)](void *) { done(); });
    for (const auto &document : documents_) document->document().flushJournal([last] {});
}

// The desktop waits for the return. Where it lets the program ask, that asks as Quit does, and its user may call the end off.
void Application::endWithSession(QSessionManager &session) {
    const bool asks = std::ranges::any_of(documents_, [](const auto &document) { return !document->mayQuit(); });
    QEventLoop waiting;
    if (!asks || !session.allowsInteraction()) {
        flushJournals([&] { QTimer::singleShot(0, &waiting, &QEventLoop::quit); });
        waiting.exec();
        return;
    }
    onQuitDecided_ = [&](bool quits) { waiting.exit(quits); };
    QTimer::singleShot(0, &keys_, [this] { quit(); });
    if (waiting.exec() == 0) session.cancel();
    session.release();
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

void Application::openFile(const std::string &path) {
    DocumentWindowController &controller = addWindow();
    controller.open(path, [this, &controller, path](const std::string &error) { fileFailed(&controller, path, error); });
}

// In the window that has the file open already, if nothing has been done there.
void Application::restore(std::shared_ptr<const AbandonedJournal> journal) {
    const std::string path = journal->document;
    const auto open = std::ranges::find_if(documents_, [&](const auto &each) {
        AudioDocument &document = each->document();
        return std::filesystem::absolute(document.path()) == path && !document.isEdited() && !document.isBusy() &&
               document.contents();
    });
    DocumentWindowController &controller = open == documents_.end() ? addWindow() : **open;
    controller.restore(journal, [this, &controller, path](const std::string &error) { fileFailed(&controller, path, error); });
}

void Application::fileFailed(DocumentWindowController *controller, const std::string &path, const std::string &error) {
    const std::string name = path.substr(path.find_last_of('/') + 1);
    forget(controller);
    if (error == AudioDocument::cancelledText) return;
    if (documents_.size() == 1) showDropWindow();
    showMessageWindow(style_, "“" + name + "” could not be opened", error);
}

void Application::documentShown() {
    if (dropWindow_) dropWindow_->close();
    dropWindow_.reset();
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
    QObject::connect(dialog, &QFileDialog::filesSelected, &keys_, [this](const QStringList &paths) {
        for (const QString &path : paths) openFile(path.toStdString());
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

void Application::quit() {
    if (asksQuit_) return asksQuit_->bringForward();
    askBeforeQuitting();
}

// Also those that were opened or edited while another one asked. The program ends with its last window.
void Application::askBeforeQuitting() {
    const auto next = std::ranges::find_if(documents_, [](const auto &document) { return !document->mayQuit(); });
    if (next != documents_.end()) {
        asksQuit_ = next->get();
        return asksQuit_->confirmQuit([this](bool mayQuit) { quitAnswered(mayQuit); });
    }
    if (dropWindow_) dropWindow_->close();
    for (const auto &document : documents_) document->closeNow();
    if (const auto decided = std::exchange(onQuitDecided_, nullptr)) decided(true);
}

void Application::quitAnswered(bool mayQuit) {
    asksQuit_ = nullptr;
    if (mayQuit) return askBeforeQuitting();
    for (const auto &document : documents_) document->forgetQuit();
    if (const auto decided = std::exchange(onQuitDecided_, nullptr)) decided(false);
}

}  // namespace kiv
