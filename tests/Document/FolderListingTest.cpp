#include "Document/FolderListing.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "Document/FileNames.h"
#include "Platform/Fake/FakeFileSystem.h"

namespace kiv {
namespace {

using Access = FolderListing::Access;

TEST(FileNames, AreShownWithoutWhatWouldTurnOrBreakTheTextAroundThem) {
    const std::pair<const char *, const char *> rows[] = {
        {"\u05E9\u05D9\u05E8 é \u2014.wav", "\u05E9\u05D9\u05E8 é \u2014.wav"},
        {"a\nb\x1B\x7F\u0085", "a\uFFFDb\uFFFD\uFFFD\uFFFD"},
        {"\u202Egnos\u2066\u2029.wav", "\uFFFDgnos\uFFFD\uFFFD.wav"},
        {"cut \xE2\x80", "cut \xE2\x80"},
    };
    for (const auto &[name, shown] : rows) EXPECT_EQ(shownName(name), shown);
}

TEST(FolderListingTest, HoldsFilesAndFoldersButNothingHidden) {
    FakeFileSystem disk;
    const auto files = makeFiles(disk);
    const Progress progress;
    disk.put("/m/b.wav", FakeFileSystem::Bytes(3));
    disk.put("/m/.hidden.wav", {});
    disk.makeFolder("/m/Folder");
    disk.makeOther("/m/pipe");
    disk.link("/m/dangling", "/nowhere");
    const FolderListing listing = listFolder(*files, "/m", progress);
    EXPECT_EQ(listing.access, Access::writable);
    ASSERT_EQ(listing.entries.size(), 2u);
    EXPECT_TRUE(listing.entries[0].name == "Folder" && listing.entries[0].isFolder);
    EXPECT_TRUE(listing.entries[1].name == "b.wav" && listing.entries[1].size == 3);
    EXPECT_EQ(listFolder(*files, "/none", progress).access, Access::missing);
    EXPECT_EQ(listFolder(*files, "/m/b.wav", progress).access, Access::missing);
    disk.protect("/m");
    EXPECT_EQ(listFolder(*files, "/m", progress).access, Access::readOnly);
    // Asking what it is works, reading it does not.
    for (int step = 1; step <= 4; ++step) {
        disk.failAt(step, std::errc::permission_denied, FakeFileSystem::Lasting::once);
        const Access access = listFolder(*files, "/m", progress).access;
        EXPECT_TRUE(access == Access::unreadable || access == Access::readOnly) << step;
        disk.heal();
    }
    Progress cancelled;
    cancelled.cancel();
    EXPECT_TRUE(listFolder(*files, "/m", cancelled).entries.empty());
}

TEST(FolderListingTest, SizesAreShort) {
    const std::pair<std::int64_t, const char *> rows[] = {
        {0, "0 bytes"},          {1, "1 byte"},           {999, "999 bytes"},        {1000, "1.0 kB"},
        {28'800'000, "28.8 MB"}, {99'940'000, "99.9 MB"}, {99'960'000, "100 MB"},    {115'000'000, "115 MB"},
        {999'400, "999 kB"},     {999'600, "1.0 MB"},     {4'294'967'296, "4.3 GB"}, {9'223'372'036'854'775'807, "9.2 EB"},
    };
    for (const auto &[bytes, text] : rows) EXPECT_EQ(sizeText(bytes), text);
}

TEST(FolderListingTest, DaysAreCountedWhereTheUserLives) {
    const char *before = std::getenv("TZ");
    const std::string zone = before ? before : "";
    ::setenv("TZ", "XXX-3", 1);  // three hours ahead
    ::tzset();
    constexpr std::int64_t second = 1'000'000'000, day = 86'400 * second;
    const std::time_t now = 1'795'305'600;  // 22 November 2026, 03:00 there
    const struct {
        std::int64_t ago;
        const char *text;
    } rows[] = {
        {0, "Today"},       {3 * 3600 * second, "Today"}, {3 * 3600 * second + second, "Yesterday"},
        {day, "Yesterday"}, {2 * day, "20 Nov"},          {19 * day, "3 Nov"},
        {-day, "23 Nov"},   {325 * day, "1 Jan"},         {326 * day, "31 Dec 2025"},
    };
    for (const auto &row : rows) EXPECT_EQ(dateText(now * second - row.ago, now), row.text) << row.ago / second;
    before ? ::setenv("TZ", zone.c_str(), 1) : ::unsetenv("TZ");
    ::tzset();
}

TEST(FolderListingTest, CompletesFoldersExactOnesFirst) {
    const std::vector<FolderEntry> entries{{"Music", true}, {"music", true}, {"Museum", true}, {"Mud.wav", false}};
    EXPECT_EQ(completions(entries, "mu"), (std::vector<std::string>{"music", "Music", "Museum"}));
    EXPECT_EQ(completions(entries, "Mu"), (std::vector<std::string>{"Music", "Museum", "music"}));
    EXPECT_TRUE(completions(entries, "x").empty());
}

}  // namespace
}  // namespace kiv
