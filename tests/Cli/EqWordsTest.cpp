#include "Cli/EqWords.h"

#include <gmock/gmock.h>

namespace kiv::Cli {
namespace {

EqSettings parsed(const std::vector<std::string> &words) {
    EqSettings settings;
    for (const std::string &word : words) parseEqSetting(word)(settings);
    return settings;
}

TEST(EqWords, ChangeWhatTheyNameAndKeepTheRest) {
    const EqSettings all =
        parsed({"gain=-3.5", "lowCut=on:80", "highCut=on", "band1=on:300:6:2", "band3=off:8000", "band1=on:400"});
    EXPECT_EQ(all.gainDb, -3.5);
    EXPECT_EQ(all.lowCut, (EqCut{true, 80}));
    EXPECT_EQ(all.highCut, (EqCut{true, 16000}));
    EXPECT_EQ(all.bands[1], (EqBand{true, 400, 6, 2}));
    EXPECT_EQ(all.bands[3], (EqBand{false, 8000, 0, 0.707}));
    EXPECT_EQ(all.bands[0], EqSettings::defaultBands[0]);
}

TEST(EqWords, ThatAreWrongAreToldSo) {
    const std::pair<const char *, const char *> cases[] = {{"", "none of: gain="},
                                                           {"gain", "none of: gain="},
                                                           {"band4=on", "none of: gain="},
                                                           {"Gain=3", "none of: gain="},
                                                           {"gain=", "“” is no number"},
                                                           {"gain=13", "“13” is no number from -12 to 12"},
                                                           {"gain=nan", "“nan” is no"},
                                                           {"lowCut=yes", "neither on nor"},
                                                           {"lowCut=on:19", "from 20 to 20000"},
                                                           {"lowCut=on:20:3", "a cut is"},
                                                           {"band0=on:100:21", "-20 to 20"},
                                                           {"band0=on:100:2:0.05", "from 0.1 to 10"},
                                                           {"band0=on:1:2:3:4", "a band is"},
                                                           {"band0=", "neither on nor off"},
                                                           {"band0=on::3", "“” is no number"}};
    for (const auto &[word, fault] : cases) {
        try {
            parseEqSetting(word);
            ADD_FAILURE() << word;
        } catch (const WrongWords &error) {
            EXPECT_THAT(error.what(), testing::HasSubstr(fault));
        }
    }
}

}  // namespace
}  // namespace kiv::Cli
