#include "Audio/Playback/PlaybackEngine.h"

#include <gmock/gmock.h>

#include <cmath>
#include <string>

#include "Audio/Playback/Ramp.h"
#include "Platform/Fake/FakeAudioOutput.h"
#include "Platform/Fake/FakeMainLoop.h"
#include "Platform/Fake/FakeSystemLog.h"

namespace kiv {
namespace {

using namespace std::chrono_literals;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

struct Listener : PlaybackEngine::Client {
    void playbackPeak(float level) override { peaks.push_back(level); }
    void playbackMoved(double frame) override { moved.push_back(frame); }
    void playbackStopped() override { ++stops; }

    std::vector<float> peaks;
    std::vector<double> moved;
    int stops = 0;
};

class PlaybackEngineTest : public testing::Test {
protected:
    // The device takes frames, then the display's next picture comes.
    std::vector<float> pass(std::int64_t frames) {
        auto out = output.render(frames);
        loop.advance(16ms);
        return out;
    }
    PlaybackEngine::Request looping(std::int64_t lo, std::int64_t hi) const {
        return {.range = {lo, hi}, .start = lo, .loop = true};
    }

    FakeAudioOutput output;
    FakeMainLoop loop;
    FakeSystemLog log;
    Listener client;
    PlaybackEngine engine{output, loop, log};
};

TEST_F(PlaybackEngineTest, PlaysARangeOnceAndStops) {
    engine.play(ramp(1000), {.range = {100, 200}, .start = 100}, client);
    EXPECT_TRUE(engine.isPlaying());
    EXPECT_TRUE(engine.isPlaying(&client));
    EXPECT_EQ(pass(60)[59], rampSample(159));
    EXPECT_THAT(client.moved, ElementsAre(160));
    EXPECT_THAT(client.peaks, ElementsAre(160));
    pass(60);
    EXPECT_FALSE(engine.isPlaying());
    EXPECT_EQ(client.stops, 1);
    EXPECT_THAT(client.moved, ElementsAre(160)) << "no playhead after the end";
    EXPECT_EQ(client.peaks[1], 200);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(PlaybackEngineTest, TheOutputHasTheFilesRateAndUpToTwoChannels) {
    for (const std::int64_t channels : {1, 2, 6}) {
        engine.play(ramp(10, channels, 96000), {.range = {0, 10}}, client);
        EXPECT_EQ(output.format(), (AudioOutput::Format{96000, int(std::min<std::int64_t>(channels, 2)), ""}));
    }
}

struct HeardCase {
    const char *what;
    PlaybackEngine::Request request;
    double latencyFrames;
    std::vector<std::int64_t> blocks;  // rendered between the ticks
    std::vector<double> heard;
};

TEST(PlaybackEngine, ThePlayheadIsTheFrameBeingHeard) {
    const HeardCase cases[] = {
        {"no latency", {{0, 10000}, 0}, 0, {100, 100}, {100, 200}},
        {"stays at the start until it is heard", {{1000, 9000}, 1000}, 512, {400, 400}, {1000, 1288}},
        {"in the loop's tail after a wrap", {{1000, 2000}, 1500, true}, 512, {400, 200, 300, 200}, {1500, 1588, 1888, 1088}},
        {"just at the wrap", {{1000, 2000}, 1900, true}, 512, {101, 512}, {1489, 1001}},
        {"from before the loop", {{1000, 2000}, 400, true}, 100, {300, 500}, {600, 1100}},
        {"a loop shorter than the latency", {{1000, 1100}, 1000, true}, 512, {90, 20, 30}, {1000, 1098, 1028}},
        {"never past the end", {{0, 300}, 0}, -100, {300}, {300}},
    };
    for (const HeardCase &c : cases) {
        FakeAudioOutput output;
        FakeMainLoop loop;
        FakeSystemLog log;
        Listener client;
        PlaybackEngine engine(output, loop, log);
        output.latency = c.latencyFrames / 44100;
        engine.play(ramp(20000), c.request, client);
        for (const std::int64_t block : c.blocks) {
            output.render(block);
            loop.advance(16ms);
        }
        EXPECT_EQ(client.moved, c.heard) << c.what;
    }
}

TEST_F(PlaybackEngineTest, ALatencyThatTheDeviceTellsLaterCounts) {
    engine.play(ramp(20000), {.range = {0, 20000}}, client);
    pass(5000);
    output.latency = 4410.0 / 44100;
    pass(1000);
    EXPECT_THAT(client.moved, ElementsAre(5000, 6000 - 4410));
}

TEST_F(PlaybackEngineTest, StoppingIsHeardAtOnceAndCostsNothingAfterwards) {
    engine.play(ramp(1000), looping(0, 1000), client);
    pass(50 + 1000);  // a peak is of the time since the last one
    output.render(10);
    engine.stop();
    EXPECT_TRUE(output.isPaused());
    EXPECT_FALSE(engine.isPlaying());
    EXPECT_THAT(client.peaks, ElementsAre(1000, 60)) << "a last reading";
    EXPECT_EQ(client.stops, 1);
    EXPECT_EQ(loop.timers(), 1) << "the teardown alone";
    engine.stop();
    EXPECT_EQ(client.stops, 1);
}

TEST_F(PlaybackEngineTest, AnEndIsHeardOutAndThenTheOutputPauses) {
    output.latency = 0.5;
    engine.play(ramp(100), {.range = {0, 100}}, client);
    pass(200);
    EXPECT_FALSE(engine.isPlaying());
    loop.advance(500ms);
    EXPECT_FALSE(output.isPaused()) << "the tail is cut off";
    EXPECT_THAT(output.render(64), Each(0.0f));
    loop.advance(500ms);
    EXPECT_TRUE(output.isPaused());
    EXPECT_EQ(loop.timers(), 1);
}

TEST_F(PlaybackEngineTest, TheOutputIsKeptFor30Seconds) {
    const auto playAndStop = [&](const AudioEditorBuffer &sound) {
        engine.play(sound, looping(0, 10), client);
        engine.stop();
        return output.starts;
    };
    EXPECT_EQ(playAndStop(ramp(10, 2)), 1);
    loop.advance(29s);
    EXPECT_EQ(playAndStop(ramp(10, 2)), 1);
    loop.advance(29s);
    EXPECT_EQ(playAndStop(ramp(10, 6)), 1) << "two output channels all the same; each stop counts anew";
    EXPECT_EQ(playAndStop(ramp(10, 1)), 2);
    EXPECT_EQ(playAndStop(ramp(10, 1, 48000)), 3);
    loop.advance(30s);
    EXPECT_FALSE(output.isRunning());
    EXPECT_EQ(loop.timers(), 0);
    EXPECT_EQ(playAndStop(ramp(10, 1, 48000)), 4);
    loop.advance(29s);
    engine.play(ramp(10, 1, 48000), looping(0, 10), client);
    loop.advance(60s);
    EXPECT_EQ(output.render(1)[0], 1) << "what plays is not torn down";
}

TEST_F(PlaybackEngineTest, APlayingDocumentGivesWayToTheNext) {
    Listener second;
    engine.play(ramp(1000), looping(0, 1000), client);
    engine.play(ramp(1000), looping(500, 1000), second);
    EXPECT_EQ(client.stops, 1);
    EXPECT_FALSE(engine.isPlaying(&client));
    EXPECT_EQ(pass(1)[0], rampSample(500));
    engine.stop(&client);
    EXPECT_TRUE(engine.isPlaying(&second));
    EXPECT_THAT(client.moved, IsEmpty());
    engine.stop(&second);
    EXPECT_EQ(second.stops, 1);
}

TEST_F(PlaybackEngineTest, NothingToPlay) {
    engine.play(ramp(100), {.range = {200, 300}, .start = 200}, client);
    EXPECT_FALSE(engine.isPlaying());
    EXPECT_EQ(client.stops, 1);
    EXPECT_EQ(output.starts, 0);
    engine.play(ramp(100), {.range = {50, 300}, .start = 9999}, client);
    pass(10);
    EXPECT_EQ(client.stops, 2) << "a start behind the end";
}

TEST_F(PlaybackEngineTest, AnOutputThatFailsOrIsLostIsLoggedAndOpenedAnew) {
    const std::string failed = "Kiv Audio Editor: audio output failed: ";
    const auto play = [&] { engine.play(ramp(100), looping(0, 100), client); };
    const auto expectSilent = [&](int stops) {
        EXPECT_FALSE(engine.isPlaying());
        EXPECT_EQ(client.stops, stops);
    };
    output.failure = "Connection refused";
    play();
    expectSilent(1);
    EXPECT_EQ(loop.timers(), 0);
    output.failure.clear();
    play();
    EXPECT_EQ(output.render(1)[0], 1);
    output.lose("Connection terminated");
    expectSilent(2);
    EXPECT_THAT(log.lines(), ElementsAre(failed + "Connection refused", failed + "Connection terminated"));
    play();
    EXPECT_EQ(output.starts, 2);
    engine.stop();
    output.lose("gone while idle");
    expectSilent(3);
    play();
    EXPECT_EQ(output.render(1)[0], 1);
}

TEST_F(PlaybackEngineTest, LoopAndJointChangeWhilePlaying) {
    engine.play(ramp(3000), looping(1000, 2000), client);
    output.render(900);
    engine.updateLoop(100, false);
    EXPECT_FLOAT_EQ(output.render(51)[50], float(0.49 * rampSample(1950) + 0.51 * rampSample(950)));
    engine.setLoop(false);
    EXPECT_EQ(output.render(1)[0], rampSample(1951));
    pass(100);
    EXPECT_FALSE(engine.isPlaying());
}

TEST_F(PlaybackEngineTest, APlaybackKnowsNothingOfTheOneBefore) {
    output.latency = 512.0 / 44100;
    engine.play(ramp(10000), looping(5000, 6000), client);
    pass(900);
    pass(900);
    engine.play(ramp(10000), {.range = {1000, 2000}, .start = 1000}, client);
    client.moved.clear();
    loop.advance(16ms);
    pass(600);
    EXPECT_THAT(client.moved, ElementsAre(1000, 1088));
}

TEST_F(PlaybackEngineTest, PlayingAgainCutsTheTailAndIsNotPausedForIt) {
    engine.play(ramp(100), {.range = {0, 100}}, client);
    pass(200);
    const int pauses = output.pauses;
    engine.play(ramp(100), looping(0, 100), client);
    EXPECT_EQ(output.pauses, pauses + 1);
    loop.advance(5s);
    EXPECT_FALSE(output.isPaused());
    EXPECT_EQ(output.pauses, pauses + 1);
}

TEST_F(PlaybackEngineTest, ThePlayheadKeepsToAShortenedSound) {
    output.latency = 64.0 / 44100;
    const PlaybackEngine::Request once{.range = {200, 800}, .start = 200};
    for (const auto &[request, heard] : {std::pair{looping(200, 800), 370.0}, {once, 400.0}}) {
        engine.play(ramp(1000), request, client);
        pass(500);
        engine.setBuffer(ramp(400));
        if (request.loop) pass(34);
        loop.advance(16ms);
        EXPECT_EQ(client.moved.back(), heard);
        engine.stop();
    }
}

TEST_F(PlaybackEngineTest, AnEditedSoundGoesOn) {
    const auto play = [&] {
        engine.play(ramp(1000, 2), looping(200, 800), client);
        output.render(100);
    };
    play();
    std::vector<float> other(2 * 1000, 7.0f);
    engine.setBuffer(AudioEditorBuffer(other, 2, 44100));
    EXPECT_EQ(output.render(1)[0], 7) << "new samples";

    play();
    engine.setBuffer(ramp(400, 2));
    EXPECT_EQ(output.render(101)[200], rampSample(200)) << "a shorter sound loops within what is left";

    engine.play(ramp(1000, 2), looping(0, 1000), client);
    output.render(900);
    engine.setBuffer(ramp(1500, 2));
    EXPECT_EQ(output.render(200)[398], rampSample(1099)) << "what played to the end plays to the new one";

    play();
    engine.setBuffer(ramp(1000, 1));
    EXPECT_EQ(output.format().channels, 1);
    EXPECT_EQ(pass(1)[0], rampSample(300)) << "other channels, same place";
    EXPECT_TRUE(engine.isPlaying());

    for (const AudioEditorBuffer &last : {ramp(200, 2), ramp(1000, 2, 48000)}) {
        play();
        const int stops = client.stops;
        engine.setBuffer(last);
        EXPECT_EQ(client.stops, stops + 1) << "nothing left, or other moments";
        EXPECT_FALSE(engine.isPlaying());
    }
    engine.setBuffer(ramp(10));
    EXPECT_FALSE(engine.isPlaying()) << "an idle engine has no use for it";
}

TEST_F(PlaybackEngineTest, AClientMayStopFromWithinItsCalls) {
    struct Stopper : Listener {
        explicit Stopper(PlaybackEngine &e) : engine(e) {}
        void playbackPeak(float level) override {
            Listener::playbackPeak(level);
            engine.stop(this);
        }
        PlaybackEngine &engine;
    } stopper(engine);
    engine.play(ramp(100), looping(0, 100), stopper);
    pass(10);
    EXPECT_EQ(stopper.stops, 1);
    EXPECT_THAT(stopper.moved, IsEmpty());
}

EqTargets gain(double db, bool on = true) {
    EqSettings settings;
    settings.gainDb = db;
    return {settings, on};
}

AudioEditorBuffer constant(float level, std::int64_t channels) {
    return {std::vector<float>(std::size_t(20000 * channels), level), channels, 48000};
}

TEST_F(PlaybackEngineTest, TheEqualizerIsInForceFromTheFirstFrameAndGlidesToNewSettings) {
    PlaybackEngine::Request request = looping(0, 20000);
    request.eq = gain(-6);
    engine.play(constant(0.5f, 2), request, client);
    const float lowered = 0.5f * float(std::pow(10.0, -6.0 / 20));
    EXPECT_THAT(pass(100), Each(testing::FloatEq(lowered)));
    EXPECT_FLOAT_EQ(client.peaks.back(), lowered) << "the meter shows what is heard";
    engine.setEq(gain(-6, false), &client);
    const std::vector<float> glide = pass(4800);
    EXPECT_NEAR(glide[0], lowered, 0.01);
    for (std::size_t i = 1; i < glide.size(); ++i) ASSERT_LT(std::fabs(glide[i] - glide[i - 1]), 0.003);
    EXPECT_THAT(pass(100), Each(0.5f)) << "exact again";
    Listener stranger;
    engine.setEq(gain(-6), &stranger);
    EXPECT_THAT(pass(1000), Each(0.5f)) << "only who plays sets it";
    engine.setEq(gain(-6), &client);
    pass(4800);
    engine.setBuffer(constant(0.5f, 1));
    EXPECT_EQ(output.format().channels, 1);
    EXPECT_THAT(pass(100), Each(testing::FloatEq(lowered))) << "it goes on with other channels";
}

TEST_F(PlaybackEngineTest, TheAnalyzerHearsWhatGoesIntoTheEqualizerAndWhatComesOut) {
    PlaybackEngine::Request request = looping(0, 20000);
    request.eq = gain(-6);
    request.eqTap = true;
    engine.play(constant(0.5f, 2), request, client);
    std::vector<float> before(AnalyzerTap::blockFrames), after(AnalyzerTap::blockFrames);
    pass(4000);
    EXPECT_FALSE(engine.readAnalyzer(&client, before, after)) << "not yet a whole block";
    pass(1000);
    EXPECT_TRUE(engine.readAnalyzer(&client, before, after));
    EXPECT_THAT(before, Each(0.5f));
    EXPECT_THAT(after, Each(testing::FloatEq(0.5f * float(std::pow(10.0, -6.0 / 20)))));
    EXPECT_FALSE(engine.readAnalyzer(&client, before, after)) << "nothing new";
    engine.setEqTap(false, &client);
    pass(1000);
    EXPECT_FALSE(engine.readAnalyzer(&client, before, after)) << "nobody listens";
    engine.play(constant(0.5f, 2), request, client);
    pass(4000);
    engine.play(constant(0.5f, 2), request, client);
    pass(1000);
    EXPECT_FALSE(engine.readAnalyzer(&client, before, after)) << "what played before has no part in it";
}

}  // namespace
}  // namespace kiv
