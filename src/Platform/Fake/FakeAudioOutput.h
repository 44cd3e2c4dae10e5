#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "Platform/AudioOutput.h"

namespace kiv {

// An output without a device: it renders when it is told to. `render` may be called on a thread of its own, like a device's;
// all else belongs to the main thread.
class FakeAudioOutput : public AudioOutput {
public:
    void start(const Format &format, Render render) override;
    void resume() override;
    void pause() override;
    void stop() override;
    bool isRunning() const override { return running_; }
    double latencySeconds() const override { return latency; }

    // The next frames the device takes: silence while it is paused or stopped.
    std::vector<float> render(std::int64_t frames);
    // The same into memory of the caller's, whole frames, without allocating. False: paused or stopped, nothing was rendered.
    bool renderInto(std::span<float> out);
    // The running stream dies, as when a device is pulled out.
    void lose(const std::string &reason);

    std::string failure;  // not empty: starting fails with this text
    double latency = 0;   // seconds
    int starts = 0;       // how often a stream was opened
    int pauses = 0;       // how often it was told to fall silent
    bool isPaused() const { return running_ && paused_; }
    const Format &format() const { return format_; }  // of the last stream

private:
    std::mutex mutex_;  // held while rendering, so that pausing and stopping wait for it
    Render render_;
    Format format_;
    bool running_ = false;
    bool paused_ = false;
};

}  // namespace kiv
