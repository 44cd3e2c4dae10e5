#include "Platform/Linux/PulseAudioOutput.h"

#include <pthread.h>
#include <pulse/pulseaudio.h>
#include <sys/resource.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <stdexcept>
#include <utility>

namespace kiv {
namespace {

// 2048 frames at 44.1 kHz: short enough for a playhead and a Stop that feel immediate, long enough for a thread without
// real-time priority. The same time at every rate.
constexpr double wantedLatency = 2048.0 / 44100.0;
// Silence before the first frame. A server mixes ahead, up to a quarter of the latency asked for, and mixes that again when a
// stream begins to play in the midst of it; whoever listens on a monitor has had it already and would miss the beginning.
constexpr double leadIn = wantedLatency * 3 / 8;
constexpr pa_usec_t startTimeout = 1'800'000;
constexpr pa_usec_t timingInterval = 100'000;  // between questions where the server is; the library reckons on from there

std::runtime_error failure(const std::string &what, const pa_context *context) {
    return std::runtime_error(what + ": " + pa_strerror(pa_context_errno(context)));
}

pa_sample_spec specFor(const AudioOutput::Format &format) {
    if (format.sampleRate < 1 || format.sampleRate > std::int64_t(PA_RATE_MAX))
        throw std::runtime_error("the sound server plays rates of 1 to " + std::to_string(PA_RATE_MAX) + " Hz, not " +
                                 std::to_string(format.sampleRate) + " Hz");
    if (format.channels < 1 || format.channels > int(PA_CHANNELS_MAX))
        throw std::runtime_error("the sound server does not play " + std::to_string(format.channels) + " channels");
    return {PA_SAMPLE_FLOAT32NE, std::uint32_t(format.sampleRate), std::uint8_t(format.channels)};
}

pa_buffer_attr attributesFor(const pa_sample_spec &spec) {
    constexpr auto serverChooses = std::uint32_t(-1);
    const auto frames = std::max(std::uint32_t(wantedLatency * spec.rate), 16u);
    return {serverChooses, frames * std::uint32_t(pa_frame_size(&spec)), serverChooses, serverChooses, serverChooses};
}

// So that a busy machine, or the program's own background work, does not tear holes in the sound. Where the system's limits
// allow neither, the thread runs as any other.
void askForPriority(pa_mainloop_api *, void *) {
    const sched_param lowest{.sched_priority = 1};
    constexpr int niceness = -11;
    if (pthread_setschedparam(pthread_self(), SCHED_RR, &lowest) != 0) setpriority(PRIO_PROCESS, 0, niceness);
}

void forget(pa_operation *operation) {
    if (operation) pa_operation_unref(operation);
}

}  // namespace

// One stream and the thread that serves it. Every member is used by that thread's callbacks, and by the main thread under the
// loop's lock or when the thread has ended.
class PulseAudioOutput::Connection {
public:
    using Notice = std::function<void(const std::string &reason)>;

    Connection(Render render, Notice died)
        : loop_(pa_threaded_mainloop_new()), render_(std::move(render)), died_(std::move(died)) {}
    ~Connection();
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;

    void open(const Format &format);
    void resume();
    void pause();
    double latencySeconds() const { return latency_.load(std::memory_order_relaxed); }

private:
    void connect();
    void openStream(const Format &format);
    template <class IsReady>
    void waitUntil(IsReady isReady);
    void stateChanged();
    void fill(std::size_t bytes);
    void renderInto(std::span<float> out);
    void askForTiming();
    void measureLatency();

    void lock() { pa_threaded_mainloop_lock(loop_); }
    void unlock() { pa_threaded_mainloop_unlock(loop_); }
    friend class std::lock_guard<Connection>;

    pa_threaded_mainloop *loop_;
    pa_context *context_ = nullptr;
    pa_stream *stream_ = nullptr;
    Render render_;
    Notice died_;
    std::atomic<double> latency_{wantedLatency};
    bool timedOut_ = false;
    bool opened_ = false;  // from then on a failure is a death, told once
    bool paused_ = true;
    pa_usec_t nextTiming_ = 0;       // when to ask the server again where it is
    std::size_t silentSamples_ = 0;  // of the lead-in, still to be sent
};

// With its thread ended nothing else runs, and the server drops the stream and what it had queued with the connection.
PulseAudioOutput::Connection::~Connection() {
    if (!loop_) return;
    pa_threaded_mainloop_stop(loop_);
    if (stream_) {
        pa_stream_set_state_callback(stream_, nullptr, nullptr);
        pa_stream_set_write_callback(stream_, nullptr, nullptr);
        pa_stream_disconnect(stream_);
        pa_stream_unref(stream_);
    }
    if (context_) {
        pa_context_set_state_callback(context_, nullptr, nullptr);
        pa_context_disconnect(context_);
        pa_context_unref(context_);
    }
    pa_threaded_mainloop_free(loop_);
}

void PulseAudioOutput::Connection::open(const Format &format) {
    specFor(format);  // refused before anything is asked of the server
    if (!loop_ || pa_threaded_mainloop_start(loop_) < 0) throw std::runtime_error("no thread for the sound output");
    const std::lock_guard held(*this);
    pa_mainloop_api_once(pa_threaded_mainloop_get_api(loop_), askForPriority, nullptr);
    connect();
    openStream(format);
    opened_ = true;
}

void PulseAudioOutput::Connection::connect() {
    context_ = pa_context_new(pa_threaded_mainloop_get_api(loop_), "Kiv Audio Editor");
    if (!context_) throw std::runtime_error("no connection to the sound server");
    pa_context_set_state_callback(
        context_, [](pa_context *, void *self) { static_cast<Connection *>(self)->stateChanged(); }, this);
    if (pa_context_connect(context_, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0)
        throw failure("the sound server cannot be reached", context_);
    pa_context_rttime_new(
        context_, pa_rtclock_now() + startTimeout,
        [](pa_mainloop_api *, pa_time_event *, const timeval *, void *self) {
            static_cast<Connection *>(self)->timedOut_ = true;
            static_cast<Connection *>(self)->stateChanged();
        },
        this);
    waitUntil([this] {
        const auto state = pa_context_get_state(context_);
        if (!PA_CONTEXT_IS_GOOD(state)) throw failure("the sound server cannot be reached", context_);
        return state == PA_CONTEXT_READY;
    });
}

void PulseAudioOutput::Connection::openStream(const Format &format) {
    const pa_sample_spec spec = specFor(format);
    const pa_buffer_attr attributes = attributesFor(spec);
    stream_ = pa_stream_new(context_, "Playback", &spec, nullptr);
    if (!stream_) throw failure("the sound server refuses the format", context_);
    pa_stream_set_state_callback(
        stream_, [](pa_stream *, void *self) { static_cast<Connection *>(self)->stateChanged(); }, this);
    pa_stream_set_write_callback(
        stream_, [](pa_stream *, std::size_t bytes, void *self) { static_cast<Connection *>(self)->fill(bytes); }, this);
    const auto flags = pa_stream_flags_t(PA_STREAM_START_CORKED | PA_STREAM_ADJUST_LATENCY | PA_STREAM_INTERPOLATE_TIMING);
    const char *device = format.device.empty() ? nullptr : format.device.c_str();
    if (pa_stream_connect_playback(stream_, device, &attributes, flags, nullptr, nullptr) < 0)
        throw failure("the output device cannot be opened", context_);
    waitUntil([this] {
        const auto state = pa_stream_get_state(stream_);
        if (!PA_STREAM_IS_GOOD(state)) throw failure("the output device cannot be opened", context_);
        return state == PA_STREAM_READY;
    });
}

template <class IsReady>
void PulseAudioOutput::Connection::waitUntil(IsReady isReady) {
    while (!isReady()) {
        if (timedOut_) throw std::runtime_error("the sound server does not answer");
        pa_threaded_mainloop_wait(loop_);
    }
}

// Wakes an open() that waits; afterwards finds out whether the connection is dead.
void PulseAudioOutput::Connection::stateChanged() {
    pa_threaded_mainloop_signal(loop_, 0);
    if (!opened_ || (PA_CONTEXT_IS_GOOD(pa_context_get_state(context_)) && PA_STREAM_IS_GOOD(pa_stream_get_state(stream_))))
        return;
    paused_ = true;
    const int error = pa_context_errno(context_);
    if (const Notice died = std::exchange(died_, nullptr)) died(error ? pa_strerror(error) : "the connection was ended");
}

void PulseAudioOutput::Connection::resume() {
    const std::lock_guard held(*this);
    if (!paused_) return;
    paused_ = false;
    const pa_sample_spec &spec = *pa_stream_get_sample_spec(stream_);
    silentSamples_ = std::size_t(leadIn * spec.rate) * spec.channels;
    const std::size_t writable = pa_stream_writable_size(stream_);
    if (writable != std::size_t(-1)) fill(writable);
    forget(pa_stream_cork(stream_, 0, nullptr, nullptr));
    nextTiming_ = 0;  // it moves again
}

void PulseAudioOutput::Connection::pause() {
    const std::lock_guard held(*this);
    if (paused_) return;
    paused_ = true;
    forget(pa_stream_cork(stream_, 1, nullptr, nullptr));
    forget(pa_stream_flush(stream_, nullptr, nullptr));
}

// Renders what the server asks for, straight into the memory it is sent from. While paused the request stays open.
void PulseAudioOutput::Connection::fill(std::size_t bytes) {
    if (paused_) return;
    const std::size_t frame = pa_frame_size(pa_stream_get_sample_spec(stream_));
    while (bytes >= frame) {
        void *memory = nullptr;
        std::size_t size = bytes;
        if (pa_stream_begin_write(stream_, &memory, &size) < 0 || !memory) return;
        size = std::min(size, bytes) / frame * frame;
        renderInto({static_cast<float *>(memory), size / sizeof(float)});
        if (pa_stream_write(stream_, memory, size, nullptr, 0, PA_SEEK_RELATIVE) < 0 || size == 0) return;
        bytes -= size;
    }
    askForTiming();
    measureLatency();
}

// The library would ask on its own, but it does not stop when nothing plays.
void PulseAudioOutput::Connection::askForTiming() {
    const pa_usec_t now = pa_rtclock_now();
    if (now < nextTiming_) return;
    nextTiming_ = now + timingInterval;
    forget(pa_stream_update_timing_info(stream_, nullptr, nullptr));
}

void PulseAudioOutput::Connection::renderInto(std::span<float> out) {
    const std::size_t silent = std::min(silentSamples_, out.size());
    std::fill_n(out.begin(), silent, 0.0f);
    silentSamples_ -= silent;
    if (silent < out.size()) render_(out.subspan(silent));
}

void PulseAudioOutput::Connection::measureLatency() {
    pa_usec_t microseconds = 0;
    int negative = 0;
    if (pa_stream_get_latency(stream_, &microseconds, &negative) < 0 || negative) return;
    latency_.store(double(microseconds) / 1e6, std::memory_order_relaxed);
}

PulseAudioOutput::PulseAudioOutput(MainLoop &mainLoop) : mainLoop_(mainLoop) {}

PulseAudioOutput::~PulseAudioOutput() { stop(); }

void PulseAudioOutput::start(const Format &format, Render render) {
    stop();
    current_ = std::make_shared<int>();
    const auto died = [this, current = std::weak_ptr<int>(current_)](const std::string &reason) {
        mainLoop_.post([this, current, reason] {
            if (!current.expired()) this->died(reason);
        });
    };
    auto connection = std::make_unique<Connection>(std::move(render), died);
    connection->open(format);
    connection_ = std::move(connection);
}

void PulseAudioOutput::resume() {
    if (connection_) connection_->resume();
}

void PulseAudioOutput::pause() {
    if (connection_) connection_->pause();
}

void PulseAudioOutput::stop() {
    current_.reset();
    connection_.reset();
}

double PulseAudioOutput::latencySeconds() const { return connection_ ? connection_->latencySeconds() : 0; }

void PulseAudioOutput::died(const std::string &reason) {
    stop();
    if (onLost) onLost(reason);
}

}  // namespace kiv
