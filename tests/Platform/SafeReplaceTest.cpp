#include "Platform/SafeReplace.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Platform/Fake/FakeFileSystem.h"
#include "Platform/InPlaceReplace.h"

namespace kiv {
namespace {

using Bytes = FakeFileSystem::Bytes;
using Survival = FakeFileSystem::Survival;
using Lasting = FakeFileSystem::Lasting;
using testing::AnyOf;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::size_t block = 4;
const std::string song = "/music/song.wav";

Bytes bytesOf(const std::string &text) {
    const auto raw = std::as_bytes(std::span(text));
    return Bytes(raw.begin(), raw.end());
}

std::string textOf(const Bytes &bytes) { return std::string(reinterpret_cast<const char *>(bytes.data()), bytes.size()); }

Produce makes(const std::string &text) {
    return [text](ByteSink &sink) { sink.write(std::as_bytes(std::span(text))); };
}

// How a file is replaced: beside it, over it because the folder refuses, or over it because the folder refuses the rename only.
enum class Way { beside, refused, sticky };

struct Case {
    const char *name;
    Way way;
    std::string before, after;
};

const std::vector<Case> cases{
    {"beside", Way::beside, "old contents", "the new contents, longer"},
    {"beside, shorter", Way::beside, "old contents, the longer", "new"},
    {"in place, longer", Way::refused, "old contents", "the new contents, longer"},
    {"in place, shorter", Way::refused, "old contents, the longer", "new one"},
    {"in place, from nothing", Way::refused, "", "new"},
    {"in place, to nothing", Way::refused, "old", ""},
    {"in place, refused late", Way::sticky, "old contents", "the new contents"},
};

// The disk with the file to be replaced on it.
struct World : FakeFileSystem {
    explicit World(const Case &c) {
        makeFolder(temporaryFolder());
        put(song, bytesOf(c.before), "mine");
        if (c.way == Way::refused) protect("/music");
        if (c.way == Way::sticky) setSticky("/music");
    }
    std::string text(const std::string &path = song) const { return textOf(bytes(path)); }
    // Replaces, maybe with a fault armed; the error's text, empty when it said that it was done.
    std::string save(const Produce &produce, const Check &check = {}) {
        try {
            replaceSafely(*this, song, produce, block, check);
            return "";
        } catch (const std::exception &error) {
            return error.what();
        } catch (const PowerLost &) {
            return "power lost";
        }
    }
    bool save(const Case &c) { return save(makes(c.after)).empty(); }
    Files::Recovery recover() { return recoverInPlace(*this, song, block); }
    void expectNothingLeft() const {
        EXPECT_THAT(names("/music"), ElementsAre("song.wav"));
        EXPECT_THAT(names(stateFolder), IsEmpty());
    }
};

int stepsOf(const Case &c) {
    World world(c);
    world.save(c);
    return world.steps();
}

bool hasFailed() { return testing::Test::HasFailure(); }

TEST(SafeReplace, puts_the_new_file_in_place_with_the_old_attributes_and_leaves_nothing) {
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        World world(c);
        EXPECT_TRUE(world.save(c));
        world.losePowerAt(1);
        EXPECT_FALSE(world.save(c));
        world.restart(Survival::nothing);
        EXPECT_EQ(world.text(), c.after);
        EXPECT_EQ(world.attributes(song), "mine");
        EXPECT_EQ(world.recover(), Files::Recovery::notNeeded);
        world.expectNothingLeft();
    }
}

// A device that fails for good: the old contents are there or can be found, and what a failed sync was to bring to the device
// may never come there by itself.
void expectWholeAfterFailure(World &world, const Case &c, const std::string &error, int step) {
    const auto at = error.find("kept in /");
    const bool isThere = world.text() == (error.empty() ? c.after : c.before);
    EXPECT_TRUE(isThere || (at != error.npos && world.text(error.substr(at + 8)) == c.before)) << error;
    world.recover();
    EXPECT_THAT(world.text(), AnyOf(c.after, error.empty() ? c.after : c.before));
    world.restart(Survival::anything, unsigned(step));
    EXPECT_THAT(world.text(), AnyOf(c.after, c.before));
}

TEST(SafeReplace, keeps_the_old_file_whichever_step_fails_or_finds_the_disk_full_or_is_the_devices_last) {
    const std::pair<std::errc, Lasting> faults[] = {{std::errc::io_error, Lasting::once},
                                                    {std::errc::no_space_on_device, Lasting::full},
                                                    {std::errc::io_error, Lasting::on}};
    for (const auto &[error, lasting] : faults)
        for (const Case &c : cases)
            for (int step = 1, steps = stepsOf(c); step <= steps && !hasFailed(); ++step) {
                SCOPED_TRACE(c.name + (" step " + std::to_string(step)));
                World world(c);
                world.failAt(step, error, lasting);
                world.losePowerAt(1000);
                const std::string said = world.save(makes(c.after));
                if (lasting == Lasting::full) world.expectNothingLeft();
                world.heal();
                EXPECT_EQ(world.attributes(song), "mine");
                if (lasting == Lasting::on) {
                    expectWholeAfterFailure(world, c, said, step);
                    continue;
                }
                EXPECT_EQ(world.text(), said.empty() ? c.after : c.before);
                EXPECT_EQ(world.recover(), Files::Recovery::notNeeded);
                // After success only the removal of what is no longer needed can have failed: left to the next save.
                if (said.empty()) world.save(makes("next"));
                world.expectNothingLeft();
            }
}

// Once the power is back, whatever has survived of what was not synced.
void expectWholeAfterPowerLoss(World &world, const Case &c) {
    if (c.way == Way::beside) {
        EXPECT_THAT(world.text(), AnyOf(c.before, c.after));
    }
    world.recover();
    EXPECT_THAT(world.text(), AnyOf(c.before, c.after));
    EXPECT_EQ(world.attributes(song), "mine");
    // The next save works, and clears up what the dead one has left.
    EXPECT_EQ(world.save(makes("next")), "");
    EXPECT_EQ(world.text(), "next");
    EXPECT_EQ(world.recover(), Files::Recovery::notNeeded);
    world.expectNothingLeft();
}

Survival survivalFor(unsigned seed) { return Survival(std::min(seed, unsigned(Survival::anything))); }

// What befalls a save: a step that fails, the one at which the power goes, the one of the recovery at which it goes again.
struct Fate {
    int failing, dying, again;
    unsigned seed;
};

// Whether it died as often as it was to.
bool endures(const Case &c, const Fate &fate) {
    SCOPED_TRACE(testing::Message() << c.name << " fails at " << fate.failing << ", dies at " << fate.dying << " and "
                                    << fate.again << ", seed " << fate.seed);
    World world(c);
    if (fate.failing > 0) world.failAt(fate.failing, std::errc::io_error);
    world.losePowerAt(fate.dying);
    const bool done = world.save(c);
    bool dies = world.steps() >= fate.dying;
    EXPECT_TRUE(done || dies || fate.failing > 0);
    world.restart(survivalFor(fate.seed), fate.seed);
    if (done && fate.failing == 0) {
        EXPECT_EQ(world.text(), c.after);
    }
    if (fate.again > 0) {
        world.losePowerAt(fate.again);
        try {
            world.recover();
            dies = false;
        } catch (const FakeFileSystem::PowerLost &) {
        }
        world.restart(Survival::anything, fate.seed + 1);
    }
    expectWholeAfterPowerLoss(world, c);
    return dies && !hasFailed();
}

TEST(SafeReplace, leaves_a_whole_file_when_the_power_goes_at_any_step_or_on_the_way_back_or_again_during_recovery) {
    for (const Case &c : cases)
        for (unsigned seed = 0; seed < 40; ++seed)
            for (int dying = 1; endures(c, {0, dying, 0, seed}); ++dying) {
            }
    for (const Case &c : cases)
        for (int failing = 1, steps = stepsOf(c); failing <= steps; ++failing)
            for (unsigned seed = 0; seed < 5; ++seed)
                for (int dying = failing + 1; endures(c, {failing, dying, 0, seed}); ++dying) {
                }
    for (const Case &c : {cases[2], cases[3]})
        for (int dying = 1, steps = stepsOf(c); dying <= steps; ++dying)
            for (unsigned seed = 4; seed < 8; ++seed)
                for (int again = 1; endures(c, {0, dying, again, seed}); ++again) {
                }
}

// By itself, or when the next save begins, which here fails.
TEST(SafeReplace, brings_a_half_written_file_back_but_not_over_what_somebody_wrote_since) {
    const Case c{"", Way::refused, "old contents", "the new contents, longer"};
    const Produce fails = [](ByteSink &) { throw std::runtime_error("no"); };
    int restored = 0;
    for (int step = 1, steps = stepsOf(c); step <= steps; ++step)
        for (const std::string since : {"", "old contentz", "somebody's own"})
            for (const bool saves : {false, true}) {
                World world(c);
                world.losePowerAt(step);
                world.save(c);
                world.restart(Survival::everything);
                if (!since.empty()) world.put(song, bytesOf(since));
                const std::string found = world.text();
                const bool isHalf = since.empty() && found != c.before && found != c.after;
                const bool isRestored =
                    saves ? world.save(fails) == "no" && isHalf : world.recover() == Files::Recovery::restored;
                EXPECT_EQ(isRestored, isHalf) << step;
                EXPECT_EQ(world.text(), isHalf ? c.before : found) << step;
                restored += isHalf;
            }
    EXPECT_GT(restored, 4);
}

TEST(SafeReplace, does_not_take_a_mixture_made_by_somebody_for_its_own_once_the_save_is_done) {
    const Case c{"", Way::refused, "AAAA----", "aaaabbbb"};
    for (unsigned seed = 0; seed < 50; ++seed) {
        World world(c);
        world.losePowerAt(1000);
        ASSERT_TRUE(world.save(c));
        world.restart(Survival::anything, seed);
        world.put(song, bytesOf("AAAAbbbb"), "mine");
        world.recover();
        EXPECT_EQ(world.text(), "AAAAbbbb") << seed;
    }
}

TEST(SafeReplace, a_save_that_dies_never_brings_back_what_was_before_the_last_good_one) {
    // Seen from the copies of the first save and the second, the file in between looks half written.
    const Case first{"first", Way::refused, "AAAA----", "aaaa----"};
    const Case second{"second", Way::refused, "aaaa----", "aaaabbbb"};
    for (int steps = stepsOf(first), failing = steps - 9; failing <= steps; ++failing)  // where the copies are removed
        for (int dying = 1; dying <= steps; ++dying)
            for (unsigned seed = 0; seed < 30 && !hasFailed(); ++seed) {
                World world(first);
                world.failAt(failing, std::errc::io_error);
                if (!world.save(first)) continue;
                world.heal();
                world.losePowerAt(dying);
                world.save(second);
                world.restart(survivalFor(seed), seed);
                world.recover();
                EXPECT_THAT(world.text(), AnyOf(second.before, second.after)) << failing << " " << dying << " " << seed;
            }
}

TEST(SafeReplace, can_be_called_off_by_whoever_makes_or_checks_the_contents_and_by_other_programs) {
    for (const Case &c : cases) {
        World *now = nullptr;
        std::string checked;
        const Check refuses = [&](const ByteSource &written) {
            Bytes bytes(std::size_t(written.size()));
            written.read(0, bytes);
            checked = textOf(bytes);
            throw std::runtime_error("not so");
        };
        const auto first = [&](auto then) { return [&, then](ByteSink &sink) { makes("first ")(sink), then(sink); }; };
        const struct {
            Produce produce;
            Check check;
            std::string error, left;
        } rows[] = {
            {first([](ByteSink &) { throw std::runtime_error("no more"); }), {}, "no more", c.before},
            {makes(c.after), refuses, "not so", c.before},
            {first([&](ByteSink &) { now->put(song, bytesOf("theirs"), "mine"); }),
             {},
             "Another program has changed the file during the save",
             "theirs"},
            {first([&](ByteSink &sink) { contentsOf(*now, song, block)(sink); }), {}, "", "first " + c.before},
        };
        for (const auto &[produce, check, error, left] : rows) {
            World world(c);
            now = &world;
            EXPECT_EQ(world.save(produce, check), error) << c.name;
            EXPECT_EQ(world.text(), left) << c.name;
            world.expectNothingLeft();
        }
        EXPECT_EQ(checked, c.after);
    }
}

TEST(SafeReplace, follows_links_and_refuses_what_is_no_file_or_must_not_be_written) {
    FakeFileSystem world;
    world.makeFolder("/music/folder");
    world.makeOther("/music/pipe");
    world.put("/music/protected", bytesOf("x"));
    world.protect("/music/protected");
    world.put("/closed/other", bytesOf("x"));
    world.protect("/closed");
    world.makeFolder("/real");
    world.link("/music/circle", "circle");
    world.link("/music/folder-link", "folder");
    world.link("/music/far", "/real/new");
    const std::pair<std::string, std::errc> rows[] = {
        {"/music/folder", std::errc::is_a_directory},
        {"/music/folder-link", std::errc::is_a_directory},
        {"/music/pipe", std::errc::invalid_argument},
        {"/music/protected", std::errc::permission_denied},
        {"/closed/new", std::errc::permission_denied},
        {"/gone/new", std::errc::no_such_file_or_directory},
        {"/music/circle", std::errc::too_many_symbolic_link_levels},
        {"/music/far", std::errc()},
    };
    for (const auto &[path, error] : rows) {
        std::error_code caught;
        try {
            replaceSafely(world, path, makes("y"), block);
        } catch (const std::system_error &failure) {
            caught = failure.code();
        }
        EXPECT_TRUE(caught ? caught == error : error == std::errc()) << path << ": " << caught.message();
    }
    EXPECT_EQ(textOf(world.bytes("/real/new")) + world.attributes("/real/new"), "yusual");
    EXPECT_THAT(world.names("/music"), testing::SizeIs(6));
}

TEST(SafeReplace, two_saves_of_one_file_at_once_do_not_disturb_each_other) {
    for (const auto &[way, error] :
         {std::pair(Way::beside, "second did not finish"), {Way::refused, "The file is just being saved by another program"}}) {
        World world({"", way, "old", "new"});
        const Produce second = [&](ByteSink &sink) {
            makes("the ")(sink);
            throw std::runtime_error("second did not finish");
        };
        const Produce first = [&, error = error](ByteSink &sink) {
            makes("the first's")(sink);
            EXPECT_EQ(world.recover(), Files::Recovery::notNeeded);
            EXPECT_EQ(world.save(second), error);
        };
        EXPECT_EQ(world.save(first), "");
        EXPECT_EQ(world.text(), "the first's");
        world.expectNothingLeft();
    }
}

TEST(SafeReplace, names_beside_fit_any_file_system_and_keep_characters_whole) {
    const std::string longName = std::string(99, 'a') + "\u00e9" + std::string(140, 'b') + ".wav";
    EXPECT_EQ(shortened(longName), std::string(99, 'a'));
    EXPECT_EQ(shortened(std::string(255, '\xff')).size(), 100u);
    EXPECT_EQ(shortened(std::string(255, '\x80')).size(), 96u);  // no character is longer than four bytes: this is none
    EXPECT_EQ(shortened("short"), "short");
}

}  // namespace
}  // namespace kiv
