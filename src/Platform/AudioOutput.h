#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>

namespace kiv {

// A stream of sound to the output device. Main thread, but for the render callback.
class AudioOutput {
public:
    virtual ~AudioOutput() = default;

    struct Format {
        std::int64_t sampleRate = 44100;
        int channels = 2;
        std::string device;  // empty: the system's default output
        friend bool operator==(const Format &, const Format &) = default;
    };

    // Fills interleaved frames (out.size() / channels of them). Called on a thread of the output's own, or within resume(), and
    // never twice at a time: it must not allocate, block or log.
    using Render = std::function<void(std::span<float> out)>;

    // Opens the device, paused. Throws std::runtime_error when it cannot; returns within 2 seconds. Must be stopped.
    virtual void start(const Format &format, Render render) = 0;
    // Begins to call `render`, which goes on until pause() or stop(). Costs a few milliseconds at most, as does pausing.
    virtual void resume() = 0;
    // Falls silent at once: what was rendered and is not heard yet is thrown away. No call to `render` is under way or follows
    // when it returns. A paused stream keeps the device ready and takes no processor time.
    virtual void pause() = 0;
    // Ends the stream at once; no call to `render` is under way or follows when it returns. Resuming, pausing and stopping
    // what is not running do nothing.
    virtual void stop() = 0;
    virtual bool isRunning() const = 0;  // between start and stop, paused or not
    // How long after its rendering a frame is heard, in seconds. An estimate until the stream has played for a moment.
    virtual double latencySeconds() const = 0;

    // Called on the main thread when a running stream has died or its device has changed: it is stopped already.
    std::function<void(const std::string &reason)> onLost;
};

}  // namespace kiv
