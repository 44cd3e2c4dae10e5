#include <gmock/gmock.h>
#include <sys/mman.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <random>

#include "Platform/InPlaceReplace.h"
#include "Platform/Linux/LinuxFileSystem.h"
#include "Platform/Linux/World.h"
#include "Platform/SafeReplace.h"

namespace kiv {
namespace {

using Clock = std::chrono::steady_clock;

// What the processes that get killed leave to be counted.
struct Counts {
    std::atomic<int> started{0}, saved{0}, restored{0}, broken{0}, microseconds{0};  // the last: of one save
};

Counts &sharedCounts() {
    void *memory = mmap(nullptr, sizeof(Counts), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    return *new (memory) Counts;
}

// A file that tells whether it is whole: its length follows from its first byte, and all bytes are that one.
std::string take(unsigned number) { return std::string(300'000 + number % 256 * 2503, char(number)); }

bool isWhole(const std::string &text) { return !text.empty() && text == take(static_cast<unsigned char>(text[0])); }

void saveForEver(const std::string &path, Counts &counts, std::size_t blockBytes) {
    LinuxFileSystem fileSystem;
    counts.restored += recoverInPlace(fileSystem, path) == Files::Recovery::restored;
    std::string text = readText(path);
    counts.broken += !isWhole(text);
    ++counts.started;
    for (;; ++counts.saved) {
        const auto begin = Clock::now();
        text = take(static_cast<unsigned char>(text[0]) + 1);
        replaceSafely(
            fileSystem, path, [&](ByteSink &sink) { sink.write(std::as_bytes(std::span(text))); }, blockBytes);
        counts.microseconds = int(std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - begin).count());
    }
}

void waitFor(const std::atomic<int> &count, int atLeast) {
    for (const auto end = Clock::now() + std::chrono::seconds(20); count < atLeast && Clock::now() < end;) usleep(50);
}

// Starts a program that saves again and again and kills it at any moment, many times. Returns how many.
int killMany(const std::string &path, Counts &counts, std::size_t blockBytes, const std::function<void()> &eachTime) {
    std::mt19937 random(7);
    int kills = 0;
    const auto end = Clock::now() + std::chrono::seconds(5);
    for (; kills < 300 && (Clock::now() < end || kills < 30) && counts.broken == 0; ++kills) {
        const pid_t child = fork();
        if (child == 0) {
            becomeNobody();
            saveForEver(path, counts, blockBytes);
        }
        waitFor(counts.started, kills + 1);
        if (kills == 0) waitFor(counts.saved, 2);
        usleep(random() % unsigned(2 * counts.microseconds + 1));
        kill(child, SIGKILL);
        int status = 0;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << "it ended by itself";
        eachTime();
    }
    EXPECT_EQ(counts.broken, 0);
    EXPECT_EQ(counts.started, kills);
    return kills;
}

// Memory, where syncing costs nothing, so that most of the time is spent writing.
const char *memoryFolder() { return access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp"; }

class KilledSave : public testing::Test {
protected:
    KilledSave() {
        setenv("XDG_STATE_HOME", state.path().c_str(), 1);
        writeText(path, take(1));
        chmod(path.c_str(), 0666);
    }

    TestFolder folder{memoryFolder()}, state{memoryFolder()};
    const std::string path = folder / "song.wav";
    Counts &counts = sharedCounts();
};

TEST_F(KilledSave, leaves_a_whole_file_and_at_most_one_temporary_one) {
    int leftovers = 0;
    const int kills = killMany(path, counts, 1 << 20, [&] {
        ASSERT_TRUE(isWhole(readText(path)));
        const auto names = namesIn(folder.path());
        ASSERT_LE(names.size(), 2u);
        leftovers += names.size() == 2;
    });
    EXPECT_GT(leftovers, kills / 20) << "the kills came too late or too early to say anything";
    EXPECT_EQ(counts.restored, 0);
    LinuxFileSystem fileSystem;
    replaceSafely(fileSystem, path, [](ByteSink &) {});
    EXPECT_THAT(namesIn(folder.path()), testing::ElementsAre("song.wav"));
}

TEST_F(KilledSave, in_place_leaves_a_file_that_is_whole_once_recovered) {
    chmod(folder.path().c_str(), 0555);
    const int kills = killMany(path, counts, 512, [] {});  // small blocks, so that much of the time is spent writing over
    EXPECT_GT(counts.restored, kills / 40) << "the kills came too late or too early to say anything";
    chmod(folder.path().c_str(), 0777);
}

}  // namespace
}  // namespace kiv
