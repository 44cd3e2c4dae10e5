// How long a frame of a document's window takes: an hour of stereo, each case 500 times, from the change of the model or the
// event of the pointer to the painted pixels given to the platform. Prints the middle and the longest one beside what both may
// take, and the most processor time that one has cost: others on the machine make frames long, but not dear. Runs without a
// screen unless QT_QPA_PLATFORM says which one.
#include <QApplication>
#include <QElapsedTimer>
#include <QMouseEvent>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <functional>
#include <vector>

#include "Document/Windows/DocumentHostingView.h"
#include "Platform/Fake/FakeDefaults.h"

namespace kiv {
namespace {

constexpr int frameCount = 500;
constexpr std::int64_t rate = 48000;
constexpr std::int64_t hour = 3600 * rate;

// Two minutes of a decaying hum with noise, more than a processor keeps near, again and again.
AudioEditorBuffer hourOfSound() {
    std::vector<float> samples(std::size_t(120 * rate * 2));
    std::uint32_t state = 1;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        state = state * 1664525 + 1013904223;
        const double time = double(i / 2) / double(rate), decay = std::exp(-std::fmod(time, 0.5) * 5);
        samples[i] = float(decay * (0.7 * std::sin(300 * time) + 0.3 * double(std::int32_t(state)) * 0x1p-31));
    }
    AudioEditorBuffer buffer(samples, 2, rate);
    while (buffer.frames() < hour) buffer = buffer.replacing({buffer.frames(), buffer.frames()}, buffer);
    return buffer.part({0, hour});
}

// Milliseconds that this thread has been working.
double processorTime() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
}

// Commands that do nothing.
class NoCommands : public CommandTarget {
public:
    bool isEnabled(EditorCommand) const override { return true; }
    bool isChecked(EditorCommand) const override { return false; }
    bool isToggle(EditorCommand) const override { return false; }
    void perform(EditorCommand) override {}
    QString shortcutText(EditorCommand) const override { return {}; }
};

// What a frame of a case may take, in milliseconds.
struct Budget {
    double middle = 0, longest = 0;
};

class Bench {
public:
    Bench(const AudioEditorBuffer &sound, int width, int height)
        : sound_(sound), window_(model_, jobs_, style_, commands_), isLarge_(width > 2000) {
        window_.resize(width, height);
        window_.show();
        model_.load(sound, {}, {});
        for (int i = 0; i < 20; ++i) QApplication::processEvents(QEventLoop::WaitForMoreEvents, 20);
        std::printf("%d x %d, ms: middle, longest, what both may be, processor time\n", width, height);
    }

    void run() {
        whole();
        scrolling();
        zooming();
        marks();
        dragging();
    }

private:
    // Times each frame; `prepare` comes before it and does not count.
    void report(const char *name, Budget budget, const std::function<void(int)> &change,
                const std::function<void(int)> &prepare = {}) {
        if (isLarge_) budget = {20, 20};
        std::vector<double> times;
        double dearest = 0;
        for (int i = 0; i < frameCount; ++i) {
            if (prepare) prepare(i);
            QElapsedTimer timer;
            const double before = processorTime();
            timer.start();
            change(i);
            QApplication::sendPostedEvents();
            times.push_back(double(timer.nsecsElapsed()) / 1e6);
            dearest = std::max(dearest, processorTime() - before);
            QApplication::processEvents();
        }
        std::sort(times.begin(), times.end());
        const double middle = times[times.size() / 2], longest = times.back();
        std::printf("  %-46s %7.2f %7.2f   %2g %2g %7.2f %s\n", name, middle, longest, budget.middle, budget.longest, dearest,
                    middle > budget.middle || longest > budget.longest ? "OVER" : "");
    }

    AudioEditorZoom viewOf(double framesPerPixel, double center) {
        return {double(hour) / (framesPerPixel * window_.waveform().width()), center};
    }

    void whole() {
        report("whole waveform", full, [&](int i) { model_.setVerticalZoomDb(i % 2 ? 3 : 0); });
        const AudioEditorBuffer cut = sound_.part({0, hour - rate});
        const auto edit = [&](int i) { model_.load(i % 2 ? sound_ : cut, {}, {}); };
        report(
            "all after another sound", full, [](int) {}, edit);
    }

    void scrolling() {
        const auto scroll = [&](const char *name, double framesPerPixel, int pixels) {
            report(name, full, [&](int i) { model_.setView(viewOf(framesPerPixel, 1e8 + i * pixels * framesPerPixel)); });
        };
        scroll("scrolling by 7 pixels, 4000 frames a pixel", 4000, 7);
        scroll("scrolling by 7 pixels, 200 frames a pixel", 200, 7);
        scroll("scrolling by 700 pixels, 200 frames a pixel", 200, 700);
        scroll("scrolling by 7 pixels, 1/2 frame a pixel", 0.5, 7);
        scroll("scrolling by 7 pixels, 1/20 frame a pixel", 0.05, 7);
    }

    void zooming() {
        const auto zoom = [&](const char *name, double from, double factor) {
            report(name, full, [&](int i) { model_.setView(viewOf(from * std::pow(factor, i / double(frameCount)), 1e8)); });
        };
        zoom("zooming, whole file to 256 frames a pixel", 1.3e5, 1.0 / 500);
        zoom("zooming, 256 frames a pixel to 1", 255, 1.0 / 255);
        zoom("zooming, 1 frame a pixel to 1/8", 0.99, 1.0 / 7.9);
        zoom("zooming, 1/8 frame a pixel to 1/75", 0.125, 1.0 / 9.4);
    }

    void marks() {
        model_.zoomToFit();
        QApplication::processEvents();
        report("playhead", overlay, [&](int i) { model_.setPlayheads({{1, 1e6 + i * 3e5}}); });
        model_.setPlayheads({});
        report("cursor", overlay, [&](int i) { model_.placeCursor(1000000 + i * 300000); });
        report("hover", overlay, [&](int i) { mouse(QEvent::MouseMove, 20 + i % 700, Qt::NoButton); });
        model_.openDialog(Dialog::gain);
        report("gain over the whole sound", full, [&](int i) { model_.setGainDb(-6 + i % 100 * 0.1); });
        model_.closeDialog();
    }

    void dragging() {
        mouse(QEvent::MouseButtonPress, 20, Qt::LeftButton);
        report("drag of a selection", drag, [&](int i) { mouse(QEvent::MouseMove, 30 + i * 7 % 1000, Qt::LeftButton); });
        mouse(QEvent::MouseButtonRelease, 20, Qt::NoButton);
    }

    void mouse(QEvent::Type type, double x, Qt::MouseButtons held) {
        const bool isMove = type == QEvent::MouseMove;
        const QPointF place(x, 100);
        QMouseEvent event(type, place, window_.waveform().mapToGlobal(place), isMove ? Qt::NoButton : Qt::LeftButton, held, {});
        QApplication::sendEvent(&window_.waveform(), &event);
    }

    static constexpr Budget full{6, 12}, overlay{1, 1}, drag{3, 3};

    AudioEditorBuffer sound_;
    FakeDefaults defaults_;
    Settings settings_{defaults_};
    Clipboard clipboard_;
    AudioEditorModel model_{settings_, clipboard_};
    InlineJobs jobs_;
    ViewStyle style_{AudioEditorTheme::dark()};
    NoCommands commands_;
    DocumentHostingView window_;
    bool isLarge_;
};

}  // namespace
}  // namespace kiv

int main(int argc, char **argv) {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    const kiv::AudioEditorBuffer sound = kiv::hourOfSound();
    kiv::Bench(sound, 1280, 800).run();
    kiv::Bench(sound, 3840, 2160).run();
}
