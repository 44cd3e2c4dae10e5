#include "Platform/Linux/Trash.h"

#include <cstdlib>

#include "Platform/Linux/World.h"

namespace kiv {
namespace {

struct TrashTest : testing::Test {
    TestFolder home;
    std::string trash = home / "data/Trash";
    TrashTest() { setenv("XDG_DATA_HOME", (home / "data").c_str(), 1); }
    ~TrashTest() override { unsetenv("XDG_DATA_HOME"); }
};

TEST_F(TrashTest, keepsTheFileUnderAFreeNameWithANoteOfWhereItWas) {
    for (const char *text : {"first", "second"}) {
        writeText(home / "a b%.wav", text);
        trashFile(home / "a b%.wav");
    }
    EXPECT_EQ(namesIn(trash + "/files"), (std::vector<std::string>{"a b%.2.wav", "a b%.wav"}));
    EXPECT_EQ(namesIn(trash + "/info"), (std::vector<std::string>{"a b%.2.wav.trashinfo", "a b%.wav.trashinfo"}));
    EXPECT_EQ(readText(trash + "/files/a b%.wav"), "first");
    EXPECT_EQ(readText(trash + "/files/a b%.2.wav"), "second");
    const std::string note = readText(trash + "/info/a b%.wav.trashinfo");
    const std::string path = std::filesystem::canonical(home.path()).string() + "/a%20b%25.wav";
    EXPECT_TRUE(note.starts_with("[Trash Info]\nPath=" + path + "\nDeletionDate=20")) << note;
    EXPECT_EQ(namesIn(home.path()), (std::vector<std::string>{"data"}));
}

TEST_F(TrashTest, throwsALinkAwayAndNotWhatItLeadsTo) {
    writeText(home / "real.wav", "x");
    std::filesystem::create_symlink(home / "real.wav", home / "link.wav");
    trashFile(home / "link.wav");
    EXPECT_EQ(readText(home / "real.wav"), "x");
    EXPECT_EQ(namesIn(trash + "/files"), (std::vector<std::string>{"link.wav"}));
}

TEST_F(TrashTest, takesANameThatLeavesNoRoomForTheNotes) {
    const std::string name = std::string(251, 'n') + ".wav";
    writeText(home / name, "x");
    trashFile(home / name);
    EXPECT_EQ(readText(trash + "/files/" + std::string(100, 'n') + ".wav"), "x");
    EXPECT_EQ(namesIn(trash + "/info"), (std::vector<std::string>{std::string(100, 'n') + ".wav.trashinfo"}));
}

TEST_F(TrashTest, whatIsNotThereCannotBeThrownAway) { EXPECT_THROW(trashFile(home / "none.wav"), std::system_error); }

}  // namespace
}  // namespace kiv
