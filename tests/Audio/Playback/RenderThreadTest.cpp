#include <gmock/gmock.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <new>
#include <random>
#include <thread>

#include "Audio/Playback/PlaybackEngine.h"
#include "Audio/Playback/Ramp.h"
#include "Platform/Fake/FakeAudioOutput.h"
#include "Platform/Fake/FakeMainLoop.h"
#include "Platform/Fake/FakeSystemLog.h"

namespace {
// What this thread has allocated and freed; every block of this program goes through the operators below.
thread_local int heapCalls = 0;
}  // namespace

void *operator new(std::size_t size) {
    ++heapCalls;
    if (void *memory = std::malloc(size ? size : 1)) return memory;
    throw std::bad_alloc();
}
void operator delete(void *memory) noexcept {
    ++heapCalls;
    std::free(memory);
}
void operator delete(void *memory, std::size_t) noexcept { operator delete(memory); }

namespace kiv {
namespace {

using namespace std::chrono_literals;

struct Silent : PlaybackEngine::Client {
    void playbackPeak(float) override {}
    void playbackMoved(double) override {}
    void playbackStopped() override {}
};

// A device on a thread of its own that takes a few frames again and again, and looks at each.
class Device {
public:
    // Strange is a sample outside lo … hi.
    Device(FakeAudioOutput &output, float lo, float hi) : lo_(lo), hi_(hi), thread_([this, &output] { run(output); }) {}
    ~Device() {
        stop_ = true;
        thread_.join();
    }

    std::atomic<int> heapCalls{0};
    std::atomic<int> strangeSamples{0};
    std::atomic<int> calls{0};
    std::atomic<int> sounding{0};

private:
    void run(FakeAudioOutput &output) {
        std::array<float, 2 * 256> frames;
        while (!stop_) {
            const int before = ::heapCalls;
            const bool plays = output.renderInto(frames);
            heapCalls += ::heapCalls - before;
            if (!plays) continue;
            ++calls;
            for (const float sample : frames) strangeSamples += !(sample >= lo_ && sample <= hi_);
            sounding += frames[0] != 0;
        }
    }

    float lo_, hi_;
    std::atomic<bool> stop_{false};
    std::thread thread_;
};

AudioEditorBuffer constant(float level, std::int64_t frames) {
    const std::vector<float> samples(std::size_t(frames * 2), level);
    return pieced(AudioEditorBuffer(samples, 2, 44100), 500);
}

// Everything the main thread can do, against a device that never rests. The buffers made here live nowhere else, so that their
// last owner frees them: it must not be the device. Under ThreadSanitizer this finds any state shared without its lock.
TEST(RenderThread, NeverAllocatesFreesOrSeesHalfAChange) {
    FakeAudioOutput output;
    FakeMainLoop loop;
    FakeSystemLog log;
    Silent client;
    PlaybackEngine engine(output, loop, log);
    std::mt19937 random(3);
    {
        Device device(output, 0, 0.7072f);  // √½ is the most that a joint of 0.5 with itself comes to
        for (int round = 0; round < 60; ++round) {
            const bool loops = round % 3 != 0;
            engine.play(constant(0.25f, 8000), {{100, 7000}, 50, loops, 90, round % 2 == 0, 64, 64}, client);
            for (int step = 0; step < 20; ++step) {
                engine.setBuffer(constant(step % 2 ? 0.25f : 0.5f, 6000 + std::int64_t(random() % 3000)));
                engine.updateLoop(std::int64_t(random() % 200), false);
                engine.setLoop(loops && step % 5 != 4);
                loop.advance(16ms);
            }
            if (round % 2) engine.stop();
            if (round % 10 == 9) loop.advance(31s);
        }
        engine.play(constant(0.25f, 8000), {{0, 8000}, 0, true}, client);
        while (device.sounding < 10) std::this_thread::yield();
        EXPECT_EQ(device.heapCalls, 0);
        EXPECT_EQ(device.strangeSamples, 0);
        EXPECT_GT(device.calls, 10);
    }
    const int before = heapCalls;
    constant(0.25f, 10);
    EXPECT_GT(heapCalls, before) << "the count would not show anything";
}

EqSettings oneOf(std::mt19937 &random) {
    const auto below = [&](unsigned n) { return double(random() % n); };
    EqSettings settings;
    settings.gainDb = -below(6);
    settings.lowCut = {below(2) == 0, 20 + below(100)};
    settings.highCut = {below(2) == 0, 2000 + below(10000)};
    for (EqBand &band : settings.bands) band = {below(3) != 0, 50 + below(5000), below(24) - 12, 0.5 + below(3)};
    return settings;
}

TEST(RenderThread, TheEqualizerNeverAllocatesWhateverIsTurned) {
    FakeAudioOutput output;
    FakeMainLoop loop;
    FakeSystemLog log;
    Silent client;
    PlaybackEngine engine(output, loop, log);
    std::mt19937 random(4);
    std::vector<float> before(AnalyzerTap::blockFrames), after(AnalyzerTap::blockFrames);
    int blocks = 0;
    Device device(output, -100, 100);
    for (int round = 0; round < 40 || device.sounding < 10 || blocks == 0; ++round) {
        PlaybackEngine::Request request{.range = {0, 8000}, .loop = true};
        request.eq = {oneOf(random), round % 2 == 0};
        request.eqTap = round % 3 != 0;
        engine.play(constant(0.25f, 8000), request, client);
        for (int step = 0; step < 30; ++step) {
            engine.setEq({oneOf(random), step % 7 != 6}, &client);
            engine.setEqTap(step % 10 != 9, &client);
            blocks += engine.readAnalyzer(&client, before, after);
            std::this_thread::yield();
        }
        if (round % 5 == 4) engine.setBuffer(AudioEditorBuffer(std::vector<float>(8000, 0.25f), 1, 44100));
    }
    EXPECT_EQ(device.heapCalls, 0);
    EXPECT_EQ(device.strangeSamples, 0);
}

}  // namespace
}  // namespace kiv
