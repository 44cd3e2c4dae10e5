#include "Platform/Linux/PulseAudioOutput.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <random>
#include <span>

#include "Audio/Playback/PlaybackEngine.h"
#include "Platform/Fake/FakeMainLoop.h"
#include "Platform/Fake/FakeSystemLog.h"
#include "Platform/Linux/PulseServer.h"

#ifdef __SANITIZE_THREAD__
// The library makes some of its locks with atomic operations that the sanitizer does not see.
extern "C" const char *__tsan_default_suppressions() { return "race:pa_mutex_lock\n"; }
#endif

namespace kiv {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

struct Listener : PlaybackEngine::Client {
    void playbackPeak(float) override {}
    void playbackMoved(double frame) override { heardFrame = frame; }
    void playbackStopped() override { stopped = true; }
    double heardFrame = -1;
    bool stopped = false;
};

AudioEditorBuffer noise(std::int64_t frames, std::int64_t channels, unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> level(-1.0f, 1.0f);
    std::vector<float> samples(std::size_t(frames * channels));
    for (float &sample : samples) sample = level(random);
    return {samples, channels, 44100};
}

class PulseAudioOutputTest : public testing::Test {
protected:
    static void SetUpTestSuite() { machine = std::make_unique<PulseServer>(); }
    static void TearDownTestSuite() { machine.reset(); }

    // Time passes, on the wall and in the main loop.
    bool runUntil(const std::function<bool()> &condition, std::chrono::milliseconds atMost = 10s) {
        return waitFor([&] { return loop.advance(5ms), condition(); }, atMost);
    }
    void playOnce(const AudioEditorBuffer &sound) { engine.play(sound, {.range = {0, sound.frames()}}, client); }
    void playLooping(const AudioEditorBuffer &sound) {
        engine.play(sound, {.range = {0, sound.frames()}, .loop = true}, client);
    }
    std::int64_t millisecondsOf(const std::function<void()> &act) {
        const auto start = Clock::now();
        act();
        return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
    }
    // Whether a sequence is among what was heard since a moment, sample for sample.
    bool wasHeard(std::span<const float> wanted, std::size_t since = 0) {
        const auto heard = server.heard();
        return std::search(heard.begin() + std::ptrdiff_t(since), heard.end(), wanted.begin(), wanted.end()) != heard.end();
    }
    // Plays something that makes `wanted` heard, and again if its end was heard but not the whole: a busy machine may starve
    // the server or the recorder of time, which leaves a hole.
    bool isHeardWhole(const std::function<void()> &play, const std::vector<float> &wanted) {
        for (int attempt = 0; attempt < 3; ++attempt) {
            const std::size_t since = server.heard().size();
            play();
            if (!runUntil([&] { return wasHeard(std::span(wanted).last(400), since); }, 5s)) return false;
            if (wasHeard(wanted, since)) return true;
        }
        return false;
    }

    static inline std::unique_ptr<PulseServer> machine;  // one for all: its first two seconds are spent asleep
    PulseServer &server = *machine;
    FakeMainLoop loop;
    FakeSystemLog log;
    Listener client;
    PulseAudioOutput output{loop};
    PlaybackEngine engine{output, loop, log};
};

TEST_F(PulseAudioOutputTest, EverySampleIsHeardAsItIs) {
    server.start();
    const auto stereo = noise(44100, 2, 11);
    EXPECT_TRUE(isHeardWhole([&] { playOnce(stereo); }, stereo.samples()));

    const auto mono = noise(20000, 1, 12);
    std::vector<float> both;
    for (const float sample : mono.samples()) both.insert(both.end(), 2, sample);
    EXPECT_TRUE(isHeardWhole([&] { playOnce(mono); }, both)) << "mono, on both sides";

    const auto part = noise(3000, 2, 13);
    const auto onePass = part.samples();
    std::vector<float> passes;
    for (int i = 0; i < 8; ++i) passes.insert(passes.end(), onePass.begin(), onePass.end());
    const auto eightPasses = [&] {
        playLooping(part);
        runUntil([&] { return wasHeard(passes); }, 1s);
        engine.stop();
    };
    EXPECT_TRUE(isHeardWhole(eightPasses, passes)) << "a loop without a gap";
    EXPECT_GT(output.latencySeconds(), 0.01);
    EXPECT_LT(output.latencySeconds(), 0.2);
}

TEST_F(PulseAudioOutputTest, StartsAgainFastAndFromTheBeginning) {
    server.start();
    std::int64_t fastest = 1000;
    for (unsigned seed = 0; seed < 5; ++seed) {
        engine.play(noise(44100, 2, seed), {.range = {0, 44100}}, client);
        ASSERT_TRUE(runUntil([&] { return client.heardFrame > 2000; }));
        engine.stop();
        const auto next = noise(4000, 2, 100 + seed);
        const auto play = [&] { fastest = std::min(fastest, millisecondsOf([&] { playOnce(next); })); };
        EXPECT_TRUE(isHeardWhole(play, next.samples())) << seed;
    }
    EXPECT_LT(fastest, 50) << "ms";
}

TEST_F(PulseAudioOutputTest, APauseThrowsAwayWhatIsQueuedAndAsksForNoMore) {
    server.start();
    std::atomic<int> rendered{0};  // every frame is heard as its number
    output.start({44100, 2, ""}, [&rendered](std::span<float> out) {
        for (std::size_t i = 0; i < out.size(); i += 2) out[i] = out[i + 1] = float(++rendered);
    });
    EXPECT_EQ(rendered, 0) << "opened paused";
    output.resume();
    const auto lastHeard = [&](int from) {
        float last = 0;
        for (const float sample : server.heard())
            if (sample >= float(from)) last = std::max(last, sample);
        return int(last);
    };
    ASSERT_TRUE(runUntil([&] { return lastHeard(1) > 4410; }));
    output.pause();
    const int asked = rendered;
    EXPECT_FALSE(runUntil([&] { return rendered != asked; }, 200ms));
    rendered = 1'000'000;
    output.resume();
    ASSERT_TRUE(runUntil([&] { return lastHeard(1'000'001) > 1'004'410; }));
    const auto heard = server.heard();
    const auto isOld = [&](float sample) { return sample <= float(asked); };
    const int old = int(*std::max_element(heard.begin(), std::find_if_not(heard.begin(), heard.end(), isOld)));
    EXPECT_LT(old + 200, asked) << "of some 1500 frames queued";
    EXPECT_NE(std::find(heard.begin(), heard.end(), 1'000'001.0f), heard.end());
}

TEST_F(PulseAudioOutputTest, AServerThatDiesStopsThePlayingAndTheNextPlayFailsCleanly) {
    server.start();
    playLooping(noise(44100, 2, 6));
    ASSERT_TRUE(runUntil([&] { return client.heardFrame > 4000; }));
    server.end();
    ASSERT_TRUE(runUntil([&] { return client.stopped; }, 3s));
    EXPECT_FALSE(engine.isPlaying());
    EXPECT_FALSE(output.isRunning());
    EXPECT_THAT(log.lines(), ElementsAre(StartsWith("Kiv Audio Editor: audio output failed: ")));

    client.stopped = false;
    EXPECT_LT(millisecondsOf([&] { playOnce(noise(100, 2, 7)); }), 2000);
    EXPECT_TRUE(client.stopped);
    EXPECT_THAT(log.lines().back(), HasSubstr("audio output failed: the sound server cannot be reached: Connection refused"));

    server.start();
    client.heardFrame = -1;
    playLooping(noise(44100, 2, 8));
    EXPECT_TRUE(runUntil([&] { return client.heardFrame > 4000; })) << "a new server is found";
}

TEST_F(PulseAudioOutputTest, AServerThatHangsHoldsNothingUp) {
    server.start();
    playLooping(noise(44100, 2, 9));
    ASSERT_TRUE(runUntil([&] { return client.heardFrame > 4000; }));
    server.freeze();
    EXPECT_LT(millisecondsOf([&] { engine.stop(); }), 500);
    EXPECT_LT(millisecondsOf([&] { loop.advance(31s); }), 500) << "the teardown";
    EXPECT_FALSE(output.isRunning());
    EXPECT_LT(millisecondsOf([&] { playOnce(noise(100, 2, 10)); }), 2000);
    EXPECT_THAT(log.lines(), ElementsAre(HasSubstr("the sound server does not answer")));
    server.end();
}

TEST_F(PulseAudioOutputTest, WhatCannotBeOpenedIsSaid) {
    server.start();
    struct Case {
        AudioOutput::Format format;
        const char *text;
    };
    const Case cases[] = {{{0, 2, ""}, "the sound server plays rates of 1 to 384000 Hz, not 0 Hz"},
                          {{384001, 2, ""}, "the sound server plays rates of 1 to 384000 Hz, not 384001 Hz"},
                          {{std::int64_t(1) << 32, 2, ""}, "not 4294967296 Hz"},
                          {{44100, 0, ""}, "the sound server does not play 0 channels"},
                          {{44100, 2, "no-such-device"}, "the output device cannot be opened: No such entity"}};
    for (const Case &c : cases) {
        std::string error;
        try {
            output.start(c.format, [](std::span<float>) {});
        } catch (const std::runtime_error &failure) {
            error = failure.what();
        }
        EXPECT_THAT(error, HasSubstr(c.text));
        EXPECT_FALSE(output.isRunning());
    }
    for (const std::int64_t rate : {1, 8000, 384000}) {
        output.start({rate, 1, "null"}, [](std::span<float> out) { std::fill(out.begin(), out.end(), 0.0f); });
        output.resume();
        EXPECT_TRUE(output.isRunning()) << rate;
    }
}

}  // namespace
}  // namespace kiv
