#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include "Audio/Playback/RenderState.h"
#include "Editor/AudioEditorCore/AudioEditorBuffer.h"
#include "Editor/AudioEditorCore/AudioEditorLengthChange.h"
#include "Platform/AudioOutput.h"
#include "Platform/MainLoop.h"
#include "Platform/SystemLog.h"

namespace kiv {

// Plays a range of a sound, once or looping, and reports where it is. One for the program, shared by all documents; the
// document that starts playback is its client. Main thread only; the samples are rendered on the output's thread by
// RenderState.
class PlaybackEngine {
public:
    // What the engine needs of the document that plays.
    class Client {
    public:
        virtual ~Client() = default;
        virtual void playbackPeak(float level) = 0;    // largest absolute sample since the last call
        virtual void playbackMoved(double frame) = 0;  // the frame being heard
        virtual void playbackStopped() = 0;            // also when it never started
    };

    struct Request {
        FrameRange range;
        std::int64_t start = 0;
        bool loop = false;
        std::int64_t crossfade = 0;  // frames of the loop joint; 0: none
        bool equalPower = false;
        std::int64_t fadeIn = 0, fadeOut = 0;  // frames at the range's ends
        EqTargets eq = {};                     // in force from the first frame
        bool eqTap = false;                    // feed the analyzer
    };

    PlaybackEngine(AudioOutput &output, MainLoop &mainLoop, SystemLog &log);
    ~PlaybackEngine();

    // Stops what plays and starts this. When the output cannot be opened, a line goes to the log and the client is told that
    // playback has stopped, as it is when the range holds nothing of the sound. A start before the range plays up to it and on;
    // one at or behind its end plays nothing, or loops from its beginning. The client must stop or outlive its playback.
    void play(const AudioEditorBuffer &buffer, const Request &request, Client &client);
    // Stops if this client plays (without one: whoever plays).
    void stop(const Client *client = nullptr);
    bool isPlaying(const Client *client = nullptr) const;

    // Changes the running playback without a gap: loop on or off, and the joint's crossfade.
    void setLoop(bool loop);
    void updateLoop(std::int64_t crossfade, bool equalPower);
    // Changes the equalizer of the running playback of this client: it glides there.
    void setEq(const EqTargets &targets, const Client *client);
    void setEqTap(bool feeds, const Client *client);
    // The newest AnalyzerTap::blockFrames samples before and after the equalizer, mixed to one channel. False when there is
    // nothing new.
    bool readAnalyzer(const Client *client, std::span<float> before, std::span<float> after);
    // The sound was edited while it plays: goes on with the new samples. The place and the range move along with the audio, a
    // range that reached the end of the sound goes on reaching it. Stops when nothing is left or when the rate is another, so
    // that the positions mean other moments.
    void setBuffer(const AudioEditorBuffer &buffer, const AudioEditorLengthChange &change = {});

private:
    // How playing ends: at once, or after what is rendered has been heard.
    enum class Ending { cut, heard };

    FrameRange moveRange(const AudioEditorLengthChange &change, std::int64_t frames) const;
    bool open(const AudioOutput::Format &format);
    void prepare(const AudioOutput::Format &format);
    void begin(State state, Client &client);
    void end(Ending ending);
    void tick();
    void lost(const std::string &reason);
    void tearDown();
    void reportFailure(const std::string &error);
    void measureLatency();
    void exchangeState(State &state);
    std::optional<EqProcessor> makeEq(const AudioOutput::Format &format) const;
    float takePeak();
    std::int64_t heardFrame(std::int64_t rendered) const;

    AudioOutput &output_;
    MainLoop &mainLoop_;
    SystemLog &log_;
    std::shared_ptr<RenderShared> shared_;
    Client *client_ = nullptr;
    Subscription timer_, idlePause_, idleTeardown_;
    std::optional<AudioOutput::Format> format_;  // of the running stream
    std::int64_t latencyFrames_ = 0;
    std::int64_t soundFrames_ = 0, startFrame_ = 0, rangeLower_ = 0, rangeUpper_ = 0, lastRendered_ = 0;
    EqTargets eqTargets_;
    bool wrapped_ = false;
    bool isPlaying_ = false;
};

}  // namespace kiv
