#include "Cli/Steps.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kiv::Cli {
namespace {

using testing::HasSubstr;

TEST(Steps, ThatAreWrongAreToldSo) {
    const std::pair<const char *, const char *> cases[] = {
        {"", "a step without words"},
        {"fadein", "there is no such step"},
        {"open", "there is no such step"},
        {"save", "there is no such step"},
        {"timeStretch",
         "the words are: timeStretch clean PERCENT SEMITONES CENTS, or timeStretch s950 PERCENT SEMITONES CENTS"},
        {"timeStretch fast 100 0 0", "“fast” is not one of: clean"},
        {"timeStretch s950 100 0 0", "“s950” is not one of: clean"},
        {"timeStretch clean 110.5 0 0", "“110.5” is no whole number"},
        {"timeStretch clean 110 inf 0", "“inf” is no whole number"},
        {"timeStretch clean auto 0 0", "“auto” is no whole number"},
        {"timeStretch s950 100 0 0 best", "“best” is no whole number"},
        {"fadeIn 3", "the step takes no words"},
        {"select 1", "the words are: select LO HI"},
        {"select 1 2 3", "the words are: select LO HI"},
        {"select 1 x", "“x” is no position"},
        {"cursor 1.5", "“1.5” is no position"},
        {"gain", "the words are: gain DB"},
        {"gain x", "“x” is no number from -24 to 24"},
        {"gain nan", "“nan” is no number from -24 to 24"},
        {"gain -24.01", "“-24.01” is no number from -24 to 24"},
        {"normalize 0.1", "“0.1” is no number from -24 to 0"},
        {"mono centre", "“centre” is not one of: left right mix"},
        {"mono \"left right\"", "“left right” is not one of: left right mix"},
        {"loop", "the words are: loop LO HI, or loop none"},
        {"loop 5 5", "LO must be below HI"},
        {"loop 2s 1500ms", "LO must be below HI"},
        {"loop all", "“all” is not one of: none"},
        {"load \"\"", "a file name is missing"},
        {"nudgeLoop middle 1", "“middle” is not one of: start end"},
        {"nudgeLoop end 1.5", "“1.5” is no whole number from"},
        {"loopCrossfade 24 equalGain", "“24” is no whole number from 0 to 23"},
        {"loopCrossfade 5", "the words are: loopCrossfade STEP equalGain|equalPower"},
        {"slicer", "the words are: slicer transients|stripSilence|grid [SETTING=VALUE …]"},
        {"slicer hits", "“hits” is not one of: transients stripSilence grid"},
        {"slicer grid divisions=3", "“divisions=3” is not one of 2, 4, 8, 16, 32, 64"},
        {"slicer grid sensitivity=1.5", "is not a whole number from 0 to 100"},
        {"slicer grid length=5", "“length=5” is no setting: sensitivity="},
        {"saveSlices a b", "the words are: saveSlices [NAME] [replace]"},
    };
    for (const auto &[step, fault] : cases) {
        try {
            parseStep(splitWords(step));
            ADD_FAILURE() << step;
        } catch (const WrongWords &error) {
            EXPECT_THAT(error.what(), HasSubstr(fault));
        }
    }
}

TEST(Steps, AreRightAtTheLimits) {
    for (const char *step : {"gain -24",
                             "gain 24",
                             "normalize -24",
                             "normalize 0",
                             "loop 0 1",
                             "loop 5 1s",
                             "loop none",
                             "timeStretch clean 1e9 -99 99",
                             "timeStretch s950 100 0 0 auto",
                             "timeStretch s950 100 0 0 99999",
                             "loopCrossfade 23 equalPower",
                             "nudgeLoop start -1",
                             "slicer transients tailDb=-120 preRollMs=100",
                             "saveSlices",
                             "saveSlices replace",
                             "saveSlices a replace",
                             "findLoop",
                             "applyLoopCrossfade",
                             "delete",
                             "select -10 1:00",
                             "select 10 5",
                             "mono left",
                             "load \"a b.wav\""})
        EXPECT_NO_THROW(parseStep(splitWords(step))) << step;
}

TEST(Steps, AreAllInTheHelp) {
    for (const char *line : {"select LO HI\n", "mono left|right|mix\n", "loop none\n", "\ndelete\n", "\nstereo"})
        EXPECT_THAT(stepsHelp(), HasSubstr(line));
}

}  // namespace
}  // namespace kiv::Cli
