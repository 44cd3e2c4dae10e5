// How long an edit takes in a window that shows an hour of stereo. A selection of 10 seconds in the middle: in the model alone,
// until its peaks can be drawn, and from the command to the painted window; and the same for taking it back. All of the hour:
// how long the window stands still for it at most, and how long it takes. Prints the middle and the longest of several beside
// the limit.
//
// usage: kiv_edits FILE (an hour of sound)
#include <QApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <algorithm>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "Document/Windows/DocumentWindowController.h"
#include "Editor/AudioEditorModel/AudioEditorEdits.h"
#include "Platform/Fake/FakeDefaults.h"
#include "Platform/Linux/LinuxFileSystem.h"
#include "Platform/Qt/QtMainLoop.h"
#include "Platform/ThreadJobs.h"

namespace kiv {
namespace {

constexpr double modelLimitMs = 10, paintedLimitMs = 150, stillLimitMs = 50, noLimit = 0;
constexpr int times = 10, longTimes = 3;

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
    double limit = noLimit;
    std::vector<double> ms = {};
    void print(const std::string &title) {
        std::sort(ms.begin(), ms.end());
        std::printf("  %-44s %7.1f %7.1f", title.c_str(), ms[ms.size() / 2], ms.back());
        if (limit != noLimit) std::printf("   %3.0f  %s", limit, ms.back() < limit ? "met" : "NOT MET");
        std::puts("");
    }
};

double since(const QElapsedTimer &timer) { return double(timer.nsecsElapsed()) / 1e6; }

template <class Act>
double timed(Paints &paints, Act act) {
    const int before = paints.count;
    QElapsedTimer timer;
    timer.start();
    act();
    while (paints.count == before) QApplication::processEvents(QEventLoop::WaitForMoreEvents, 20);
    return since(timer);
}

template <class Act>
double timed(Act act) {
    QElapsedTimer timer;
    timer.start();
    act();
    return since(timer);
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

const Row wholeRows[] = {
    rows[3],
    rows[4],
    rows[5],
    rows[7],
    rows[8],
    {"mono", [](AudioEditorModel &model) { AudioEditorEdits::mono(model, AudioEditorMonoSource::mix); }},
    {"paste a minute from another rate",
     [](AudioEditorModel &model) {
         const AudioEditorBuffer &sound = model.state().buffer;
         model.clipboard().buffer = sound.part({0, 60 * sound.sampleRate()}).atRate(48000);
         AudioEditorEdits::paste(model);
     }},
};

void selectSeconds(AudioEditorModel &model, std::int64_t seconds) {
    const std::int64_t rate = model.state().buffer.sampleRate(), middle = model.state().buffer.frames() / 2;
    model.select({middle + 1, middle + 1 + rate});  // what is pasted differs in length from what it is pasted over
    AudioEditorEdits::copy(model);
    model.select({middle, middle + seconds * rate});
}

// Without a window; loose peaks are left to a job, as there.
void measureModel(AudioEditorModel &model, const Row &row) {
    model.onLoosePeaks = [] {};
    Times edits{modelLimitMs}, undos{modelLimitMs}, redos{modelLimitMs};
    for (int i = 0; i < times; ++i) {
        selectSeconds(model, 10);
        edits.ms.push_back(timed([&] { row.edit(model); }));
        undos.ms.push_back(timed([&] { model.undo(); }));
        redos.ms.push_back(timed([&] { model.redo(); }));
        model.undo();
    }
    model.onLoosePeaks = nullptr;
    edits.print(row.title);
    undos.print("  undo");
    redos.print("  redo");
}

void measure(DocumentWindowController &controller, const Row &row) {
    AudioEditorModel &model = controller.document().model();
    Paints paints(controller.view().waveform());
    Times edits{paintedLimitMs}, undos{paintedLimitMs};
    for (int i = 0; i < times; ++i) {
        selectSeconds(model, 10);
        settle(controller);
        edits.ms.push_back(timed(paints, [&] { row.edit(model); }));
        settle(controller);
        undos.ms.push_back(timed(paints, [&] { model.undo(); }));
        settle(controller);
    }
    edits.print(row.title);
    undos.print("  and its undo");
}

// How long an act takes, and the longest time for which nothing else would have been answered meanwhile.
void watch(DocumentWindowController &controller, Times &still, Times &whole, const std::function<void()> &act) {
    QElapsedTimer timer;
    timer.start();
    double longest = timed(act);
    do longest = std::max(longest, timed([] { QApplication::processEvents(); }));
    while (controller.document().isBusy());
    whole.ms.push_back(since(timer));
    while (!controller.view().isSoundComplete()) longest = std::max(longest, timed([] { QApplication::processEvents(); }));
    still.ms.push_back(longest);
}

void measureWhole(DocumentWindowController &controller, const Row &row) {
    AudioEditorModel &model = controller.document().model();
    Times still{stillLimitMs}, whole, undoStill{stillLimitMs}, undoWhole;
    for (int i = 0; i < longTimes; ++i) {
        model.selectNone();
        watch(controller, still, whole, [&] { row.edit(model); });
        watch(controller, undoStill, undoWhole, [&] { model.undo(); });
        settle(controller);
    }
    still.print(row.title + std::string(", stands still"));
    whole.print("  until it is done");
    undoStill.print("  its undo, stands still");
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
    AudioEditorModel alone(settings, clipboard);
    alone.load(controller.document().model().state().buffer, {}, {});
    std::puts("10 s selected in an hour, in the model, ms: middle, longest, limit");
    for (const Row &row : rows) measureModel(alone, row);
    std::puts("10 s selected in an hour, to the painted window, ms: middle, longest, limit");
    for (const Row &row : rows) measure(controller, row);
    std::puts("all of an hour, ms: middle, longest, limit");
    for (const Row &row : wholeRows) measureWhole(controller, row);
    return 0;
}

}  // namespace
}  // namespace kiv

int main(int argc, char **argv) {
    QApplication application(argc, argv);
    if (argc != 2) return std::fprintf(stderr, "usage: kiv_edits FILE\n"), 2;
    return kiv::run(argv[1]);
}
