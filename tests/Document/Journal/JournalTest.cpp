#include <random>

#include "Audio/Files/FileBytes.h"
#include "Document/Journal/JournalWorld.h"

namespace kiv {
namespace {

using namespace mortal;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using enum FakeFileSystem::Survival;

void editAtRandom(AudioEditorModel &model, std::mt19937 &random) {
    const std::int64_t frames = model.state().buffer.frames();
    const auto frame = [&] { return std::int64_t(random() % std::uint64_t(frames)); };
    const std::int64_t lo = frame();
    model.select({lo, std::min(frames, lo + 1 + frame() / 4)});
    using namespace AudioEditorEdits;
    const std::vector<std::function<void()>> edits{
        [&] { reverse(model); },
        [&] { gain(model, -3); },
        [&] { cut(model); },
        [&] { copy(model), paste(model); },
        [&] { paste(model); },
        [&] { silence(model); },
        [&] {
            model.commitLoop(FrameRange{lo, lo + 50});
        },
        [&] {
            model.commitSlices({{0, 10}, {lo, lo + 5}});
        },
        [&] { random() % 2 ? stereo(model) : mono(model, AudioEditorMonoSource::left); },
        [&] { model.undo(); },
        [&] { model.redo(); },
    };
    edits[random() % edits.size()]();
}

TEST(Journal, BringsBackTheDocumentAsItWasAfterItsLastEdit) {
    MortalWorld world;
    world.open(file);
    world.journals.slackBytes = 200'000;  // so that it is written anew now and then
    std::mt19937 random(5);
    Done last(world.model().state());
    for (int i = 0; i < 300; ++i) {
        const std::int64_t version = world.model().state().contentVersion;
        editAtRandom(world.model(), random);
        world.jobs.runAll();
        if (world.model().state().contentVersion != version) last = Done(world.model().state());
        const bool isEdited = world.document->isEdited();
        if (random() % 6 != 0) continue;
        world.kill();
        ASSERT_EQ(world.restore(), isEdited ? "" : "0 found") << i;
        if (!isEdited) world.open(file), last = Done(world.model().state());
        ASSERT_EQ(Done(world.model().state()), last) << "after edit " << i;
        ASSERT_EQ(world.document->isEdited(), isEdited);
        ASSERT_EQ(world.document->path(), path);
    }
    EXPECT_TRUE(world.onDisk() == file);
    EXPECT_THAT(world.ui.errors, IsEmpty());
    EXPECT_THAT(world.ui.notices, IsEmpty());
}

std::string wideFile(unsigned bits, unsigned seed) {
    using namespace fileBytes;
    const Bytes bytes = riff("WAVE", chunk("fmt ", fmt({.tag = bits == 64 ? 3u : 1u, .channels = 2, .bits = bits})) +
                                         chunk("data", noise(std::size_t(40'000) * 2 * bits / 8, seed)));
    return {reinterpret_cast<const char *>(bytes.data()), bytes.size()};
}

// What 32-bit floats cannot hold comes back too: a document that died is saved as one that did not.
TEST(Journal, BringsBackWideSamplesBitForBit) {
    using namespace AudioEditorEdits;
    const std::pair<const char *, std::function<void(AudioEditorModel &)>> edits[] = {
        {"reverse", [](auto &model) { reverse(model); }},
        {"paste", [](auto &model) { paste(model); }},
        {"paste twice, apart",
         [](auto &model) {
             paste(model), model.select({39'000, 39'001}), paste(model);
         }},
        {"cut", [](auto &model) { cut(model); }},
        {"left", [](auto &model) { mono(model, AudioEditorMonoSource::left); }}};
    for (const auto &[name, edit] : edits)
        for (const unsigned bits : {32u, 64u})
            for (const bool isReplaced : {false, true}) {
                std::string saved[2];
                for (const bool isKilled : {false, true}) {
                    MortalWorld world;
                    world.open(wideFile(bits, 1));
                    world.model().select({100, 38'000});
                    copy(world.model());
                    world.document->letGo(), world.kill();
                    world.open(wideFile(bits, 2));
                    world.journals.slackBytes = 100'000;  // so that it is written anew
                    if (isReplaced) world.put("another's");
                    for (const std::int64_t lo : {33'333, 10}) {
                        world.model().select({lo, lo + 5000});
                        edit(world.model());
                        world.jobs.runAll();
                    }
                    if (isKilled) world.kill();
                    ASSERT_EQ(isKilled ? world.restore() : "", "") << name;
                    world.ui.answers = {"Save Anyway"};
                    world.save();
                    saved[isKilled] = world.onDisk();
                }
                EXPECT_TRUE(saved[0] == saved[1]) << name << " " << bits << " " << isReplaced;
                EXPECT_NE(saved[0].size(), 9u);
            }
}

TEST(Journal, LeadsBackToTheFileByUndoing) {
    MortalWorld world;
    world.open(file);
    const Done asRead(world.model().state());
    world.reverse({5, 500});
    world.kill();
    ASSERT_EQ(world.restore(), "");
    world.model().undo();
    world.jobs.runAll();
    EXPECT_TRUE(world.model().state().buffer == asRead.buffer && world.model().state().markerFrames == asRead.markers);
    EXPECT_FALSE(world.document->isEdited());
    EXPECT_THAT(world.disk.names(folder), IsEmpty());
}

TEST(Journal, GoesWhenNothingIsLeftToLose) {
    const std::pair<const char *, std::function<void(MortalWorld &)>> ends[] = {
        {"saved", [](auto &world) { world.save(); }},
        {"undone", [](auto &world) { world.model().undo(); }},
        {"given up", [](auto &world) { world.document->letGo(); }},
        {"given up before it was written",
         [](auto &world) {
             AudioEditorEdits::silence(world.model());
             world.document->letGo();
         }},
        {"reverted", [](auto &world) {
             world.ui.answers = {"Revert"};
             world.document->revert();
         }}};
    for (const auto &[name, end] : ends) {
        MortalWorld world;
        world.open(file);
        world.reverse({5, 500});
        EXPECT_THAT(world.disk.names(folder), SizeIs(2)) << "the journal, and what is kept of the file";
        end(world);
        world.jobs.runAll();
        EXPECT_THAT(world.disk.names(folder), IsEmpty()) << name;
    }
}

TEST(Journal, WritesOnlyWhatIsNewAndOnlyTheLastOfManyEdits) {
    MortalWorld world;
    world.journals.longestCopy = 0;
    world.open(Wav::file(std::vector<int>(100'000, 3)));
    world.reverse({0, 100});
    const auto bytes = [&] { return world.disk.bytes(std::string(folder) + "/1.journal").size(); };
    EXPECT_LT(bytes(), 1200u) << "100 samples and the marks";
    const auto before = bytes();
    world.model().undo(), world.model().redo();
    world.jobs.runAll();
    EXPECT_LT(bytes(), before + 350) << "samples that are there already";
    const auto quiet = bytes();
    for (int i = 0; i < 50; ++i) world.model().commitLoop(FrameRange{0, 10 + i});
    EXPECT_EQ(world.jobs.waiting(), 1);
    world.jobs.runAll();
    EXPECT_LT(bytes(), quiet + 700) << "the first and the last";
}

TEST(Journal, OutlivesALossOfPowerAtAnyMoment) {
    for (const auto survival : {nothing, everything, namesOnly, contentsOnly, anything})
        for (int step = 1, isOver = 0; !isOver; ++step) {
            MortalWorld world;
            world.disk.makeFolder(folder);
            world.open(file);
            std::vector<Done> done{Done(world.model().state())};
            std::size_t safe = 0;
            world.disk.losePowerAt(step);
            try {
                for (int i = 0; i < 3; ++i) {
                    world.model().select({i * 10, 100});
                    AudioEditorEdits::reverse(world.model());
                    done.emplace_back(world.model().state());
                    world.jobs.runAll();
                    if (!world.ui.notices.empty()) throw FakeFileSystem::PowerLost();
                    safe = done.size() - 1;
                }
                isOver = 1;
            } catch (const FakeFileSystem::PowerLost &) {
            }
            world.kill();
            world.disk.restart(survival, unsigned(step));
            const std::string error = world.restore();
            const bool isNothingLeft = error == "0 found";
            ASSERT_TRUE(error.empty() || (isNothingLeft && safe == 0)) << step << error;
            if (isNothingLeft) continue;
            const auto which = std::ranges::find(done, Done(world.model().state()));
            ASSERT_GE(which - done.begin(), std::ptrdiff_t(safe)) << step;
            ASSERT_NE(which, done.end()) << step;
        }
}

// Once, and editing goes on; what was kept before still counts.
TEST(Journal, ThatCannotBeWrittenIsTold) {
    using Break = std::function<void(MortalWorld &)>;
    const auto failing = [](std::errc error) -> Break {
        return [=](MortalWorld &world) { world.disk.failAt(1, error, FakeFileSystem::Lasting::on); };
    };
    struct Case {
        Break breakIt;
        const char *text;
        bool isFromTheStart = false;
    };
    const Case cases[] = {
        {failing(std::errc::no_space_on_device), "No space left on device"},
        {failing(std::errc::permission_denied), "Permission denied"},
        {failing(std::errc::read_only_file_system), "Read-only file system"},
        {[](auto &world) { world.journals.mostBytes = 5000; }, "The changes are too large"},
        {[](auto &world) { world.disk.setFree(10'000); }, "The disk is nearly full"},
        {[](auto &world) { world.disk.setAbilities({.locks = false}); }, "cannot lock files", true},
        {[](auto &world) { world.journals.whyNone = "The user has no home folder"; }, "no home folder", true}};
    for (const auto &[breakIt, text, isFromTheStart] : cases) {
        MortalWorld world;
        world.open(file);
        if (isFromTheStart) breakIt(world);
        const Done first = world.reverse({5, 500});
        breakIt(world);
        for (int i = 0; i < 5; ++i) world.reverse({i, 3000});
        EXPECT_THAT(world.ui.notices, ElementsAre(HasSubstr(text)));
        EXPECT_TRUE(world.document->isEdited());
        world.kill();
        world.disk.heal();
        ASSERT_EQ(world.restore(), isFromTheStart ? "0 found" : "") << text;
        EXPECT_TRUE(isFromTheStart || Done(world.model().state()) == first) << text;
    }
}

// Also when it is the end of the program that asks for it, however short a time after a failure.
TEST(Journal, IsTriedAgainAndToldOfAgainWhenItFailsAgain) {
    MortalWorld world;
    world.open(file);
    const auto edit = [&](int lo, bool fails) {
        fails ? world.disk.failAt(1, std::errc::io_error, FakeFileSystem::Lasting::on) : world.disk.heal();
        const Done done = world.reverse({lo, 500});
        world.document->flushJournal([] {});
        world.jobs.runAll();
        return done;
    };
    edit(1, true), edit(2, true);
    EXPECT_THAT(world.ui.notices, SizeIs(1));
    const Done last = edit(3, false);
    edit(4, true);
    EXPECT_THAT(world.ui.notices, SizeIs(2));
    world.kill();
    world.disk.heal();
    ASSERT_EQ(world.restore(), "");
    EXPECT_EQ(Done(world.model().state()), last);
    world.save();
    EXPECT_FALSE(world.onDisk() == file);
    EXPECT_THAT(world.disk.names(folder), IsEmpty());
}

TEST(Journal, OutlivesTheClearingAwayOfItsFolder) {
    MortalWorld world;
    world.open(file);
    world.reverse({5, 500});
    world.disk.vanish("/home");
    const Done last = world.reverse({50, 90});
    EXPECT_THAT(world.disk.names(folder), SizeIs(2));
    world.kill();
    ASSERT_EQ(world.restore(), "");
    EXPECT_EQ(Done(world.model().state()), last);
}

}  // namespace
}  // namespace kiv
