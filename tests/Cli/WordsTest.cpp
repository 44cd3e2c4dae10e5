#include "Cli/Words.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kiv::Cli {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

TEST(Words, ArePartedByBlanks) {
    const struct {
        const char *step;
        Words words;
    } cases[] = {
        {"", {}},
        {" \t\r", {}},
        {"select 0\t10 ", {"select", "0", "10"}},
        {R"(load "my drum.wav")", {"load", "my drum.wav"}},
        {R"(load "a \"b\" \\ \c")", {"load", R"(a "b" \ \c)"}},
        {R"(load "")", {"load", ""}},
        {R"(load 12".wav)", {"load", "12\".wav"}},
        {"load take#2.wav", {"load", "take#2.wav"}},
        {"load #2.wav", {"load", "#2.wav"}},
    };
    for (const auto &[step, words] : cases) EXPECT_EQ(splitWords(step), words) << step;
    for (const char *step : {R"(load "a)", R"(load "a\")", R"(load "a"b)", "\""})
        EXPECT_THROW(splitWords(step), WrongWords) << step;
}

TEST(Script, IsAStepALine) {
    EXPECT_THAT(scriptSteps("\uFEFF# first\nselectAll\r\n\n  gain -3 # quiet\nundo"),
                ElementsAre(Words{"selectAll"}, Words{"gain", "-3"}, Words{"undo"}));
    EXPECT_THAT(scriptSteps("load take#2.wav\nload \"take #2.wav\" # the second\n# all of it"),
                ElementsAre(Words{"load", "take#2.wav"}, Words{"load", "take #2.wav"}));
    EXPECT_THAT(scriptSteps(""), ElementsAre());
    try {
        scriptSteps("undo\n\nload \"a\n");
        FAIL();
    } catch (const WrongWords &error) {
        EXPECT_THAT(error.what(), HasSubstr("line 3: "));
    }
}

TEST(Numbers, AreFiniteDecimals) {
    const std::pair<const char *, double> right[] = {{"0", 0},        {"-3", -3},  {"+3.5", 3.5}, {".5", .5},
                                                     {"-0.25", -.25}, {"1e1", 10}, {"007", 7}};
    for (const auto &[word, number] : right) EXPECT_EQ(parseNumber(word), number) << word;
    for (const char *word : {"", "-", "+", "+-3", "--3", "3x", "3 ", " 3", "0x10", "1,5", "nan", "inf", "-infinity", "1e999"})
        EXPECT_EQ(parseNumber(word), std::nullopt) << word;
}

TEST(Positions, AreFramesOrTimes) {
    const struct {
        const char *word;
        std::int64_t rate, frame;
    } cases[] = {
        {"0", 44100, 0},
        {"4800", 44100, 4800},
        {"-5", 44100, -5},
        {"2s", 44100, 88200},
        {"1.5s", 48000, 72000},
        {".5s", 48000, 24000},
        {"20ms", 44100, 882},
        {"12.5ms", 44100, 551},  // 551.25
        {"1:05.250", 1000, 65250},
        {"1:00", 44100, 2646000},
        {"90:00", 1, 5400},
        {"-1.5s", 1000, -1500},
        // Half frames go away from zero, also where no binary fraction is exact.
        {"0.5ms", 1000, 1},
        {"-0.5ms", 1000, -1},
        {"1.0035s", 1000, 1004},
        {"0.0005s", 1000, 1},
        {"0.00049999999999999999s", 1000, 0},
        {"0.30000000000000004s", 44100, 13230},
        {"99999999s", 4294967295, 429496725205032705},
        {"99999999:59", 4294967295, 9223372036854775807},
    };
    for (const auto &[word, rate, frame] : cases) {
        const auto position = Position::parse(word);
        ASSERT_TRUE(position) << word;
        EXPECT_EQ(position->frame(rate), frame) << word;
    }
}

TEST(Positions, TakeNothingElse) {
    for (const char *word : {"",
                             "-",
                             "x",
                             "1.5",
                             "+5",
                             "1e3",
                             "s",
                             "ms",
                             ":",
                             "1:",
                             ":30",
                             "1:60",
                             "1:5s",
                             "1:2:3",
                             "1.5:30",
                             "1..5s",
                             "1.s",
                             "--5",
                             "- 5",
                             "1,5s",
                             "nans",
                             "0x10",
                             "99999999999999999999",
                             "9999999999s"})
        EXPECT_EQ(Position::parse(word), std::nullopt) << word;
}

TEST(Positions, CompareWhereBothAreOfAKind) {
    const auto isBelow = [](const char *a, const char *b) {
        return Position::isBelow(*Position::parse(a), *Position::parse(b));
    };
    EXPECT_EQ(isBelow("10", "11"), true);
    EXPECT_EQ(isBelow("11", "11"), false);
    EXPECT_EQ(isBelow("59.999s", "1:00"), true);
    EXPECT_EQ(isBelow("20ms", "0.02s"), false);
    EXPECT_EQ(isBelow("10", "1s"), std::nullopt);
}

}  // namespace
}  // namespace kiv::Cli
