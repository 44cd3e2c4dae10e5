#include <gtest/gtest.h>

#include <cmath>

#include "Editor/AudioEditorCore/AudioEditorLengthChange.h"
#include "Editor/AudioEditorCore/AudioEditorLevelGrid.h"
#include "Editor/AudioEditorCore/AudioEditorMonoSource.h"
#include "Editor/AudioEditorCore/AudioEditorTimeGrid.h"
#include "Editor/AudioEditorCore/AudioEditorTimeUnit.h"

namespace kiv {
namespace {

using LengthChange = AudioEditorLengthChange;

TEST(LengthChange, MovesPositionsWithTheAudio) {
    const struct {
        const char *what;
        LengthChange change;
        std::int64_t newFrames, from, to;
    } cases[] = {
        {"before a removal", LengthChange::removed({100, 200}), 900, 99, 99},
        {"at its start", LengthChange::removed({100, 200}), 900, 100, 100},
        {"inside", LengthChange::removed({100, 200}), 900, 150, 100},
        {"at its end", LengthChange::removed({100, 200}), 900, 200, 100},
        {"behind", LengthChange::removed({100, 200}), 900, 999, 899},
        {"past the end", LengthChange::removed({100, 200}), 900, 5000, 900},
        {"before a replacement", LengthChange::replaced({100, 200}, 50), 950, 100, 100},
        {"inside", LengthChange::replaced({100, 200}, 50), 950, 150, 100},
        {"at its end", LengthChange::replaced({100, 200}, 50), 950, 200, 150},
        {"behind a longer one", LengthChange::replaced({100, 200}, 300), 1200, 201, 401},
        {"at a replacement of nothing", LengthChange::replaced({100, 100}, 50), 1050, 100, 100},
        {"at an insertion", LengthChange::inserted(0, 10), 1010, 0, 10},
        {"before it", LengthChange::inserted(5, 10), 1010, 4, 4},
        {"the end behind it", LengthChange::inserted(1000, 10), 1010, 1000, 1010},
        {"before what is kept", LengthChange::kept({300, 400}), 100, 250, 0},
        {"inside", LengthChange::kept({300, 400}), 100, 350, 50},
        {"behind", LengthChange::kept({300, 400}), 100, 900, 100},
        {"no change", LengthChange::none(), 1000, 123, 123},
        {"no change, past the end", LengthChange::none(), 100, 123, 100},
        {"no change, below 0", LengthChange::none(), 100, -1, 0},
    };
    for (const auto &c : cases) EXPECT_EQ(c.change.map(c.from, c.newFrames), c.to) << c.what << ": " << c.from;
}

TEST(LengthChange, ALoopKeepsAFrameThatExists) {
    const struct {
        LengthChange change;
        std::int64_t newFrames;
        FrameRange from, to;
    } cases[] = {
        {LengthChange::removed({0, 50}), 50, {0, 10}, {0, 1}},
        {LengthChange::removed({500, 1000}), 500, {900, 1000}, {499, 500}},
        {LengthChange::removed({100, 200}), 900, {150, 300}, {100, 200}},
        {LengthChange::kept({0, 100}), 100, {1000, 1010}, {99, 100}},
        {LengthChange::removed({0, 10}), 0, {2, 5}, {0, 1}},
        {LengthChange::none(), 1000, {10, 20}, {10, 20}},
        {LengthChange::inserted(10, 5), 1005, {10, 20}, {15, 25}},
    };
    for (const auto &c : cases) EXPECT_EQ(c.change.mapLoop(c.from, c.newFrames), c.to) << c.from.lo << " ..< " << c.from.hi;
}

TEST(MonoSource, TextsAreReadAsWritten) {
    for (const AudioEditorMonoSource source : allMonoSources) EXPECT_EQ(monoSourceFromText(storedText(source)), source);
    for (const char *unknown : {"Left", "", "mix ", "both"}) EXPECT_EQ(monoSourceFromText(unknown), std::nullopt) << unknown;
    EXPECT_EQ(storedText(AudioEditorMonoSource::right), "right");
}

TEST(TimeUnit, WritesPositions) {
    using enum AudioEditorTimeUnit;
    const struct {
        AudioEditorTimeUnit unit;
        double frames;
        std::int64_t rate;
        const char *text;
    } cases[] = {
        {seconds, 1.5, 1, "1.500 s"},
        {seconds, 1.5, 0, "1.500 s"},
        {seconds, 1.5, -3, "1.500 s"},
        {seconds, 0, 44100, "0.000 s"},
        {seconds, 59.9996, 1, "60.000 s"},
        {seconds, 60, 1, "1:00.000"},
        {seconds, 65.25, 1, "1:05.250"},
        {seconds, 119.9996, 1, "2:00.000"},
        {seconds, 3725.5 * 44100, 44100, "62:05.500"},
        {samples, 1234567.6, 44100, "1234568"},
        {samples, 0, 44100, "0"},
        {samples, 158760000, 0, "158760000"},
    };
    for (const auto &c : cases) EXPECT_EQ(format(c.unit, c.frames, c.rate), c.text);
}

TEST(TimeGrid, LabelsMarks) {
    const struct {
        double seconds, step;
        const char *text;
    } cases[] = {
        {0, 0.001, "0 s"},
        {0, 60, "0 s"},
        {1e-10, 0.5, "0 s"},
        {0.25, 0.05, "250 ms"},
        {0.0125, 0.005, "12.5 ms"},
        {0.0003, 0.0001, "0.3 ms"},
        {12.5, 0.5, "12.5 s"},
        {1, 0.5, "1.0 s"},
        {5, 1, "5 s"},
        {2.05, 0.05, "2.05 s"},
        {1.234, 0.0001, "1.234 s"},
        {75, 5, "1:15"},
        {60, 5, "1:00"},
        {65, 0.05, "1:05.00"},
        {65.5, 0.5, "1:05.5"},
        {3600, 600, "60:00"},
        {60 - 1e-10, 0.5, "60.0 s"},
        {120 - 1e-10, 0.5, "2:00.0"},
    };
    for (const auto &c : cases) EXPECT_EQ(AudioEditorTimeGrid::label(c.seconds, c.step), c.text) << c.seconds << ", " << c.step;
}

TEST(TimeGrid, StepsAreTheSmallestThatKeepLabelsApart) {
    const struct {
        double least, step;
    } cases[] = {{0, 1e-9},     {1.1e-6, 2e-6}, {0.00003, 0.00005}, {0.0001, 0.0001}, {0.00011, 0.0002}, {0.0002, 0.0002},
                 {0.03, 0.05},  {0.1, 0.1},     {0.7, 1},           {1, 1},           {1.1, 2},          {4, 5},
                 {9, 10},       {10, 10},       {11, 15},           {16, 30},         {45, 60},          {61, 120},
                 {150, 300},    {500, 600},     {601, 900},         {1000, 1800},     {1801, 3600},      {3601, 7200},
                 {20000, 28800}};
    for (const auto &c : cases) EXPECT_EQ(AudioEditorTimeGrid::secondsStep(c.least / 92, 92), c.step) << c.least;
    const std::pair<double, std::int64_t> samples[] = {{0.01, 1}, {1, 1},     {1.5, 2},    {3, 5},
                                                       {6, 10},   {500, 500}, {501, 1000}, {3e9, 5'000'000'000}};
    for (const auto &[least, step] : samples) EXPECT_EQ(AudioEditorTimeGrid::samplesStep(least / 64, 64), step) << least;
    EXPECT_GT(AudioEditorTimeGrid::secondsStep(1e300, 92), 0) << "comes to an end";
    EXPECT_GT(AudioEditorTimeGrid::samplesStep(1e300, 92), 0);
    EXPECT_EQ(AudioEditorTimeGrid::minorDivisions(70), 10);
    EXPECT_EQ(AudioEditorTimeGrid::minorDivisions(69.9), 5);
}

std::string levels(double fullScale, double zoomDb) {
    std::string text;
    for (const auto &mark : AudioEditorLevelGrid::marks(fullScale, zoomDb)) {
        if (!text.empty()) text += ' ';
        text += AudioEditorLevelGrid::label(mark.db);
    }
    return text;
}

TEST(LevelGrid, PlacesLabelsThatKeepTheirDistance) {
    const struct {
        double fullScale, zoomDb;
        const char *labels;
    } cases[] = {
        {20, 0, "0 −∞"},
        {50, 0, "0 −∞"},             // −6 would lie 25 from the centre
        {60, 0, "0 −6 −∞"},          // −6 at 30; −3 would lie 17.5 from 0
        {104, 0, "0 −3 −6 −12 −∞"},  // −12 at 26.1
        {300, 0, "0 −3 −6 −12 −18 −∞"},
        {2000, 0, "0 −3 −6 −12 −18 −24 −36 −∞"},
        {300, -12, "0 −6 −∞"},  // full scale at 75
        {60, 6, "−6 −12 −∞"},   // what lies outside has no mark: −6 is at the edge
        {300, 36, "−36 −48 −∞"},
    };
    for (const auto &c : cases) EXPECT_EQ(levels(c.fullScale, c.zoomDb), c.labels) << c.fullScale << ", " << c.zoomDb;
}

TEST(LevelGrid, OffsetsFollowTheGain) {
    for (const auto &mark : AudioEditorLevelGrid::marks(200, -6)) {
        const double gain = std::isinf(mark.db) ? 0 : std::pow(10.0, (mark.db - 6) / 20);
        EXPECT_DOUBLE_EQ(mark.offset, 200 * gain);
    }
}

}  // namespace
}  // namespace kiv
