#pragma once

#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace kiv {

// Waits on the real clock. False: it did not come true in time.
inline bool waitFor(const std::function<bool()> &condition, std::chrono::milliseconds atMost = std::chrono::seconds(10)) {
    const auto end = std::chrono::steady_clock::now() + atMost;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

// A program that ends with its owner, also when the test dies.
class ChildProcess {
public:
    ChildProcess(std::vector<std::string> arguments, const std::filesystem::path &output) {
        std::vector<char *> argv;
        for (std::string &argument : arguments) argv.push_back(argument.data());
        argv.push_back(nullptr);
        id_ = fork();
        if (id_ != 0) return;
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        const int file = open(output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        dup2(file, 1);
        dup2(file, 2);
        execvp(argv[0], argv.data());
        _exit(127);
    }
    ~ChildProcess() { end(); }
    ChildProcess(const ChildProcess &) = delete;
    ChildProcess &operator=(const ChildProcess &) = delete;

    void tell(int signal) { kill(id_, signal); }
    void end() {
        if (id_ <= 0) return;
        kill(id_, SIGKILL);
        waitpid(id_, nullptr, 0);
        id_ = 0;
    }

private:
    pid_t id_ = 0;
};

// A sound server of the test's own with one device that plays to nowhere, "null", and a recorder that hears what it plays. For
// as long as this lives it is the server that programs find, and after end() they find none.
class PulseServer {
public:
    PulseServer() : folder_(makeFolder()) {
        setenv("XDG_RUNTIME_DIR", folder_.c_str(), 1);
        setenv("HOME", folder_.c_str(), 1);
        setenv("PULSE_SERVER", ("unix:" + (folder_ / "native").string()).c_str(), 1);
    }
    ~PulseServer() {
        end();
        std::filesystem::remove_all(folder_);
    }

    // Nothing to do while it runs.
    void start() {
        if (accepts(folder_ / "native")) return;
        end();
        server_ = std::make_unique<ChildProcess>(
            std::vector<std::string>{"pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1", "--use-pid-file=no", "-L",
                                     "module-native-protocol-unix socket=" + (folder_ / "native").string(), "-L",
                                     "module-null-sink sink_name=null rate=44100 format=float32le channels=2"},
            folder_ / "server.log");
        if (!waitFor([&] { return accepts(folder_ / "native"); })) throw std::runtime_error("pulseaudio does not start");
        startRecorder();
    }
    // Dies at once; the recorder with it.
    void end() {
        server_.reset();
        recorder_.reset();
        std::filesystem::remove(folder_ / "heard");
    }
    void freeze() { server_->tell(SIGSTOP); }

    // All that the device has played up to now: stereo frames.
    std::vector<float> heard() const {
        std::ifstream file(folder_ / "heard", std::ios::binary);
        const auto size = std::filesystem::file_size(folder_ / "heard") / 8 * 8;
        std::vector<float> samples(size / sizeof(float));
        file.read(reinterpret_cast<char *>(samples.data()), std::streamsize(size));
        return samples;
    }

private:
    void startRecorder() {
        // A device that nobody listens to sleeps up to 2 seconds before it takes anything: so the recorder comes first.
        recorder_ =
            std::make_unique<ChildProcess>(std::vector<std::string>{"parec", "-d", "null.monitor", "--format=float32le",
                                                                    "--rate=44100", "--channels=2", "--latency-msec=20"},
                                           folder_ / "heard");
        if (!waitFor([&] { return std::filesystem::exists(folder_ / "heard") && !heard().empty(); }))
            throw std::runtime_error("nothing is recorded");
    }
    static bool accepts(const std::filesystem::path &path) {
        sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
        path.string().copy(address.sun_path, sizeof address.sun_path - 1);
        const int file = socket(AF_UNIX, SOCK_STREAM, 0);
        const bool accepted = connect(file, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
        close(file);
        return accepted;
    }
    static std::filesystem::path makeFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "kiv-sound-XXXXXX").string();
        if (!mkdtemp(name.data())) throw std::runtime_error("no temporary folder");
        return name;
    }

    std::filesystem::path folder_;
    std::unique_ptr<ChildProcess> server_, recorder_;
};

}  // namespace kiv
