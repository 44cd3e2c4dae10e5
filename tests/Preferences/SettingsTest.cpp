#include "Preferences/Settings.h"

#include <gtest/gtest.h>

#include <cmath>

#include "Platform/Fake/FakeDefaults.h"

namespace kiv {
namespace {

template <class Value>
struct Case {
    std::optional<std::string> stored;
    Value read;
};

template <class Row, class Value>
void expectReads(const Row &row, const std::vector<Case<Value>> &cases) {
    for (const Case<Value> &each : cases) {
        FakeDefaults defaults;
        if (each.stored) defaults.setText(row.key, *each.stored);
        EXPECT_EQ(Settings(defaults).get(row), each.read) << row.key << " = " << each.stored.value_or("(nothing)");
    }
}

TEST(Settings, numbersAreClampedAndUnreadableOnesGiveTheDefault) {
    expectReads<NumberSetting, double>(Setting::gainDb, {{{}, 0},
                                                         {"3.25", 3.25},
                                                         {"-24", -24},
                                                         {"-24.001", -24},
                                                         {"1e6", 24},
                                                         {"inf", 24},
                                                         {"nan", 0},
                                                         {"", 0},
                                                         {"3,25", 0},
                                                         {"3 dB", 0},
                                                         {" 3", 0}});
    expectReads<NumberSetting, double>(Setting::normalizeDb, {{{}, 0}, {"-1.5", -1.5}, {"6", 0}, {"-100", -24}});
}

TEST(Settings, aFlagThatIsNoFlagGivesTheDefault) {
    expectReads<FlagSetting, bool>(Setting::followPlayhead, {{{}, false}, {"true", true}, {"yes", false}, {"1", false}});
    expectReads<FlagSetting, bool>(Setting::emptyWindowAtLaunch, {{{}, true}, {"false", false}, {"no", true}, {"0", true}});
}

TEST(Settings, aTextThatIsNotListedGivesTheDefault) {
    expectReads<TextSetting, std::string>(Setting::timeUnit, {{{}, "seconds"},
                                                              {"samples", "samples"},
                                                              {"seconds", "seconds"},
                                                              {"Samples", "seconds"},
                                                              {"seconds samples", "seconds"},
                                                              {"sample", "seconds"},
                                                              {"", "seconds"},
                                                              {"7", "seconds"}});
    expectReads<TextSetting, std::string>(Setting::monoSource,
                                          {{{}, "mix"}, {"left", "left"}, {"right", "right"}, {"Left", "mix"}});
    expectReads<TextSetting, std::string>(Setting::theme, {{{}, "auto"}, {"Dawn.json", "Dawn.json"}, {"", ""}});
}

TEST(Settings, whatIsSetReadsBackTheSame) {
    FakeDefaults defaults;
    Settings settings(defaults);
    for (const double db : {0.1, -3.3333333333333335, 24.0, -0.0, 1e-300}) {
        settings.set(Setting::gainDb, db);
        EXPECT_EQ(Settings(defaults).get(Setting::gainDb), db);
    }
    for (const bool flag : {true, false}) {
        settings.set(Setting::emptyWindowAtLaunch, flag);
        EXPECT_EQ(Settings(defaults).get(Setting::emptyWindowAtLaunch), flag);
    }
    settings.set(Setting::timeUnit, "samples");
    EXPECT_EQ(defaults.text("time_unit"), "samples");
}

TEST(Settings, whatIsStoredIsAlreadyWithinTheRange) {
    FakeDefaults defaults;
    Settings settings(defaults);
    settings.set(Setting::gainDb, 99);
    EXPECT_EQ(defaults.text("audio_editor_gain_db"), "24");
    settings.set(Setting::gainDb, std::nan(""));
    EXPECT_EQ(defaults.text("audio_editor_gain_db"), "0");
    settings.set(Setting::monoSource, "both");
    EXPECT_EQ(defaults.text("audio_editor_mono_source"), "mix");
}

}  // namespace
}  // namespace kiv
