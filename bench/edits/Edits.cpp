// How long an edit takes in a window that shows an hour of stereo: a selection of 10 seconds in the middle, from the command to
// the painted window, and the same for taking it back. Prints the middle and the longest of ten beside the limit.
//
// usage: kiv_edits FILE (an hour of sound)
#include <QApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <algorithm>
#include <cstdio>
#include <vector>

#include "Document/Windows/DocumentWindowController.h"
#include "Platform/Fake/FakeDefaults.h"
#include "Platform/Linux/LinuxFileSystem.h"
#include "Platform/Qt/QtMainLoop.h"
#include "Platform/ThreadJobs.h"

namespace kiv {
namespace {

constexpr double limitMs = 150;
constexpr int times = 10;

// Counts the paint events of one widget.
class Paints : public QObject {
public:
    explicit Paints(QWidget &widget) { widget.installEventFilter(this); }
    bool eventFilter(QObject *, QEvent *event) override {
        count += event->type() == QEvent::Paint;
        return false;
    }
    int count = 0;
};

struct Times {
    std::vector<double> ms;
    void print(const char *title) {
        std::sort(ms.begin(), ms.end());
        std::printf("  %-28s %7.1f %7.1f   %.0f  %s\n", title, ms[ms.size() / 2], ms.back(), limitMs,
                    ms.back() < limitMs ? "met" : "NOT MET");
    }
};

template <class Act>
double timed(Paints &paints, Act act) {
    const int before = paints.count;
    QElapsedTimer timer;
    timer.start();
    act();
    while (paints.count == before) QApplication::processEvents(QEventLoop::WaitForMoreEvents, 20);
    return double(timer.nsecsElapsed()) / 1e6;
}

void settle(DocumentWindowController &controller) {
    do QApplication::processEvents(QEventLoop::AllEvents, 20);
    while (controller.document().isBusy() || !controller.view().isSoundComplete());
}

struct Row {
    const char *title;
    void (*edit)(AudioEditorModel &);
};

const Row rows[] = {
    {"cut", AudioEditorEdits::cut},
    {"delete", AudioEditorEdits::deleteSelection},
    {"paste over the selection", AudioEditorEdits::paste},
    {"gain", [](AudioEditorModel &model) { AudioEditorEdits::gain(model, -3); }},
    {"normalize", [](AudioEditorModel &model) { AudioEditorEdits::normalize(model, -1); }},
    {"fade in", AudioEditorEdits::fadeIn},
    {"fade out", AudioEditorEdits::fadeOut},
    {"silence", AudioEditorEdits::silence},
    {"reverse", AudioEditorEdits::reverse},
    {"trim", AudioEditorEdits::trim},
};

void measure(DocumentWindowController &controller, const Row &row) {
    AudioEditorModel &model = controller.document().model();
    Paints paints(controller.view().waveform());
    const std::int64_t rate = model.state().buffer.sampleRate(), middle = model.state().buffer.frames() / 2;
    Times edits, undos;
    for (int i = 0; i < times; ++i) {
        model.select({middle, middle + rate});  // what is pasted differs in length from what it is pasted over
        AudioEditorEdits::copy(model);
        model.select({middle, middle + 10 * rate});
        settle(controller);
        edits.ms.push_back(timed(paints, [&] { row.edit(model); }));
        settle(controller);
        undos.ms.push_back(timed(paints, [&] { model.undo(); }));
        settle(controller);
    }
    edits.print(row.title);
    undos.print("  and its undo");
}

int run(const char *path) {
    FakeDefaults defaults;
    Settings settings(defaults);
    ShortcutStore shortcuts(defaults);
    Clipboard clipboard;
    QtMainLoop mainLoop;
    LinuxFileSystem fileSystem;
    const auto files = makeFiles(fileSystem);
    ThreadJobs jobs(mainLoop);
    ViewStyle style(AudioEditorTheme::dark());
    DocumentWindowController controller({{*files, jobs, settings, clipboard, nullptr}, style, shortcuts});
    controller.open(path, [](const std::string &error) { std::fprintf(stderr, "%s\n", error.c_str()); });
    settle(controller);
    if (controller.document().model().state().buffer.isEmpty()) return 1;
    std::puts("10 s selected in an hour, ms: middle, longest, limit");
    for (const Row &row : rows) measure(controller, row);
    return 0;
}

}  // namespace
}  // namespace kiv

int main(int argc, char **argv) {
    QApplication application(argc, argv);
    if (argc != 2) return std::fprintf(stderr, "usage: kiv_edits FILE\n"), 2;
    return kiv::run(argv[1]);
}
