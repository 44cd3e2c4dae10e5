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

void setUp(FakeFileSystem &world, const Case &c) {
    world.makeFolder(world.temporaryFolder());
    world.put(song, bytesOf(c.before), "mine");
    if (c.way == Way::refused) world.setWritable("/music", false);
    if (c.way == Way::sticky) world.setSticky("/music");
}

int stepsOf(const Case &c) {
    FakeFileSystem world;
    setUp(world, c);
    replaceSafely(world, song, makes(c.after), block);
    return world.steps();
}

bool hasFailed() { return testing::Test::HasFailure(); }

void expectNothingLeft(const FakeFileSystem &world) {
    EXPECT_THAT(world.names("/music"), ElementsAre("song.wav"));
    EXPECT_THAT(world.names(FakeFileSystem::stateFolder), IsEmpty());
}

// Replaces with a fault armed; true: it said that it was done.
bool replaced(FakeFileSystem &world, const Case &c) {
    try {
        replaceSafely(world, song, makes(c.after), block);
        return true;
    } catch (const std::system_error &) {
        return false;
    } catch (const FakeFileSystem::PowerLost &) {
        return false;
    }
}

// Calls check(world, case) with a fresh world of each case; and check(world, case, step) for every step that its save takes.
template <class Check>
void forEachCase(Check check) {
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        FakeFileSystem world;
        setUp(world, c);
        check(world, c);
    }
}
template <class Check>
void forEachStep(Check check) {
    forEachCase([&](FakeFileSystem &, const Case &c) {
        for (int step = 1, steps = stepsOf(c); step <= steps && !hasFailed(); ++step) {
            SCOPED_TRACE("step " + std::to_string(step));
            FakeFileSystem world;
            setUp(world, c);
            check(world, c, step);
        }
    });
}

TEST(SafeReplace, puts_the_new_file_in_place_with_the_old_attributes_and_leaves_nothing) {
    forEachCase([](FakeFileSystem &world, const Case &c) {
        replaceSafely(world, song, makes(c.after), block);
        world.losePowerAt(1);
        EXPECT_FALSE(replaced(world, c));
        world.restart(Survival::nothing);
        EXPECT_EQ(textOf(world.bytes(song)), c.after);
        EXPECT_EQ(world.attributes(song), "mine");
        EXPECT_EQ(recoverInPlace(world, song, block), Files::Recovery::notNeeded);
        expectNothingLeft(world);
    });
}

TEST(SafeReplace, keeps_the_old_file_and_leaves_nothing_whichever_step_fails_or_finds_the_disk_full) {
    forEachStep([](FakeFileSystem &world, const Case &c, int step) {
        world.failAt(step, std::errc::io_error);
        const bool done = replaced(world, c);
        world.heal();
        EXPECT_EQ(textOf(world.bytes(song)), done ? c.after : c.before);
        EXPECT_EQ(world.attributes(song), "mine");
        EXPECT_EQ(recoverInPlace(world, song, block), Files::Recovery::notNeeded);
        // After success only the removal of what is no longer needed can have failed: that is left to the next save.
        if (done) replaceSafely(world, song, makes("next"), block);
        expectNothingLeft(world);
    });
    forEachStep([](FakeFileSystem &world, const Case &c, int step) {
        world.failAt(step, std::errc::no_space_on_device, Lasting::full);
        const bool done = replaced(world, c);
        EXPECT_EQ(textOf(world.bytes(song)), done ? c.after : c.before);
        expectNothingLeft(world);
    });
}

TEST(SafeReplace, gives_a_whole_file_back_when_the_device_fails_from_some_step_on) {
    forEachStep([](FakeFileSystem &world, const Case &c, int step) {
        world.failAt(step, std::errc::io_error, Lasting::on);
        world.losePowerAt(1000);
        const bool done = replaced(world, c);
        world.heal();
        recoverInPlace(world, song, block);
        EXPECT_THAT(textOf(world.bytes(song)), AnyOf(c.after, done ? c.after : c.before));
        // What a failed sync was to bring to the device may never come there by itself.
        world.restart(Survival::anything, unsigned(step));
        EXPECT_THAT(textOf(world.bytes(song)), AnyOf(c.after, c.before));
    });
}

// Once the power is back, whatever has survived of what was not synced.
void expectWholeAfterPowerLoss(FakeFileSystem &world, const Case &c) {
    if (c.way == Way::beside) {
        EXPECT_THAT(textOf(world.bytes(song)), AnyOf(c.before, c.after));
    }
    recoverInPlace(world, song, block);
    EXPECT_THAT(textOf(world.bytes(song)), AnyOf(c.before, c.after));
    EXPECT_EQ(world.attributes(song), "mine");
    // The next save works, and clears up what the dead one has left.
    replaceSafely(world, song, makes("next"), block);
    EXPECT_EQ(textOf(world.bytes(song)), "next");
    EXPECT_EQ(recoverInPlace(world, song, block), Files::Recovery::notNeeded);
    expectNothingLeft(world);
}

Survival survivalFor(unsigned seed) { return Survival(std::min(seed, unsigned(Survival::anything))); }

TEST(SafeReplace, leaves_a_whole_file_when_the_power_goes_at_any_step_or_afterwards) {
    for (const Case &c : cases)
        for (int step = 1, steps = stepsOf(c); step <= steps + 1; ++step)
            for (unsigned seed = 0; seed < 40 && !hasFailed(); ++seed) {
                SCOPED_TRACE(c.name + (" step " + std::to_string(step)) + " seed " + std::to_string(seed));
                FakeFileSystem world;
                setUp(world, c);
                world.losePowerAt(step);
                const bool done = replaced(world, c);
                EXPECT_TRUE(done || step <= steps);
                world.restart(survivalFor(seed), seed);
                if (done) {
                    EXPECT_EQ(textOf(world.bytes(song)), c.after);
                }
                expectWholeAfterPowerLoss(world, c);
            }
}

int stepsWhenFailing(const Case &c, int step) {
    FakeFileSystem world;
    setUp(world, c);
    world.failAt(step, std::errc::io_error);
    replaced(world, c);
    return world.steps();
}

TEST(SafeReplace, leaves_a_whole_file_when_a_step_fails_and_the_power_goes_on_the_way_back) {
    for (const Case &c : cases)
        for (int failing = 1, steps = stepsOf(c); failing <= steps; ++failing)
            for (int dying = failing + 1, last = stepsWhenFailing(c, failing); dying <= last; ++dying)
                for (unsigned seed = 0; seed < 5 && !hasFailed(); ++seed) {
                    SCOPED_TRACE(c.name + (" step " + std::to_string(failing)) + " then " + std::to_string(dying));
                    FakeFileSystem world;
                    setUp(world, c);
                    world.failAt(failing, std::errc::io_error);
                    world.losePowerAt(dying);
                    replaced(world, c);
                    world.restart(survivalFor(seed), seed);
                    expectWholeAfterPowerLoss(world, c);
                }
}

bool recovered(FakeFileSystem &world) {
    try {
        recoverInPlace(world, song, block);
        return true;
    } catch (const FakeFileSystem::PowerLost &) {
        return false;
    }
}

// Dies at a step of the save, and again at a step of the recovery; true: the recovery had fewer steps.
bool diesTwice(const Case &c, int first, int second, unsigned seed) {
    FakeFileSystem world;
    setUp(world, c);
    world.losePowerAt(first);
    replaced(world, c);
    world.restart(Survival::anything, seed);
    world.losePowerAt(second);
    const bool done = recovered(world);
    world.restart(Survival::anything, seed + 1);
    expectWholeAfterPowerLoss(world, c);
    return done;
}

TEST(SafeReplace, leaves_a_whole_file_when_the_power_goes_again_during_recovery) {
    for (const Case &c : {cases[2], cases[3]})
        for (int first = 1, steps = stepsOf(c); first <= steps; ++first)
            for (unsigned seed = 0; seed < 4 && !hasFailed(); ++seed)
                for (int second = 1; !hasFailed() && !diesTwice(c, first, second, seed); ++second) {
                }
}

TEST(SafeReplace, brings_a_half_written_file_back_but_not_over_what_somebody_wrote_since) {
    const Case c{"", Way::refused, "old contents", "the new contents, longer"};
    int restored = 0;
    for (int step = 1, steps = stepsOf(c); step <= steps; ++step) {
        for (const std::string since : {"", "old contentz", "somebody's own"}) {
            FakeFileSystem world;
            setUp(world, c);
            world.losePowerAt(step);
            replaced(world, c);
            world.restart(Survival::everything);
            if (!since.empty()) world.put(song, bytesOf(since));
            const bool half = !since.empty() || (textOf(world.bytes(song)) != c.before && textOf(world.bytes(song)) != c.after);
            const auto recovery = recoverInPlace(world, song, block);
            restored += recovery == Files::Recovery::restored;
            EXPECT_EQ(recovery == Files::Recovery::restored, half && since.empty()) << step;
            if (!since.empty()) {
                EXPECT_EQ(textOf(world.bytes(song)), since);
            }
        }
    }
    EXPECT_GT(restored, 2);
}

TEST(SafeReplace, does_not_take_a_mixture_made_by_somebody_for_its_own_once_the_save_is_done) {
    const Case c{"", Way::refused, "AAAA----", "aaaabbbb"};
    for (unsigned seed = 0; seed < 50; ++seed) {
        FakeFileSystem world;
        setUp(world, c);
        world.losePowerAt(1000);
        ASSERT_TRUE(replaced(world, c));
        world.restart(Survival::anything, seed);
        world.put(song, bytesOf("AAAAbbbb"), "mine");
        recoverInPlace(world, song, block);
        EXPECT_EQ(textOf(world.bytes(song)), "AAAAbbbb") << seed;
    }
}

// Dies in the middle of writing over, so that the file is half written.
void dieHalfWritten(FakeFileSystem &world, const Case &c) {
    setUp(world, c);
    for (int step = stepsOf(c); textOf(world.bytes(song)) == c.before || textOf(world.bytes(song)) == c.after; --step) {
        setUp(world, c);
        world.losePowerAt(step);
        replaced(world, c);
        world.restart(Survival::everything);
    }
}

TEST(SafeReplace, ends_an_interrupted_save_before_the_next_one_begins) {
    const Case c{"", Way::refused, "old contents", "the new contents, longer"};
    const Produce fails = [](ByteSink &) { throw std::runtime_error("no"); };
    FakeFileSystem world;
    dieHalfWritten(world, c);
    EXPECT_THROW(replaceSafely(world, song, fails, block), std::runtime_error);
    EXPECT_EQ(textOf(world.bytes(song)), c.before);

    dieHalfWritten(world, c);
    world.put(song, bytesOf("somebody's own"));
    EXPECT_THROW(replaceSafely(world, song, fails, block), std::runtime_error);
    EXPECT_EQ(textOf(world.bytes(song)), "somebody's own");
}

TEST(SafeReplace, a_save_that_dies_never_brings_back_what_was_before_the_last_good_one) {
    // Seen from the copies of the first save and the second, the file in between looks half written.
    const Case first{"first", Way::refused, "AAAA----", "aaaa----"};
    const Case second{"second", Way::refused, "aaaa----", "aaaabbbb"};
    for (int steps = stepsOf(first), failing = steps - 9; failing <= steps; ++failing)  // where the copies are removed
        for (int dying = 1; dying <= steps; ++dying)
            for (unsigned seed = 0; seed < 30 && !hasFailed(); ++seed) {
                SCOPED_TRACE(std::to_string(failing) + " then " + std::to_string(dying) + " seed " + std::to_string(seed));
                FakeFileSystem world;
                setUp(world, first);
                world.failAt(failing, std::errc::io_error);
                if (!replaced(world, first)) continue;
                world.heal();
                world.losePowerAt(dying);
                replaced(world, second);
                world.restart(survivalFor(seed), seed);
                recoverInPlace(world, song, block);
                EXPECT_THAT(textOf(world.bytes(song)), AnyOf(second.before, second.after));
            }
}

TEST(SafeReplace, keeps_the_old_contents_findable_when_they_cannot_be_put_back) {
    FakeFileSystem world;
    const Case c{"", Way::refused, "old contents", "the new contents, longer"};
    setUp(world, c);
    for (int step = 1, steps = stepsOf(c); step <= steps; ++step) {
        setUp(world, c);
        world.failAt(step, std::errc::io_error, Lasting::on);
        try {
            replaceSafely(world, song, makes(c.after), block);
        } catch (const std::system_error &error) {
            const std::string text = error.what();
            world.heal();
            if (textOf(world.bytes(song)) == c.before) continue;
            const auto at = text.find("kept in /");
            ASSERT_NE(at, std::string::npos) << text;
            EXPECT_EQ(textOf(world.bytes(text.substr(at + 8))), c.before);
        }
        world.heal();
        recoverInPlace(world, song, block);
    }
}

TEST(SafeReplace, leaves_all_as_it_was_when_the_contents_cannot_be_made_or_do_not_pass_the_check) {
    const Produce fails = [](ByteSink &sink) {
        makes("the first part")(sink);
        throw std::runtime_error("no more");
    };
    forEachCase([&](FakeFileSystem &world, const Case &c) {
        EXPECT_THROW(replaceSafely(world, song, fails, block), std::runtime_error);
        std::string checked;
        const Check refuses = [&](const ByteSource &written) {
            Bytes bytes(std::size_t(written.size()));
            written.read(0, bytes);
            checked = textOf(bytes);
            throw std::runtime_error("not so");
        };
        EXPECT_THROW(replaceSafely(world, song, makes(c.after), block, refuses), std::runtime_error);
        EXPECT_EQ(checked, c.after);
        EXPECT_EQ(textOf(world.bytes(song)), c.before);
        expectNothingLeft(world);
    });
}

TEST(SafeReplace, lets_the_old_file_be_read_while_the_new_one_is_made) {
    forEachCase([](FakeFileSystem &world, const Case &c) {
        const Produce again = [&](ByteSink &sink) {
            makes("again: ")(sink);
            contentsOf(world, song, block)(sink);
        };
        replaceSafely(world, song, again, block);
        EXPECT_EQ(textOf(world.bytes(song)), "again: " + c.before);
    });
}

TEST(SafeReplace, refuses_what_is_no_file_or_must_not_be_written) {
    FakeFileSystem world;
    world.makeFolder("/music/folder");
    world.makeOther("/music/pipe");
    world.put("/music/protected", bytesOf("x"));
    world.setWritable("/music/protected", false);
    world.put("/closed/other", bytesOf("x"));
    world.setWritable("/closed", false);
    world.link("/music/circle", "circle");
    world.link("/music/folder-link", "folder");
    const std::pair<std::string, std::errc> rows[] = {
        {"/music/folder", std::errc::is_a_directory},
        {"/music/folder-link", std::errc::is_a_directory},
        {"/music/pipe", std::errc::invalid_argument},
        {"/music/protected", std::errc::permission_denied},
        {"/closed/new", std::errc::permission_denied},
        {"/gone/new", std::errc::no_such_file_or_directory},
        {"/music/circle", std::errc::too_many_symbolic_link_levels},
    };
    for (const auto &[path, error] : rows) {
        try {
            replaceSafely(world, path, makes("y"), block);
            ADD_FAILURE() << path << " was written";
        } catch (const std::system_error &caught) {
            EXPECT_EQ(caught.code(), error) << path;
        }
    }
    EXPECT_THAT(world.names("/music"), testing::SizeIs(5));
}

TEST(SafeReplace, makes_a_new_file_also_where_a_link_points_to_nothing) {
    FakeFileSystem world;
    world.makeFolder("/real");
    world.link("/music/link.wav", "../real/take.wav");
    world.link("/music/far.wav", "/real/take.wav");
    replaceSafely(world, "/music/far.wav", makes("new"), block);
    EXPECT_EQ(textOf(world.bytes("/real/take.wav")), "new");
    EXPECT_EQ(world.attributes("/real/take.wav"), "usual");
    EXPECT_EQ(world.names("/music"), (std::vector<std::string>{"far.wav", "link.wav"}));
}

TEST(SafeReplace, does_not_write_over_what_another_program_did_meanwhile) {
    forEachCase([](FakeFileSystem &world, const Case &c) {
        const auto during = [&](ByteSink &sink) {
            makes(c.after)(sink);
            world.put(song, bytesOf("theirs"), "mine");
        };
        try {
            replaceSafely(world, song, during, block);
            ADD_FAILURE();
        } catch (const std::system_error &error) {
            EXPECT_STREQ(error.what(), "Another program has changed the file during the save");
        }
        EXPECT_EQ(textOf(world.bytes(song)), "theirs");
        expectNothingLeft(world);
    });
}

TEST(SafeReplace, two_saves_of_one_file_at_once_do_not_disturb_each_other) {
    for (const Way way : {Way::beside, Way::refused}) {
        FakeFileSystem world;
        const Case c{"", way, "old", "new"};
        setUp(world, c);
        std::string second;
        replaceSafely(
            world, song,
            [&](ByteSink &sink) {
                makes("the first's")(sink);
                try {
                    EXPECT_EQ(recoverInPlace(world, song, block), Files::Recovery::notNeeded);
                    replaceSafely(
                        world, "/music/song.wav",
                        [&](ByteSink &inner) {
                            makes("the ")(inner);
                            throw std::runtime_error("second did not finish");
                        },
                        block);
                } catch (const std::exception &error) {
                    second = error.what();
                }
            },
            block);
        EXPECT_EQ(second, way == Way::beside ? "second did not finish" : "The file is just being saved by another program");
        EXPECT_EQ(textOf(world.bytes(song)), "the first's");
        expectNothingLeft(world);
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
