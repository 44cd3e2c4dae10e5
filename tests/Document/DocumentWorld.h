#pragma once

#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "Document/AudioDocument.h"
#include "Editor/AudioEditorModel/AudioEditorEdits.h"
#include "Platform/Fake/FakeAudioOutput.h"
#include "Platform/Fake/FakeDefaults.h"
#include "Platform/Fake/FakeFileSystem.h"
#include "Platform/Fake/FakeJobs.h"
#include "Platform/Fake/FakeMainLoop.h"
#include "Platform/Fake/FakeSystemLog.h"

// A document with everything it works with, all of it fake, and WAV files made from words.
namespace kiv {

// Gives prepared answers and keeps what it was asked and told. Questions beyond the answers stay open.
class ScriptedUi : public DocumentUi {
public:
    void ask(const Question &question, std::function<void(std::size_t)> answer) override {
        asked.push_back(question);
        open = std::move(answer);
        if (answers.empty()) return;
        const std::string button = answers.front();
        answers.pop_front();
        press(button);
    }
    // An empty path: the panel is cancelled.
    void chooseFile(const SavePanel &panel, std::function<void(const std::optional<SaveTarget> &)> answer) override {
        panels.push_back(panel);
        if (targets.empty()) return;
        const SaveTarget target = targets.front();
        targets.pop_front();
        answer(target.path.empty() ? std::nullopt : std::optional(target));
    }
    void showError(const std::string &message, const std::string &informative) override {
        errors.push_back(message + ": " + informative);
    }
    void showNotice(NoticeKind, const std::string &text) override { notices.push_back(text); }

    void press(const std::string &button) {
        const auto &buttons = asked.back().buttons;
        const auto found = std::find(buttons.begin(), buttons.end(), button);
        if (found == buttons.end()) throw std::logic_error("there is no button " + button);
        std::exchange(open, nullptr)(std::size_t(found - buttons.begin()));
    }

    std::deque<std::string> answers;
    std::deque<SaveTarget> targets;
    std::vector<SavePanel> panels;
    std::vector<Question> asked;
    std::vector<std::string> errors, notices;
    std::function<void(std::size_t)> open;
};

// WAV files: a header for 16-bit samples at 8000 Hz, and any chunks before and after the samples.
namespace Wav {

inline std::string le(std::uint32_t value, int bytes) {
    std::string text;
    for (; bytes > 0; --bytes, value >>= 8) text += char(value & 0xFF);
    return text;
}

inline std::string chunk(const std::string &id, const std::string &data) {
    return id + le(std::uint32_t(data.size()), 4) + data + std::string(data.size() % 2, '\0');
}

inline std::string cue(const std::vector<std::uint32_t> &frames) {
    std::string data = le(std::uint32_t(frames.size()), 4);
    for (std::uint32_t i = 0; i < frames.size(); ++i)
        data += le(i + 1, 4) + le(frames[i], 4) + "data" + le(0, 4) + le(0, 4) + le(frames[i], 4);
    return chunk("cue ", data);
}

inline std::string smpl(std::uint32_t start, std::uint32_t lastFrame) {
    return chunk("smpl", std::string(28, '\0') + le(1, 4) + le(0, 4) + le(0, 4) + le(0, 4) + le(start, 4) + le(lastFrame, 4) +
                             std::string(8, '\0'));
}

inline std::string file(const std::vector<int> &samples, const std::string &after = "", std::uint32_t channels = 1,
                        const std::string &before = "") {
    std::string data;
    for (const int sample : samples) data += le(std::uint32_t(sample), 2);
    const std::string fmt =
        le(1, 2) + le(channels, 2) + le(8000, 4) + le(16000 * channels, 4) + le(2 * channels, 2) + le(16, 2);
    const std::string body = "WAVE" + chunk("fmt ", fmt) + before + chunk("data", data) + after;
    return "RIFF" + le(std::uint32_t(body.size()), 4) + body;
}

// 1/32768, 2/32768 …: every frame tells its number.
inline std::vector<int> ramp(int frames) {
    std::vector<int> samples;
    for (int i = 1; i <= frames; ++i) samples.push_back(i);
    return samples;
}

}  // namespace Wav

struct DocumentWorld {
    FakeFileSystem disk;
    std::unique_ptr<Files> files = makeFiles(disk);
    FakeJobs jobs;
    FakeDefaults defaults;
    Settings settings{defaults};
    Clipboard clipboard;
    FakeAudioOutput output;
    FakeMainLoop loop;
    FakeSystemLog log;
    PlaybackEngine playback{output, loop, log};
    ScriptedUi ui;
    std::unique_ptr<AudioDocument> document =
        std::make_unique<AudioDocument>(DocumentServices{*files, jobs, settings, clipboard, &playback}, ui);
    AudioEditorModel &model = document->model();

    static constexpr const char *path = "/music/drum.wav";

    void put(const std::string &bytes, const std::string &where = path) {
        const auto view = std::as_bytes(std::span(bytes));
        disk.put(where, {view.begin(), view.end()});
    }
    std::string onDisk(const std::string &where = path) const {
        const auto bytes = disk.bytes(where);
        return {reinterpret_cast<const char *>(bytes.data()), bytes.size()};
    }
    // Reads a file to the end; the error's text.
    std::string read(AudioDocument &into, const std::string &where = path) {
        std::string text = "never told";
        into.open(where, [&](const std::string &error) { text = error; });
        jobs.runAll();
        return text;
    }
    // The same of a file that it puts there.
    std::string open(const std::string &bytes) {
        put(bytes);
        return read(*document);
    }
    // Saves to the end; whether it was told to have worked.
    bool save() {
        bool saved = false;
        document->save([&](bool ok) { saved = ok; });
        jobs.runAll();
        return saved;
    }
};

}  // namespace kiv
