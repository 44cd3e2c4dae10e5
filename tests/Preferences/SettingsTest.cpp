#include "Preferences/Settings.h"

#include <gtest/gtest.h>

#include <cmath>

#include "Platform/Fake/FakeDefaults.h"

namespace kiv {
namespace {

template <class Value, class Row>
void expectReads(const Row &row, const std::vector<std::pair<const char *, Value>> &cases) {
    for (const auto &[stored, value] : cases) {
        FakeDefaults defaults;
        if (stored) defaults.setText(row.key, stored);
        EXPECT_EQ(Settings(defaults).get(row), value) << row.key << " = " << (stored ? stored : "(nothing)");
    }
}

// clang-format off
TEST(Settings, whatIsStoredIsClampedAndWhatCannotBeReadGivesTheDefault) {
    expectReads<double>(Setting::gainDb, {{nullptr, 0}, {"3.25", 3.25}, {"-24", -24}, {"-24.001", -24}, {"1e6", 24}, {"inf", 24},
                                          {"nan", 0}, {"", 0}, {"3,25", 0}, {"3 dB", 0}, {" 3", 0}});
    expectReads<double>(Setting::normalizeDb, {{nullptr, 0}, {"-1.5", -1.5}, {"6", 0}, {"-100", -24}});
    expectReads<bool>(Setting::followPlayhead, {{nullptr, false}, {"true", true}, {"yes", false}, {"1", false}});
    expectReads<bool>(Setting::emptyWindowAtLaunch, {{nullptr, true}, {"false", false}, {"no", true}, {"0", true}});
    expectReads<std::string>(Setting::timeUnit, {{nullptr, "seconds"}, {"samples", "samples"}, {"seconds", "seconds"}, {"Samples", "seconds"},
                                                 {"seconds samples", "seconds"}, {"sample", "seconds"}, {"", "seconds"}, {"7", "seconds"}});
    expectReads<std::string>(Setting::monoSource, {{nullptr, "mix"}, {"left", "left"}, {"right", "right"}, {"Left", "mix"}});
    expectReads<std::string>(Setting::theme, {{nullptr, "auto"}, {"Dawn.json", "Dawn.json"}, {"", ""}});
}
// clang-format on

TEST(Settings, whatIsSetReadsBackTheSameAndIsStoredWithinTheRange) {
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
    for (const auto &[db, stored] : {std::pair(99.0, "24"), std::pair(std::nan(""), "0")}) {
        settings.set(Setting::gainDb, db);
        EXPECT_EQ(defaults.text("audio_editor_gain_db"), stored);
    }
    for (const auto &[source, stored] : {std::pair("both", "mix"), std::pair("left", "left")}) {
        settings.set(Setting::monoSource, source);
        EXPECT_EQ(defaults.text("audio_editor_mono_source"), stored);
    }
}

}  // namespace
}  // namespace kiv
