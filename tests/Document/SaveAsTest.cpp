#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Document/CommandActions.h"
#include "Document/DocumentWorld.h"

namespace kiv {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using Container = AudioSaveFormat::Container;

constexpr AudioSaveFormat wav16{Container::wav, 16}, wav24{Container::wav, 24}, aiff16{Container::aiff, 16};
const std::string markedFile =
    Wav::file(Wav::ramp(1000), Wav::cue({100, 900}) + Wav::smpl(200, 299) + Wav::chunk("abcd", "odd"));

// A decoder that takes every file for one of a kind, and finds silence in it, or a ramp.
class SilentDecoder : public DecodedReader {
public:
    SilentDecoder(DecodedFormat format, std::int64_t frames, float step = 0)
        : format_(std::move(format)), frames_(frames), step_(step) {}
    std::unique_ptr<DecodedSound> open(const ByteSource &) override { return std::make_unique<Sound>(format_, frames_, step_); }

private:
    class Sound : public DecodedSound {
    public:
        Sound(DecodedFormat format, std::int64_t frames, float step)
            : format_(std::move(format)), frames_(frames), left_(frames), step_(step) {}
        const DecodedFormat &format() const override { return format_; }
        std::int64_t read(std::span<float> out) override {
            const std::int64_t count = std::exchange(left_, 0);
            for (std::int64_t i = 0; i < count; ++i) out[std::size_t(i)] = float(i + 1) * step_;
            return count;
        }
        std::int64_t read(std::span<std::int32_t>) override { return 0; }
        std::optional<std::int64_t> countFrames() override { return frames_; }

    private:
        DecodedFormat format_;
        std::int64_t frames_, left_;
        float step_;
    };

    DecodedFormat format_;
    std::int64_t frames_;
    float step_;
};

struct SaveAsWorld : DocumentWorld {
    explicit SaveAsWorld(const std::string &bytes = markedFile) { open(bytes); }

    // What became of the command, with everything that it started.
    void saveAs(std::deque<DocumentUi::SaveTarget> targets, std::deque<std::string> answers = {}) {
        ui.targets = std::move(targets);
        ui.answers = std::move(answers);
        perform(EditorCommand::saveAs, *document);
        jobs.runAll();
    }
    // A fresh document on what was written.
    std::unique_ptr<AudioDocument> reopened(const std::string &where) {
        auto fresh = std::make_unique<AudioDocument>(DocumentServices{*files, jobs, settings, clipboard}, ui);
        EXPECT_EQ(read(*fresh, where), "");
        return fresh;
    }
};

TEST(SaveAs, MovesTheDocumentToTheNewFileAndFormatAndKeepsItsHistory) {
    SaveAsWorld world;
    world.model.select({0, 50});
    AudioEditorEdits::deleteSelection(world.model);
    world.saveAs({{"/music/drum.aiff", AudioSaveFormat{Container::aiff, 24}}});
    ASSERT_EQ(world.ui.panels.size(), 1u);
    EXPECT_EQ(world.ui.panels[0].title, "Save As");
    EXPECT_EQ(world.ui.panels[0].message, "");
    EXPECT_EQ(world.ui.panels[0].path, world.path);
    EXPECT_EQ(world.ui.panels[0].format, wav16);
    EXPECT_THAT(world.ui.asked, IsEmpty());
    EXPECT_THAT(world.ui.notices, ElementsAre("AIFF has no place for “abcd”: not saved"));
    EXPECT_TRUE(world.onDisk() == markedFile);
    EXPECT_EQ(world.document->name(), "drum.aiff");
    EXPECT_EQ(world.document->format()->bitsDescription, "24-bit");
    EXPECT_FALSE(world.document->isEdited());
    world.model.undo();
    EXPECT_TRUE(world.document->isEdited());
    EXPECT_TRUE(world.save()) << "in the new format from now on";
    const auto fresh = world.reopened("/music/drum.aiff");
    EXPECT_EQ(fresh->format()->typeName, "AIFF");
    EXPECT_THAT(fresh->model().state().markerFrames, ElementsAre(100, 900));
    EXPECT_EQ(fresh->model().state().loopPoints, (FrameRange{200, 300}));
    EXPECT_EQ(fresh->model().state().buffer, world.model.state().buffer);
}

// Each once, and not all of very many; in no time.
TEST(SaveAs, NamesWhatIsLeftInAFewWords) {
    std::string chunks;
    for (int i = 0; i < 60000; ++i) chunks += Wav::chunk("e" + std::to_string(100 + i % 899), "");
    SaveAsWorld world(Wav::file(Wav::ramp(10), chunks));
    world.saveAs({{"/music/drum.aiff", aiff16}});
    EXPECT_THAT(world.ui.notices, ElementsAre("AIFF has no place for “e100”, “e101”, “e102”, “e103”, “e104”, “e105”, “e106”, "
                                              "“e107”, “e108” and 890 other things: not saved"));
}

TEST(SaveAs, NamesTagsThatCouldNotBeRead) {
    struct : SilentDecoder {
        using SilentDecoder::SilentDecoder;
        std::optional<DecodedTags> tags(const ByteSource &) override { throw DecodeFault("the tag is damaged"); }
    } decoder({.typeName = "MP3", .identifier = ".mp3", .sampleRate = 8000}, 1000);
    SaveAsWorld world("no file of ours");
    AudioDocument document({*world.files, world.jobs, world.settings, world.clipboard, nullptr, &decoder}, world.ui);
    document.open(world.path, [](const std::string &error) { EXPECT_EQ(error, ""); });
    world.jobs.runAll();
    document.saveAs("/music/drum.wav", wav24, [](bool ok) { EXPECT_TRUE(ok); });
    world.jobs.runAll();
    EXPECT_THAT(world.ui.notices, ElementsAre("WAV has no place for damaged tags: not saved"));
}

// FLAC stores neither; the editor goes on showing both, and a format that has a place for them gets them.
TEST(SaveAs, KeepsMarkersAndLoopInTheEditorWhereTheFormatCannot) {
    SaveAsWorld world;
    SilentDecoder flac({.typeName = "FLAC", .identifier = "flac", .bits = 16, .sampleRate = 8000}, 1000, 0x1p-15f);
    AudioDocument document({*world.files, world.jobs, world.settings, world.clipboard, nullptr, &flac}, world.ui);
    EXPECT_EQ(world.read(document), "");
    const auto saveAs = [&](const std::string &path, const AudioSaveFormat &format) {
        document.saveAs(path, format, [](bool ok) { EXPECT_TRUE(ok); });
        world.jobs.runAll();
        EXPECT_THAT(document.model().state().markerFrames, ElementsAre(100, 900));
        EXPECT_EQ(document.model().state().loopPoints, (FrameRange{200, 300}));
    };
    saveAs("/music/drum.flac", {Container::flac, 16});
    EXPECT_THAT(world.ui.notices, ElementsAre("FLAC has no place for markers, “abcd” and the loop: not saved"));
    EXPECT_FALSE(document.model().state().canStoreLoop);
    saveAs("/music/drum.aiff", aiff16);
    const auto fresh = world.reopened("/music/drum.aiff");
    EXPECT_THAT(fresh->model().state().markerFrames, ElementsAre(100, 900));
    EXPECT_EQ(fresh->model().state().loopPoints, (FrameRange{200, 300}));
}

TEST(SaveAs, AsksBeforeItReplacesAnotherFileAndComesBackWithWhatWasTyped) {
    const struct {
        const char *path;
        AudioSaveFormat format;
        std::deque<std::string> answers;
        std::string name;
        std::size_t asked, panels;
    } rows[] = {
        {"/music/other.wav", wav24, {"Replace"}, "other.wav", 1, 1},
        {"/music/other.wav", wav24, {"Cancel"}, "drum.wav", 1, 2},
        {DocumentWorld::path, wav24, {"Replace"}, "drum.wav", 1, 1},
        {DocumentWorld::path, wav16, {}, "drum.wav", 0, 1},
        {"/music/new.wav", wav16, {}, "new.wav", 0, 1},
        {"/music/same.wav", wav16, {}, "same.wav", 0, 1},
        {"/music/same.wav", wav24, {"Replace"}, "same.wav", 1, 1},
    };
    for (const auto &row : rows) {
        SaveAsWorld world;
        world.disk.setAbilities({.names = true});
        world.disk.addName(world.path, "/music/same.wav");
        world.put("other", "/music/other.wav");
        AudioEditorEdits::reverse(world.model);
        world.saveAs({{row.path, row.format}}, row.answers);
        EXPECT_EQ(world.document->name(), row.name);
        EXPECT_EQ(world.ui.asked.size(), row.asked) << row.path;
        ASSERT_EQ(world.ui.panels.size(), row.panels);
        const bool isSaved = row.panels == 1;
        EXPECT_EQ(world.document->isEdited(), !isSaved);
        EXPECT_EQ(world.onDisk("/music/other.wav") != "other", row.name == "other.wav");
        if (row.asked == 1) {
            EXPECT_EQ(world.ui.asked[0].buttons.front(), "Cancel") << "Enter replaces nothing";
        }
        if (isSaved) continue;
        EXPECT_EQ(world.ui.panels[1].path, row.path);
        EXPECT_EQ(world.ui.panels[1].format, row.format);
        EXPECT_EQ(world.ui.panels[1].title, "Save As");
    }
}

TEST(SaveAs, FailingOrCancelledLeavesEverything) {
    SaveAsWorld world;
    AudioEditorEdits::reverse(world.model);
    world.saveAs({{"", {}}});
    EXPECT_THAT(world.ui.errors, IsEmpty());
    world.disk.failAt(1, std::errc::no_space_on_device, FakeFileSystem::Lasting::on);
    world.saveAs({{"/music/drum.aiff", aiff16}});
    EXPECT_THAT(world.ui.errors, ElementsAre(HasSubstr("“drum.aiff” could not be saved")));
    world.disk.heal();
    EXPECT_EQ(world.document->name(), "drum.wav");
    EXPECT_EQ(world.document->format()->typeName, "WAV");
    EXPECT_TRUE(world.document->isEdited());
    EXPECT_TRUE(world.model.canUndo());
    EXPECT_TRUE(world.onDisk() == markedFile);
    EXPECT_FALSE(world.disk.identity("/music/drum.aiff"));
}

TEST(SaveAs, OverTheOwnFileMindsWhatAnotherProgramHasWrittenThere) {
    for (const char *answer : {"Cancel", "Save Anyway"}) {
        SaveAsWorld world;
        world.put(Wav::file({7}));
        world.saveAs({{world.path, wav16}}, {answer});
        ASSERT_EQ(world.ui.asked.size(), 1u);
        EXPECT_EQ(world.ui.asked[0].message, "“drum.wav” has been changed by another program");
        EXPECT_EQ(world.onDisk() == markedFile, answer == std::string("Save Anyway"));
    }
}

TEST(SaveAs, IsNotForgottenWhenTheFileIsBeingReadAgainUnderThePanel) {
    SaveAsWorld world;
    world.put(Wav::file({7}));
    world.document->checkDisk();
    world.jobs.work();
    world.jobs.report();
    world.saveAs({{"/music/new.wav", wav24}});
    EXPECT_THAT(world.ui.errors, ElementsAre("“new.wav” could not be saved: “drum.wav” is just being read again."));
    EXPECT_FALSE(world.disk.identity("/music/new.wav"));
    EXPECT_EQ(world.model.state().buffer.frames(), 1);
}

struct DecodedWorld : SaveAsWorld {
    DecodedWorld() : SaveAsWorld("ID3") {
        document = std::make_unique<AudioDocument>(DocumentServices{*files, jobs, settings, clipboard, nullptr, &decoder}, ui);
        put("ID3", "/music/talk.mp3");
        EXPECT_EQ(read(*document, "/music/talk.mp3"), "");
    }
    SilentDecoder decoder{{.typeName = "MP3", .identifier = ".mp3", .sampleRate = 8000}, 500};
};

TEST(Saving, AFileThatCannotBeWrittenIsSavedElsewhere) {
    DecodedWorld world;
    world.ui.targets = {{"/music/talk.wav", wav24}};
    EXPECT_TRUE(world.save());
    ASSERT_EQ(world.ui.panels.size(), 1u);
    EXPECT_EQ(world.ui.panels[0].title, "Save As");
    EXPECT_EQ(world.ui.panels[0].message, "MP3 files can't be written: choose a format.");
    EXPECT_EQ(world.ui.panels[0].path, "/music/talk.wav");
    EXPECT_EQ(world.ui.panels[0].format, wav24);
    EXPECT_EQ(world.document->format()->bitsDescription, "24-bit");
    EXPECT_TRUE(world.save());
    EXPECT_EQ(world.ui.panels.size(), 1u) << "now it can";
}

// A clock keeps the number of frames from following: what an edit under way does to that is known when it has ended.
TEST(Saving, AFileThatCannotFollowALongEditIsSavedElsewhere) {
    const auto chunk = [](const std::string &id, std::string data) {
        return id + std::string(7, '\0') + char(data.size()) + data;
    };
    const auto be = [](int value) { return std::string(3, '\0') + char(value); };
    const std::string rate8000("\x40\xBF\x40\0\0\0\0\0", 8), zeros(20, '\0');
    DocumentWorld world;
    world.open(std::string("caff\0\1\0\0", 8) + chunk("desc", rate8000 + "lpcm" + be(0) + be(2) + be(1) + be(1) + be(16)) +
               chunk("mark", be(3) + be(1) + be(0) + rate8000 + be(1) + zeros.substr(0, 12)) + chunk("data", zeros));
    const AudioEditorBuffer shorter = world.model.state().buffer.part({0, 3});
    world.model.apply({1e9, {1}, [=](Progress &) { return std::optional(EditOutcome{.buffer = shorter}); }});
    world.save();
    EXPECT_THAT(world.ui.errors, IsEmpty());
    ASSERT_EQ(world.ui.panels.size(), 1u);
    EXPECT_EQ(world.ui.panels[0].message, "CAF files can't follow these edits: choose a format.");
}

TEST(SaveSelection, WritesTheSelectionAloneAndStaysWhereItIs) {
    SaveAsWorld world;
    world.model.select({10, 12});
    world.ui.targets = {{"/music/part.wav", {}}};
    perform(EditorCommand::saveSelection, *world.document);
    world.jobs.runAll();
    ASSERT_EQ(world.ui.panels.size(), 1u);
    EXPECT_EQ(world.ui.panels[0].title, "Save Selection As");
    EXPECT_EQ(world.ui.panels[0].message, "");
    EXPECT_EQ(world.ui.panels[0].path, "/music/drum-selection.wav");
    EXPECT_FALSE(world.ui.panels[0].format);
    EXPECT_TRUE(world.onDisk("/music/part.wav") == Wav::file({11, 12}));
    EXPECT_EQ(world.document->name(), "drum.wav");
    EXPECT_THAT(world.ui.notices, ElementsAre("The selection is saved as “part.wav”"));
    bool saved = true;
    world.document->saveSelection(world.path, [&](bool ok) { saved = ok; });
    world.jobs.runAll();
    EXPECT_FALSE(saved);
    EXPECT_TRUE(world.onDisk() == markedFile) << "what it is a part of";
    world.model.selectNone();
    EXPECT_FALSE(isEnabled(EditorCommand::saveSelection, *world.document));

    DecodedWorld decoded;
    decoded.document->model().select({0, 3});
    decoded.ui.targets = {{"/music/part.wav", {}}};
    perform(EditorCommand::saveSelection, *decoded.document);
    decoded.jobs.runAll();
    EXPECT_EQ(decoded.ui.panels[0].message, "MP3 files can't be written: the selection is saved as WAV.");
    EXPECT_EQ(decoded.ui.panels[0].path, "/music/talk-selection.wav");
    EXPECT_TRUE(decoded.onDisk("/music/part.wav") == Wav::file({0, 0, 0}));
}

TEST(SaveSelection, AsksAboutTheEqualizerInItsOwnWords) {
    SaveAsWorld world(Wav::file(std::vector<int>(1000, 8000)));
    EqSettings quieter;
    quieter.gainDb = -6;
    world.document->eq().setSettings(quieter);
    world.model.setEqEnabled(true);
    world.model.select({10, 12});
    world.ui.answers = {"Apply EQ to Selection and Save"};
    world.ui.targets = {{"/music/part.wav", {}}};
    world.document->saveSelection();
    world.jobs.runAll();
    ASSERT_EQ(world.ui.asked.size(), 1u);
    EXPECT_EQ(world.ui.asked[0].informative,
              "What you hear through the EQ is not in the audio yet. Apply it to the selection before saving?");
    EXPECT_TRUE(world.onDisk("/music/part.wav") == Wav::file({4009, 4009}));
    EXPECT_EQ(world.model.state().buffer.sample(9, 0) * 32768, 8000) << "outside the selection";
}

TEST(CheckDisk, ReadsAgainWithoutEditsAndAsksOnceWithThem) {
    const std::string foreign = Wav::file({7, 8, 9});
    enum class Change { none, time, bytes, gone };
    const struct {
        Change change;
        bool edits;
        const char *answer;
        std::size_t asked, notices;
        bool reads;
    } rows[] = {
        {Change::none, true, nullptr, 0, 0, false},   {Change::time, true, nullptr, 0, 0, false},
        {Change::time, false, nullptr, 0, 0, false},  {Change::bytes, false, nullptr, 0, 1, true},
        {Change::bytes, true, "Cancel", 1, 0, false}, {Change::bytes, true, "Read Again", 1, 0, true},
        {Change::gone, false, nullptr, 0, 1, false},  {Change::gone, true, nullptr, 0, 1, false},
    };
    for (const auto &row : rows) {
        SaveAsWorld world;
        world.model.select({0, 2});
        if (row.edits) AudioEditorEdits::reverse(world.model);
        if (row.change == Change::time) world.put(markedFile);
        if (row.change == Change::bytes) world.put(foreign);
        if (row.change == Change::gone) world.disk.vanish(world.path);
        if (row.answer) world.ui.answers = {row.answer};
        for (int i = 0; i < 3; ++i) {
            world.document->checkDisk();
            world.jobs.runAll();
        }
        EXPECT_EQ(world.ui.asked.size(), row.asked);
        EXPECT_EQ(world.ui.notices.size(), row.notices);
        EXPECT_EQ(world.model.state().buffer.frames(), row.reads ? 3 : 1000);
        EXPECT_EQ(world.model.state().selection, (FrameRange{0, 2})) << "the view stays";
        EXPECT_EQ(world.document->isEdited(), row.change == Change::gone || (row.edits && !row.reads));
        if (row.asked) {
            EXPECT_EQ(world.ui.asked[0].buttons.front(), "Cancel") << "Enter loses no edits";
        }
        if (row.change != Change::time) continue;
        EXPECT_TRUE(world.save());
        EXPECT_THAT(world.ui.asked, IsEmpty()) << "nobody has changed anything";
    }
}

TEST(CheckDisk, TellsEachTimeThatTheFileHasGone) {
    constexpr const char *away = "/music/away.wav";
    SaveAsWorld world;
    for (const auto &[from, to] : {std::pair(world.path, away), {away, world.path}, {world.path, away}}) {
        world.disk.rename(from, to);
        world.document->checkDisk();
        world.jobs.runAll();
    }
    EXPECT_EQ(world.ui.notices.size(), 2u);
}

}  // namespace
}  // namespace kiv
