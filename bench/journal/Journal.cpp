// What it costs that a crash loses nothing. For edits of 10 seconds in the middle of a sound, and of all of it: how long the
// edit holds up the main thread without a journal and with one, how long after it nothing can be lost any more, and how many
// bytes were written for it. Prints the middle of several and the longest beside the limit.
//
// usage: kiv_journal_cost FILE FOLDER (the folder is for the journal, and best on the disk where the user's own is)
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>

#include "Document/AudioDocument.h"
#include "Editor/AudioEditorModel/AudioEditorEdits.h"
#include "Platform/Fake/FakeDefaults.h"
#include "Platform/Fake/FakeMainLoop.h"
#include "Platform/Linux/LinuxFileSystem.h"
#include "Platform/ThreadJobs.h"

namespace kiv {
namespace {

using Clock = std::chrono::steady_clock;
constexpr double commitLimitMs = 10;

double msSince(Clock::time_point begin) { return std::chrono::duration<double, std::milli>(Clock::now() - begin).count(); }

class Ui : public DocumentUi {
public:
    void ask(const Question &question, std::function<void(std::size_t)>) override { std::puts(question.message.c_str()); }
    void showError(const std::string &message, const std::string &text) override {
        std::printf("%s: %s\n", message.c_str(), text.c_str());
    }
    void showNotice(NoticeKind, const std::string &text) override { std::puts(text.c_str()); }
};

struct Editor {
    explicit Editor(const JournalFolder *journals)
        : document({*files, jobs, settings, clipboard, nullptr, nullptr, Peaks::kept, journals}, ui) {}
    void open(const std::string &path) {
        bool done = false;
        document.open(path, [&](const std::string &) { done = true; });
        while (!done) loop.waitForPosts();
    }
    void wait() {
        while (document.isBusy()) loop.waitForPosts();
        bool safe = false;
        document.flushJournal([&] { safe = true; });
        while (!safe) loop.waitForPosts();
    }

    LinuxFileSystem fileSystem;
    std::unique_ptr<Files> files = makeFiles(fileSystem);
    FakeDefaults defaults;
    Settings settings{defaults};
    Clipboard clipboard;
    FakeMainLoop loop;
    ThreadJobs jobs{loop};
    Ui ui;
    AudioDocument document;
};

double megabytesIn(const std::string &folder) {
    double bytes = 0;
    for (const auto &file : std::filesystem::directory_iterator(folder))
        if (file.path().extension() == ".journal") bytes += double(file.file_size());
    return bytes / 1e6;
}

struct Times {
    std::vector<double> ms;
    std::pair<double, double> middleAndLongest() {
        std::sort(ms.begin(), ms.end());
        return {ms[ms.size() / 2], ms.back()};
    }
};

struct Row {
    const char *title;
    std::function<void(AudioEditorModel &)> edit;
};
const Row rows[] = {
    {"gain", [](AudioEditorModel &model) { AudioEditorEdits::gain(model, -1); }},
    {"reverse", AudioEditorEdits::reverse},
    {"cut", AudioEditorEdits::cut},
    {"paste", AudioEditorEdits::paste},
    {"loop",
     [](AudioEditorModel &model) {
         model.commitLoop(FrameRange{model.state().cursorFrame, model.state().cursorFrame + 1 + model.state().contentVersion});
     }},
};

void measure(Editor &plain, Editor &safe, const std::string &folder, const Row &row, double seconds, int times) {
    Times without, with, durable;
    double written = 0;
    for (int i = 0; i < times; ++i)
        for (Editor *editor : {&plain, &safe}) {
            AudioEditorModel &model = editor->document.model();
            const std::int64_t rate = model.state().buffer.sampleRate(), middle = model.state().buffer.frames() / 2;
            seconds > 0 ? model.select({middle, middle + std::int64_t(seconds * double(rate))}) : model.selectNone();
            const double before = megabytesIn(folder);
            const auto begin = Clock::now();
            row.edit(model);
            (editor == &plain ? without : with).ms.push_back(msSince(begin));
            editor->wait();
            if (editor == &plain) continue;
            durable.ms.push_back(msSince(begin));
            written = std::max(written, megabytesIn(folder) - before);
        }
    const auto [plainMiddle, plainLongest] = without.middleAndLongest();
    const auto [middle, longest] = with.middleAndLongest();
    const auto [durableMiddle, durableLongest] = durable.middleAndLongest();
    std::printf("  %-10s %8.2f %8.2f %10.2f %8.2f %4.0f %-8s %10.0f %8.0f %12.3f\n", row.title, plainMiddle, plainLongest,
                middle, longest, commitLimitMs, longest < commitLimitMs ? "met" : "NOT MET", durableMiddle, durableLongest,
                written);
}

int run(const std::string &path, const std::string &folder) {
    std::filesystem::create_directories(folder);
    Editor plain(nullptr);
    JournalFolder journals{plain.fileSystem, folder};
    Editor safe(&journals);
    for (Editor *editor : {&plain, &safe}) editor->open(path);
    std::puts(
        "             without: ms   longest   with: ms   longest  limit      safe after ms  longest   MB written at most");
    std::puts("10 s of it");
    for (const Row &row : rows) measure(plain, safe, folder, row, 10, 10);
    std::puts("all of it");
    for (const Row &row : {rows[0], rows[1]}) measure(plain, safe, folder, row, 0, 3);
    safe.document.letGo();
    safe.wait();
    return 0;
}

}  // namespace
}  // namespace kiv

int main(int argc, char **argv) {
    if (argc != 3) return std::fprintf(stderr, "usage: kiv_journal_cost FILE FOLDER\n"), 2;
    return kiv::run(argv[1], argv[2]);
}
