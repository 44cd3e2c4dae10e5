#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>

// Folders, child processes and file systems for tests that need real ones.
namespace kiv {

// A folder that everybody may enter, gone with the object.
class TestFolder {
public:
    explicit TestFolder(const std::filesystem::path &parent = std::filesystem::temp_directory_path()) {
        std::string name = (parent / "kiv-test-XXXXXX").string();
        if (!mkdtemp(name.data())) throw std::runtime_error("no folder for tests");
        path_ = name;
        chmod(path_.c_str(), 0777);
    }
    ~TestFolder() {
        chmod(path_.c_str(), 0777);
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TestFolder(const TestFolder &) = delete;
    TestFolder &operator=(const TestFolder &) = delete;

    const std::string &path() const { return path_; }
    std::string operator/(const std::string &name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

inline void writeText(const std::string &path, const std::string &text) { std::ofstream(path, std::ios::binary) << text; }

inline std::string readText(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

inline std::vector<std::string> namesIn(const std::string &folder) {
    std::vector<std::string> names;
    for (const auto &entry : std::filesystem::directory_iterator(folder)) names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}

// Runs a part of a test in a process of its own, whose failures count.
inline void inChild(const std::function<void()> &body) {
    std::cout.flush();
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        try {
            body();
        } catch (const std::exception &error) {
            ADD_FAILURE() << "thrown: " << error.what();
        }
        std::cout.flush();
        std::_Exit(testing::Test::HasFailure() ? 1 : 0);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "see above for what failed in the child process";
}

// Root, and who has entered a namespace, passes all permission checks: becomes a user who does not.
inline void becomeNobody() {
    if (geteuid() == 0) {
        ASSERT_EQ(setresgid(65534, 65534, 65534), 0);
        ASSERT_EQ(setresuid(65534, 65534, 65534), 0);
    }
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct none[2]{};
    ASSERT_EQ(syscall(SYS_capset, &header, none), 0) << std::strerror(errno);
}

// Lets the calling process mount file systems that only it sees. To be called in a child.
inline void enterMountNamespace() {
    const uid_t user = getuid();
    const gid_t group = getgid();
    if (user == 0) {
        ASSERT_EQ(unshare(CLONE_NEWNS), 0) << std::strerror(errno);
    } else {
        ASSERT_EQ(unshare(CLONE_NEWUSER | CLONE_NEWNS), 0) << std::strerror(errno);
        writeText("/proc/self/setgroups", "deny");
        writeText("/proc/self/uid_map", std::to_string(user) + " " + std::to_string(user) + " 1");
        writeText("/proc/self/gid_map", std::to_string(group) + " " + std::to_string(group) + " 1");
    }
    ASSERT_EQ(mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr), 0) << std::strerror(errno);
}

inline void mountMemory(const std::string &folder, const std::string &options) {
    ASSERT_EQ(mount("none", folder.c_str(), "tmpfs", 0, options.c_str()), 0) << std::strerror(errno);
}

}  // namespace kiv
