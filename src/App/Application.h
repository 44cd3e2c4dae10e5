#pragma once

#include <QSessionManager>
#include <QSocketNotifier>
#include <memory>
#include <optional>
#include <vector>

#include "App/KeyMonitor.h"
#include "App/LaunchOptions.h"
#include "App/LeftBehind.h"
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
    ~Application();

    void openFile(const std::string &path);
    void chooseFiles();
    // Asks one window after the other about its unsaved changes, and closes them all when none is against it.
    void quit();

private:
    void askBeforeQuitting();
    void quitAnswered(bool mayQuit);
    void catchSignals();
    void endBySignal();
    void endWithSession(QSessionManager &session);
    void flushJournals(std::function<void()> done);
    DocumentWindowController &addWindow();
    void restore(std::shared_ptr<const AbandonedJournal> journal);
    void applyAppearance();
    void fileFailed(DocumentWindowController *controller, const std::string &path, const std::string &error);
    void documentShown();
    void forget(DocumentWindowController *controller);
    void showDropWindow();
    void quitIfAlone();
    void showAbout();
    Box placeForNextWindow() const;
    void connectController(DocumentWindowController &controller);

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
    std::unique_ptr<DropWindowController> dropWindow_;
    std::unique_ptr<QSocketNotifier> signals_;
    DocumentWindowController *asksQuit_ = nullptr;  // the window whose answer the quit waits for
    std::function<void(bool quits)> onQuitDecided_;
    bool endsBySignal_ = false;
    std::unique_ptr<PaintReport> paintReport_;
    std::unique_ptr<StateReport> stateReport_;
    Subscription appearanceChanges_;
};

}  // namespace kiv
