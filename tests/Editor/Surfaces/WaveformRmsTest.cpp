#include "Editor/Surfaces/WaveformRms.h"

#include "Editor/AudioEditorCore/AudioEditorOps.h"
#include "Editor/Surfaces/SurfaceFixture.h"
#include "Platform/Fake/FakeJobs.h"

namespace kiv {
namespace {

TEST(BlockPowers, AreTheMeanSquaresOf256Frames) {
    std::vector<float> samples(2 * 300, 0.5f);
    for (std::size_t i = 1; i < samples.size(); i += 2) samples[i] = i < 2 * 256 ? -1.0f : 0.25f;
    const BlockPowers powers = powersOf(AudioEditorBuffer(samples, 2, 44100));
    EXPECT_EQ(powers.channels, (std::vector<std::vector<float>>{{0.25f, 0.25f}, {1.0f, 0.0625f}}));
}

TEST(BlockPowers, OfASoundBeforeAreTakenOverWhereNothingChanged) {
    const AudioEditorBuffer before = noise(256 * 1000, 2, 1);
    const BlockPowers old = powersOf(before);
    struct Row {
        AudioEditorBuffer now;
        std::int64_t unknown;
    };
    const std::vector<Row> rows{
        {before, 0},
        {AudioEditorOps::reversed(before, {256 * 500, 256 * 502}), 2},
        {AudioEditorOps::scaled(before, {256 * 500 + 5, 256 * 500 + 6}, 0.5), 1},
        {AudioEditorOps::removing(before, {256 * 600, 256 * 601}), 399},  // what moved is read again
        {AudioEditorOps::removing(before, {256 * 999, 256 * 1000}), 0},
        {AudioEditorOps::withChannels(before, 3), 1000},
        {AudioEditorBuffer(2, 44100), 0},
    };
    for (std::size_t i = 0; i < rows.size(); ++i) {
        BlockPowers powers = carriedPowers(rows[i].now, before, old);
        EXPECT_EQ(unknownBlocks(powers), rows[i].unknown) << i;
        completePowers(rows[i].now, powers);
        EXPECT_EQ(powers, powersOf(rows[i].now)) << i;
    }
}

struct WaveformRmsTest : ModelFixture {
    FakeJobs jobs;
    WaveformRms rms{model, jobs};
    int completions = 0;
    Subscription completed = rms.completed.add([this](const WaveformRms &) { ++completions; });
    const AudioEditorBuffer large = noise(3 << 20, 1, 1);  // more than is read at once

    bool isCurrent() const { return rms.powers() == powersOf(buffer()); }
};

TEST_F(WaveformRmsTest, OfASmallSoundIsThereAtOnce) {
    const std::int64_t before = rms.revision();
    load(noise(5000, 2, 3));
    EXPECT_TRUE(isCurrent());
    EXPECT_GT(rms.revision(), before);
    EXPECT_EQ(jobs.waiting(), 0);
}

TEST_F(WaveformRmsTest, OfALargeSoundComesLater) {
    load(large);
    EXPECT_EQ(unknownBlocks(rms.powers()), large.frames() / 256);
    EXPECT_EQ(completions, 0);
    const std::int64_t before = rms.revision();
    jobs.runAll();
    EXPECT_TRUE(isCurrent());
    EXPECT_GT(rms.revision(), before);
    EXPECT_EQ(completions, 1);
}

TEST_F(WaveformRmsTest, AnEditReadsOnlyWhatItTouched) {
    load(large);
    jobs.runAll();
    AudioEditorBuffer edited = AudioEditorOps::scaled(large, {1000, 2000}, 0.5);
    model.commit(std::move(edited), 0, {}, AudioEditorLengthChange::none());
    EXPECT_TRUE(isCurrent());
    EXPECT_EQ(jobs.waiting(), 0);
}

TEST_F(WaveformRmsTest, AResultForAnOlderSoundIsDropped) {
    load(large);
    ASSERT_TRUE(jobs.work());
    load(noise(5000, 2, 3));
    jobs.runAll();
    EXPECT_TRUE(isCurrent());
    EXPECT_EQ(completions, 0);
}

TEST_F(WaveformRmsTest, MayGoWhileItsJobRuns) {
    auto other = std::make_unique<WaveformRms>(model, jobs);
    load(large);
    other.reset();
    jobs.runAll();
    EXPECT_TRUE(isCurrent());
}

}  // namespace
}  // namespace kiv
