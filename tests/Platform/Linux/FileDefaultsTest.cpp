#include "Platform/Linux/FileDefaults.h"

#include <gmock/gmock.h>
#include <sys/file.h>

#include <chrono>

#include "Platform/Linux/World.h"

namespace kiv {
namespace {

TEST(SettingsText, brings_back_every_text) {
    const SettingsMap settings{
        {"plain", "value"},
        {"empty", ""},
        {"equals=in key", "a=b=c"},
        {"back\\slash\\", "\\n is no newline\\"},
        {"lines", "one\ntwo\r\n"},
        {"", "no key"},
        {"json", R"({"a":["\"x\\y\""]})"},
        {"bytes", "\xff\x01 é "},
        {"# no comment", "#"},
        {" spaces ", "  kept  "},
    };
    EXPECT_EQ(settingsFromText(textFromSettings(settings)), settings);
}

TEST(SettingsText, reads_what_people_make_of_it) {
    const std::pair<const char *, SettingsMap> rows[] = {
        {"a=1\r\nb=2", {{"a", "1"}, {"b", "2"}}},
        {"\n\njunk\na=1\n", {{"a", "1"}}},
        {"a=1\na=2\n", {{"a", "2"}}},
        {"a=x\\", {{"a", "x\\"}}},
        {"only\\=escaped", {}},
    };
    for (const auto &[text, settings] : rows) EXPECT_EQ(settingsFromText(text), settings) << text;
}

class FileDefaultsTest : public testing::Test {
protected:
    TestFolder folder;
    const std::string path = folder / "config/kiv/settings";
};

TEST_F(FileDefaultsTest, are_there_again_in_the_next_program) {
    {
        FileDefaults defaults(path);
        EXPECT_FALSE(defaults.text("a"));
        for (int i = 0; i < 1000; ++i) defaults.setText("many", std::to_string(i));
        defaults.setText("a", "1");
        defaults.setText("gone", "1");
        defaults.remove("gone");
        defaults.remove("never");
        EXPECT_EQ(defaults.text("a"), "1");
        EXPECT_EQ(defaults.text("gone"), std::nullopt);
    }
    const FileDefaults defaults(path);
    EXPECT_EQ(defaults.text("many"), "999");
    EXPECT_EQ(defaults.text("a"), "1");
    EXPECT_EQ(defaults.text("gone"), std::nullopt);
    EXPECT_THAT(namesIn(folder / "config/kiv"), testing::ElementsAre("settings"));
}

TEST_F(FileDefaultsTest, two_programs_keep_each_others_changes) {
    {
        FileDefaults before(path);
        before.setText("removed", "1");
        before.setText("kept", "1");
    }
    const auto program = [&](const std::string &name) {
        FileDefaults defaults(path);
        for (int i = 0; i < 50; ++i) {
            defaults.setText(name + std::to_string(i), "x");
            std::this_thread::sleep_for(std::chrono::microseconds(300));
        }
        if (name == "b") defaults.remove("removed");
    };
    std::jthread other([&] { program("b"); });
    program("a");
    other.join();
    const FileDefaults after(path);
    for (int i = 0; i < 50; ++i) {
        EXPECT_TRUE(after.text("a" + std::to_string(i))) << i;
        EXPECT_TRUE(after.text("b" + std::to_string(i))) << i;
    }
    EXPECT_TRUE(after.text("kept"));
    EXPECT_FALSE(after.text("removed"));
}

TEST_F(FileDefaultsTest, changes_are_on_the_disk_soon_without_the_program_ending) {
    FileDefaults defaults(path);
    defaults.setText("a", "1");
    for (int tries = 0; tries < 500 && readText(path).empty(); ++tries) usleep(10'000);
    EXPECT_EQ(readText(path), "a=1\n");
}

TEST_F(FileDefaultsTest, setting_one_does_not_wait_for_the_disk) {
    std::filesystem::create_directories(folder / "config/kiv");
    const int held = open((folder / "config/kiv").c_str(), O_RDONLY | O_DIRECTORY);
    ASSERT_EQ(flock(held, LOCK_EX), 0);  // another program writes, and takes its time
    FileDefaults defaults(path);
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < 100; ++i) defaults.setText("a", std::to_string(i));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(50));
    close(held);
}

TEST_F(FileDefaultsTest, that_cannot_be_read_or_written_serve_until_the_end_and_harm_nothing) {
    std::filesystem::create_directories(path);  // a folder, where the file should be
    {
        FileDefaults defaults(path);
        defaults.setText("a", "1");
        EXPECT_EQ(defaults.text("a"), "1");
    }
    EXPECT_TRUE(std::filesystem::is_directory(path));

    const TestFolder other;
    writeText(other / "settings", "a=1\n");
    chmod((other / "settings").c_str(), 0);
    inChild([&] {
        becomeNobody();
        FileDefaults defaults(other / "settings");
        defaults.setText("b", "1");
    });
    chmod((other / "settings").c_str(), 0600);
    EXPECT_EQ(readText(other / "settings"), "a=1\n");
}

TEST_F(FileDefaultsTest, stand_where_the_desktop_says) {
    setenv("HOME", "/home/me", 1);
    setenv("XDG_CONFIG_HOME", "not/absolute", 1);
    EXPECT_EQ(FileDefaults::usualPath(), "/home/me/.config/kiv-audio-editor/settings");
    setenv("XDG_CONFIG_HOME", "/config", 1);
    EXPECT_EQ(FileDefaults::usualPath(), "/config/kiv-audio-editor/settings");
    unsetenv("XDG_CONFIG_HOME");
    unsetenv("HOME");
    EXPECT_THROW(FileDefaults::usualPath(), std::system_error);
}

}  // namespace
}  // namespace kiv
