#pragma once

#include <memory>
#include <string>

#include "Platform/AudioOutput.h"
#include "Platform/MainLoop.h"

namespace kiv {

// Sound through a PulseAudio server, or another one that speaks its protocol: 32-bit floats at the stream's own rate, which
// the server converts to the device's. A server is used where it runs, never started. When the user moves a playing stream to
// another device it goes on there.
class PulseAudioOutput : public AudioOutput {
public:
    explicit PulseAudioOutput(MainLoop &mainLoop);
    ~PulseAudioOutput() override;

    void start(const Format &format, Render render) override;
    void resume() override;
    void pause() override;
    void stop() override;
    bool isRunning() const override { return connection_ != nullptr; }
    double latencySeconds() const override;

private:
    class Connection;

    void died(const std::string &reason);

    MainLoop &mainLoop_;
    std::unique_ptr<Connection> connection_;
    std::shared_ptr<int> current_;  // held weakly by the notices of the running connection: an older one's are not heard
};

}  // namespace kiv
