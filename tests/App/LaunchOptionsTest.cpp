#include "App/LaunchOptions.h"

#include <gtest/gtest.h>

namespace kiv {
namespace {

TEST(LaunchOptions, FilesAndOptions) {
    const LaunchOptions options =
        parseArguments({"a.wav", "--paint-report", "--state-report", "file:///music/b%20c%FF.wav", "-", "--", "--help"});
    EXPECT_EQ(options.files, (std::vector<std::string>{"a.wav", "/music/b c\xFF.wav", "-", "--help"}));
    EXPECT_TRUE(options.reportsPainting && options.reportsState);
    EXPECT_FALSE(options.showsHelp);
    EXPECT_EQ(options.unknown, "");
    EXPECT_TRUE(parseArguments({"--version"}).showsVersion);
    EXPECT_TRUE(parseArguments({"-h"}).showsHelp);
    EXPECT_EQ(parseArguments({"--loud", "x.wav"}).unknown, "--loud");
}

}  // namespace
}  // namespace kiv
