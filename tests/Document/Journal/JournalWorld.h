#pragma once

#include <gmock/gmock.h>

#include "Document/DocumentWorld.h"
#include "Document/Journal/JournalRecovery.h"

// A document that dies, the disk that outlives it, and what has to come back.
namespace kiv::mortal {

inline constexpr const char *path = "/music/drum.wav";
inline constexpr const char *folder = "/home/journals";

// What a crash may not lose.
struct Done {
    explicit Done(const AudioEditorState &state)
        : buffer(state.buffer),
          markers(state.markerFrames),
          loop(state.loopPoints),
          slices(state.slices),
          cursor(state.cursorFrame),
          selection(state.selection) {}
    AudioEditorBuffer buffer;
    std::vector<std::int64_t> markers;
    std::optional<FrameRange> loop;
    std::vector<FrameRange> slices;
    std::int64_t cursor;
    std::optional<FrameRange> selection;
    friend bool operator==(const Done &, const Done &) = default;
    friend std::ostream &operator<<(std::ostream &out, const Done &done) {
        const auto text = [](const std::optional<FrameRange> &range) {
            return range ? std::to_string(range->lo) + "-" + std::to_string(range->hi) : "none";
        };
        return out << done.buffer.frames() << " frames, cursor " << done.cursor << ", selection " << text(done.selection)
                   << ", loop " << text(done.loop) << ", markers " << testing::PrintToString(done.markers) << ", "
                   << done.slices.size() << " slices";
    }
};

// A program that can be killed: what it held is let go, what waited is never done, and the disk stays.
struct MortalWorld {
    FakeFileSystem disk;
    JournalFolder journals{disk, folder};
    std::unique_ptr<Files> files = makeFiles(disk);
    FakeDefaults defaults;
    Settings settings{defaults};
    Clipboard clipboard;
    ScriptedUi ui;
    FakeJobs jobs;
    std::unique_ptr<AudioDocument> document;

    MortalWorld() { start(); }
    void start() {
        const DocumentServices services{*files, jobs, settings, clipboard, nullptr, nullptr, Peaks::kept, &journals};
        document = std::make_unique<AudioDocument>(services, ui);
    }
    void kill() {
        document.reset();
        jobs = FakeJobs();
        start();
    }
    AudioEditorModel &model() { return document->model(); }

    void put(const std::string &bytes, const std::string &where = path) {
        const auto view = std::as_bytes(std::span(bytes));
        disk.put(where, {view.begin(), view.end()});
    }
    std::string onDisk() const {
        const auto bytes = disk.bytes(path);
        return {reinterpret_cast<const char *>(bytes.data()), bytes.size()};
    }
    void open(const std::string &bytes) {
        put(bytes);
        document->open(path, [](const std::string &error) { ASSERT_EQ(error, ""); });
        jobs.runAll();
    }
    Done reverse(FrameRange range) {
        model().select(range);
        AudioEditorEdits::reverse(model());
        jobs.runAll();
        return Done(model().state());
    }
    void save() {
        document->save();
        jobs.runAll();
    }
    // Brings the only document back that was left behind; the error's text.
    std::string restore() {
        auto found = findAbandonedJournals(journals);
        if (found.size() != 1) return std::to_string(found.size()) + " found";
        std::string text = "never told";
        document->restore(std::make_shared<AbandonedJournal>(std::move(found[0])), [&](auto &error) { text = error; });
        jobs.runAll();
        return text;
    }
};

inline const std::string file = Wav::file(Wav::ramp(30'000), Wav::cue({100, 20'000}) + Wav::smpl(500, 999));

}  // namespace kiv::mortal
