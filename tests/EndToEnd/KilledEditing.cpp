// Kills a program that edits and saves, again and again at any moment, and looks each time what it has left: whether the file
// is whole, and whether an edit is lost that was finished long enough before. The program is all of the editor but its window,
// on real files, in a process of its own; what it did it tells in shared memory, which outlives it.
//
// usage: kiv_killed_editing FOLDER KILLS SEED

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>

#include "Document/AudioDocument.h"
#include "Document/DocumentWorld.h"
#include "Editor/AudioEditorModel/AudioEditorEdits.h"
#include "Platform/Fake/FakeDefaults.h"
#include "Platform/Fake/FakeMainLoop.h"
#include "Platform/Linux/LinuxFileSystem.h"
#include "Platform/ThreadJobs.h"
#include "Support/ByteDigest.h"

namespace kiv {
namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

// An edit that is as old as this may not be lost.
constexpr auto delay = 500ms;

struct Shared {
    struct Done {
        std::uint64_t digest;  // of the document
        Clock::time_point when;
    };
    std::atomic<bool> started{false};
    std::atomic<int> done{0};
    std::atomic<int> safe{0};              // the last of which the editor has said itself that it cannot be lost
    std::atomic<int> saved{0}, saving{0};  // which is in the file, and which may be
    std::atomic<Clock::time_point> killedAt{};
    std::atomic<int> saves{0}, restored{0}, fromFile{0}, damaged{0}, lost{0}, twice{0};
    Done all[1 << 20];
};

std::uint64_t digestOf(const AudioEditorState &state) {
    ByteDigest digest;
    const auto add = [&](std::int64_t number) { digest.add(std::as_bytes(std::span(&number, 1))); };
    state.buffer.forEachSpan({0, state.buffer.frames()}, [&](auto samples, FrameRange) { digest.add(std::as_bytes(samples)); });
    for (const std::int64_t marker : state.markerFrames) add(marker);
    const FrameRange loop = state.loopPoints.value_or(FrameRange{-1, -1});
    add(loop.lo), add(loop.hi);
    return digest.value();
}

class SilentUi : public DocumentUi {
public:
    void ask(const Question &question, std::function<void(std::size_t)>) override { fail(question.message); }
    void showError(const std::string &message, const std::string &informative) override { fail(message + ": " + informative); }
    void showNotice(NoticeKind kind, const std::string &text) override {
        if (kind == NoticeKind::warning) fail(text);
    }
    [[noreturn]] static void fail(const std::string &text) {
        std::fprintf(stderr, "it said: %s\n", text.c_str());
        std::_Exit(1);
    }
};

// The program that is killed.
class Program {
public:
    Program(const std::string &path, const std::string &journals, bool copies, Shared &shared, unsigned seed)
        : path_(path), folder_{fileSystem_, journals}, shared_(shared), random_(seed) {
        if (!copies) folder_.longestCopy = 0;
    }

    [[noreturn]] void run() {
        check();
        shared_.started = true;
        for (;;) {
            const int chance = int(random_() % 100);
            if (chance < 6)
                save();
            else
                edit();
            if (chance % 5 == 0) loop_.waitForPosts(std::chrono::milliseconds(random_() % 15));
            loop_.runPosts();
        }
    }

private:
    void wait(const bool &done) {
        while (!done) loop_.waitForPosts();
    }
    void open() {
        bool done = false;
        document_.open(path_, [&](const std::string &error) { error.empty() ? void(done = true) : damaged(error); });
        wait(done);
    }
    [[noreturn]] void damaged(const std::string &error) {
        ++shared_.damaged;
        SilentUi::fail(error);
    }

    // What the one before has left.
    void check() {
        auto found = findAbandonedJournals(folder_);
        open();
        if (shared_.done > 0) checkFile();
        shared_.twice += found.size() > 1;
        std::ranges::sort(found, std::greater(), &AbandonedJournal::writtenAt);
        for (std::size_t i = 1; i < found.size(); ++i) discardJournal(folder_, found[i]);
        if (found.empty())
            ++shared_.fromFile;
        else
            restore(std::make_shared<AbandonedJournal>(std::move(found[0])));
        if (shared_.done > 0) checkEdits();
        note();
        shared_.safe = shared_.done - 1;
    }
    void checkFile() {
        const std::uint64_t inFile = digestOf(document_.model().state());
        if (inFile == shared_.all[shared_.saving].digest) shared_.saved = shared_.saving.load();
        if (inFile != shared_.all[shared_.saved].digest) damaged("the file is neither the old nor the new one");
    }
    // Whether it is as it was after the last edit that may not be lost, or after a later one.
    void checkEdits() {
        int least = shared_.safe;
        while (least + 1 < shared_.done && shared_.all[least + 1].when <= shared_.killedAt.load() - delay) ++least;
        const std::uint64_t now = digestOf(document_.model().state());
        const auto *end = shared_.all + shared_.done;
        if (std::any_of(static_cast<const Shared::Done *>(shared_.all) + least, end,
                        [&](auto &done) { return done.digest == now; }))
            return;
        std::fprintf(stderr, "edit %d of %d is lost, said to be safe up to %d\n", least, shared_.done.load(),
                     shared_.safe.load());
        ++shared_.lost;
    }
    void restore(std::shared_ptr<AbandonedJournal> journal) {
        bool done = false;
        document_.restore(journal, [&](const std::string &error) {
            if (!error.empty()) std::fprintf(stderr, "not restored: %s\n", error.c_str());
            shared_.lost += !error.empty();
            done = true;
        });
        wait(done);
        ++shared_.restored;
    }
    void note() {
        shared_.all[shared_.done] = {digestOf(document_.model().state()), Clock::now()};
        ++shared_.done;
    }

    void edit() {
        AudioEditorModel &model = document_.model();
        {
            const AudioEditorModel::Batch batch(model);  // the journal hears of it when it has been noted here
            const auto version = model.state().contentVersion;
            changeSomething(model);
            if (model.state().contentVersion == version) return;
            note();
        }
        document_.flushJournal([this, mine = shared_.done - 1] { shared_.safe = std::max(shared_.safe.load(), mine); });
    }
    void changeSomething(AudioEditorModel &model) {
        const std::int64_t frames = model.state().buffer.frames(), lo = std::int64_t(random_() % std::uint64_t(frames - 1));
        model.select({lo, std::min(frames, lo + 1 + std::int64_t(random_() % 20'000))});
        using namespace AudioEditorEdits;
        switch (random_() % 8) {
            case 0:
                return gain(model, -1);
            case 1:
                return reverse(model);
            case 2:
                return frames > 100'000 ? cut(model) : paste(model);
            case 3:
                return paste(model);
            case 4:
                return model.commitLoop(FrameRange{lo, lo + 100});
            case 5:
                return model.undo();
            case 6:
                return model.redo();
            default:
                return fadeOut(model);
        }
    }
    void save() {
        const int which = shared_.done - 1;
        shared_.saving = which;
        bool done = false;
        document_.save([&](bool isSaved) {
            if (isSaved) shared_.saved = which, ++shared_.saves;
            done = true;
        });
        while (!done) {
            loop_.waitForPosts(1ms);
            if (random_() % 4 == 0) edit();
        }
    }

    std::string path_;
    LinuxFileSystem fileSystem_;
    JournalFolder folder_;
    Shared &shared_;
    std::mt19937 random_;
    std::unique_ptr<Files> files_ = makeFiles(fileSystem_);
    FakeDefaults defaults_;
    Settings settings_{defaults_};
    Clipboard clipboard_;
    FakeMainLoop loop_;
    ThreadJobs jobs_{loop_};
    SilentUi ui_;
    AudioDocument document_{{*files_, jobs_, settings_, clipboard_, nullptr, nullptr, Peaks::kept, &folder_}, ui_};
};

// 32-bit floats, so that what is saved is what was edited.
void writeSound(const std::string &path) {
    std::vector<float> samples(400'000);
    for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = float(i % 4999) / 5000;
    const std::string fmt =
        Wav::le(3, 2) + Wav::le(2, 2) + Wav::le(44100, 4) + Wav::le(44100 * 8, 4) + Wav::le(8, 2) + Wav::le(32, 2);
    const std::string data(reinterpret_cast<const char *>(samples.data()), samples.size() * sizeof(float));
    const std::string body =
        "WAVE" + Wav::chunk("fmt ", fmt) + Wav::chunk("data", data) + Wav::cue({500, 90'000}) + Wav::smpl(1000, 8999);
    std::ofstream(path, std::ios::binary) << "RIFF" << Wav::le(std::uint32_t(body.size()), 4) << body;
}

bool hasEnded(pid_t child) {
    siginfo_t info{};
    return waitid(P_PID, id_t(child), &info, WEXITED | WNOHANG | WNOWAIT) == 0 && info.si_pid == child;
}

int killMany(const std::string &folder, int kills, unsigned seed) {
    const std::string path = folder + "/sound.wav", journals = folder + "/journals";
    std::filesystem::create_directories(folder);
    writeSound(path);
    void *memory = mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    Shared &shared = *new (memory) Shared;
    std::mt19937 random(seed);
    int endedItself = 0, done = 0;
    const auto saysSomething = [&] { return shared.restored > kills / 3 && shared.saves > kills / 4; };
    // On a busy machine many are killed before their first edit: as many again make up for those.
    for (; (done < kills || (done < 2 * kills && !saysSomething())) && endedItself == 0; ++done) {
        const unsigned childSeed = unsigned(random()),
                       wait = unsigned(random() %
                                       (done % 6 == 0 ? 1'500'000 : 120'000));  // some long enough for edits to grow old
        const bool copies = random() % 2 == 0, early = random() % 8 == 0;
        const pid_t child = fork();
        if (child == 0) Program(path, journals, copies, shared, childSeed).run();
        const auto end = Clock::now() + 20s;
        while (!early && !shared.started && !hasEnded(child) && Clock::now() < end) usleep(200);
        usleep(early ? wait / 8 : wait);
        shared.killedAt = Clock::now();
        kill(child, SIGKILL);
        int status = 0;
        endedItself += waitpid(child, &status, 0) != child || !WIFSIGNALED(status);
        shared.started = false;
    }
    std::printf("%d kills, %d edits, %d saves: %d times restored, %d times nothing to restore, %d times two journals\n", done,
                shared.done.load(), shared.saves.load(), shared.restored.load(), shared.fromFile.load(), shared.twice.load());
    std::printf("files damaged: %d, edits lost: %d, ended by itself: %d\n", shared.damaged.load(), shared.lost.load(),
                endedItself);
    return shared.damaged || shared.lost || endedItself || !saysSomething();
}

}  // namespace
}  // namespace kiv

int main(int argc, char **argv) {
    if (argc != 4) return std::fprintf(stderr, "usage: kiv_killed_editing FOLDER KILLS SEED\n"), 2;
    const std::string folder = std::string(argv[1]) + "/kiv-killed-" + std::to_string(getpid());
    const int status = kiv::killMany(folder, std::atoi(argv[2]), unsigned(std::atoi(argv[3])));
    if (status == 0) std::filesystem::remove_all(folder);
    return status;
}
