#pragma once

#include <QEventLoopLocker>
#include <deque>
#include <memory>
#include <optional>
#include <vector>

#include "App/KeyMonitor.h"
#include "App/LaunchOptions.h"
#include "App/LeftBehind.h"
#include "App/OutsideEnd.h"
#include "App/PaintReport.h"
#include "App/StateReport.h"
#include "Document/Windows/DocumentWindowController.h"
#include "Document/Windows/DropWindowController.h"
#include "Editor/Views/Tips.h"
#include "Platform/Linux/FileDefaults.h"
#include "Platform/Linux/LinuxFileSystem.h"
#include "Platform/Linux/LinuxSystemLog.h"
#include "Platform/Linux/ModuleDecoders.h"
#include "Platform/Linux/PulseAudioOutput.h"
#include "Platform/Qt/QtAppearance.h"
#include "Platform/Qt/QtMainLoop.h"
#include "Platform/ThreadJobs.h"

namespace kiv {

// The program: everything that there is one of, and the windows that are open. Lives between QApplication and its loop.
class Application {
public:
    Application(const LaunchOptions &options, double millisecondsAtMain);

    // The last call, after the loop: all that is still to be written is. False: a disk does not answer somebody who reads from
    // it, and the program has to end without taking itself apart.
    bool end();

    // A file has one window: where it is open already, that comes forward.
    void openFile(const std::string &path);
    void chooseFiles();
    // Asks one window after the other about its unsaved changes, and closes them all when none is against it.
    void quit();

private:
    void askBeforeQuitting();
    void quitDecided(bool quits);
    void endNow();
    void prepareSessionEnd(QSessionManager &session);
    void die();
    void flushJournals(std::function<void()> done);
    DocumentWindowController &addWindow();
    DocumentWindowController *windowOf(const std::string &path, const DocumentFile::Identity &there) const;
    void openAnswered();
    void openFound(const std::string &path, const DocumentFile::Identity &there);
    void restore(std::shared_ptr<const AbandonedJournal> journal);
    void applyAppearance();
    void fileFailed(DocumentWindowController *controller, const std::string &message, const std::string &error);
    bool isOpening() const;
    void documentShown();
    void forget(DocumentWindowController *controller);
    void showDropWindow();
    void quitIfAlone();
    void showAbout();
    Box placeForNextWindow() const;
    void connectController(DocumentWindowController &controller);

    // A file that is to be opened. The program may not end with another window before it is.
    struct Opening {
        explicit Opening(const std::string &file) : path(file) {}
        std::string path;
        std::optional<DocumentFile::Identity> there = {};  // none: the disk has not answered yet
        QEventLoopLocker running = {};
    };

    LinuxSystemLog log_;
    FileDefaults defaults_;
    Settings settings_;
    ShortcutStore shortcuts_;
    ShortcutRecorder recorder_;
    Clipboard clipboard_;
    QtMainLoop mainLoop_;
    LinuxFileSystem fileSystem_;
    std::unique_ptr<Files> files_;
    JournalFolder journals_;
    ModuleDecoders decoders_;
    ThreadJobs jobs_;
    PulseAudioOutput output_;
    PlaybackEngine playback_;
    QtAppearance appearance_;
    ViewStyle style_;
    LeftBehind leftBehind_;
    Tips tips_;
    KeyMonitor keys_;
    std::vector<std::unique_ptr<DocumentWindowController>> documents_;
    std::deque<std::shared_ptr<Opening>> openings_;
    std::unique_ptr<DropWindowController> dropWindow_;
    OutsideEnd outsideEnd_;
    DocumentWindowController *asksQuit_ = nullptr;   // the window whose answer the quit waits for
    std::function<void(bool quits)> onQuitDecided_;  // of a session's end; else the windows close
    bool endsNow_ = false;
    std::unique_ptr<PaintReport> paintReport_;
    std::unique_ptr<StateReport> stateReport_;
    Subscription appearanceChanges_;
};

}  // namespace kiv
