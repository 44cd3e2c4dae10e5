// How long a frame of the sound's views takes: an hour of stereo, each case 500 times, from the change of the model to the
// painted pixels, on the platform without a screen. Prints the middle and the longest one beside what a frame may take.
#include <QApplication>
#include <QElapsedTimer>
#include <QImage>
#include <QWidget>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <vector>

#include "Editor/Views/GutterView.h"
#include "Editor/Views/OverviewView.h"
#include "Editor/Views/RulerView.h"
#include "Editor/Views/WaveformView.h"
#include "Platform/Fake/FakeDefaults.h"

namespace kiv {
namespace {

constexpr int frameCount = 500;
constexpr std::int64_t rate = 48000;
constexpr std::int64_t hour = 3600 * rate;

// Ten seconds of a decaying hum with noise, again and again: an hour that shares its samples.
AudioEditorBuffer hourOfSound() {
    std::vector<float> samples(std::size_t(10 * rate * 2));
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

// The views as they stand in a window.
class Stack {
public:
    Stack(AudioEditorModel &model, ViewStyle &style, WaveformRms &rms, int width, int height)
        : overview(model, style, rms, &window),
          ruler(model, style, &window),
          gutter(model, style, &window),
          waveform(model, style, rms, &window) {
        window.resize(width, height);
        const int left = gutter.width(), top = overview.height() + ruler.height();
        overview.setGeometry(0, 0, width, overview.height());
        ruler.setGeometry(0, overview.height(), width, ruler.height());
        gutter.setGeometry(0, top, left, height - top);
        waveform.setGeometry(left, top, width - left, height - top);
        window.show();
        QApplication::processEvents();
    }

    QWidget window;
    OverviewView overview;
    RulerView ruler;
    GutterView gutter;
    WaveformView waveform;
};

// Times each frame; `prepare` comes before it and does not count.
void report(const char *name, const char *budget, const std::function<void(int)> &prepare,
            const std::function<void(int)> &frame) {
    std::vector<double> times;
    for (int i = 0; i < frameCount; ++i) {
        prepare(i);
        QElapsedTimer timer;
        timer.start();
        frame(i);
        times.push_back(double(timer.nsecsElapsed()) / 1e6);
    }
    std::sort(times.begin(), times.end());
    std::printf("  %-44s %7.2f %7.2f   %s\n", name, times[times.size() / 2], times.back(), budget);
}

// A change of the model and the painting of what it touched.
void report(const char *name, const char *budget, const std::function<void(int)> &change, void (*paint)()) {
    const auto frame = [&](int i) {
        change(i);
        paint();
    };
    report(
        name, budget, [](int) {}, frame);
}

void paintChanges() { QApplication::sendPostedEvents(); }

AudioEditorZoom viewOf(double framesPerPixel, int width, double center) {
    return {double(hour) / (framesPerPixel * width), center};
}

void scrolling(AudioEditorModel &model, int width) {
    const auto scroll = [&](const char *name, double framesPerPixel) {
        report(
            name, "16", [&](int i) { model.setView(viewOf(framesPerPixel, width, 1e8 + i * 7 * framesPerPixel)); },
            paintChanges);
    };
    scroll("scrolling by 7 pixels, 4000 frames a pixel", 4000);
    scroll("scrolling by 7 pixels, 200 frames a pixel", 200);
    scroll("scrolling by 7 pixels, 1/2 frame a pixel", 0.5);
    scroll("scrolling by 7 pixels, 1/20 frame a pixel", 0.05);
}

void zooming(AudioEditorModel &model, int width) {
    const auto zoom = [&](const char *name, double from, double factor) {
        const auto change = [&](int i) { model.setView(viewOf(from * std::pow(factor, i / double(frameCount)), width, 1e8)); };
        report(name, "16", change, paintChanges);
    };
    zoom("zooming, whole file to 256 frames a pixel", 5e4, 1.0 / 195);
    zoom("zooming, 256 frames a pixel to 1", 255, 1.0 / 255);
    zoom("zooming, 1 frame a pixel to 1/8", 0.99, 1.0 / 7.9);
    zoom("zooming, 1/8 frame a pixel to 1/75", 0.125, 1.0 / 9.4);
}

void overlays(AudioEditorModel &model) {
    model.zoomToFit();
    paintChanges();
    report(
        "playhead", "1",
        [&](int i) {
            model.setPlayheads({{1, 1e6 + i * 3e5}});
        },
        paintChanges);
    report(
        "cursor", "1", [&](int i) { model.placeCursor(1000000 + i * 300000); }, paintChanges);
    report(
        "selection drag", "1",
        [&](int i) {
            model.select({1000000, 2000000 + i * 300000});
        },
        paintChanges);
}

void run(int width, int height) {
    FakeDefaults defaults;
    Settings settings(defaults);
    Clipboard clipboard;
    AudioEditorModel model(settings, clipboard);
    InlineJobs jobs;
    WaveformRms rms(model, jobs);
    ViewStyle style(AudioEditorTheme::dark());
    Stack stack(model, style, rms, width, height);
    const AudioEditorBuffer sound = hourOfSound();
    model.load(sound, {}, {});
    paintChanges();
    std::printf("%d x %d, ms: middle, longest, budget\n", width, height);
    report(
        "whole waveform", "6", [&](int i) { model.setVerticalZoomDb(i % 2 ? 3 : 0); }, paintChanges);
    scrolling(model, width);
    zooming(model, width);
    overlays(model);
    const auto edit = [&](int i) {
        paintChanges();
        model.load(i % 2 ? sound : sound.part({0, hour - rate}), {}, {});
    };
    QImage canvas(stack.window.size(), QImage::Format_RGB32);
    report("waveform after an edit", "6", edit, [&](int) { stack.waveform.render(&canvas); });
    report("overview after an edit", "1", edit, [&](int) { stack.overview.render(&canvas); });
}

}  // namespace
}  // namespace kiv

int main(int argc, char **argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    kiv::run(1280, 700);
    kiv::run(3840, 2060);
}
