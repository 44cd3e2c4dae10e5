#include <gtest/gtest.h>

#include <limits>
#include <numeric>
#include <random>

#include "Editor/AudioEditorCore/AudioEditorBuffer.h"
#include "TestSounds.h"

namespace kiv {
namespace {

TEST(Buffer, LeavesATrailingIncompleteFrameOut) {
    const std::vector<float> seven(7, 1.0f);
    EXPECT_EQ(AudioEditorBuffer(seven, 2, 44100).frames(), 3);
    EXPECT_EQ(AudioEditorBuffer(seven, 2, 44100).samples().size(), 6u);
    EXPECT_EQ(AudioEditorBuffer(seven, 8, 44100).frames(), 0);
    SampleMemory memory(7);
    std::fill_n(memory.data(), 7, 1.0f);
    EXPECT_EQ(AudioEditorBuffer(std::move(memory), 3, 44100).frames(), 2);
}

TEST(Buffer, RaisesChannelsAndRateToOne) {
    const AudioEditorBuffer buffer(std::vector<float>{1, 2}, 0, -5);
    EXPECT_EQ(buffer.channels(), 1);
    EXPECT_EQ(buffer.sampleRate(), 1);
    EXPECT_EQ(buffer.frames(), 2);
    EXPECT_EQ(buffer.atRate(0).sampleRate(), 1);
}

TEST(Buffer, ClampsRangesAndYieldsNothingForEmptyOnes) {
    constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
    const AudioEditorBuffer buffer = noise(100, 2, 1);
    const struct {
        FrameRange asked;
        std::optional<FrameRange> got;
    } cases[] = {
        {{10, 5}, {}},
        {{-20, -1}, {}},
        {{100, 200}, {}},
        {{5, 5}, {}},
        {{-5, 3}, {{0, 3}}},
        {{90, 500}, {{90, 100}}},
        {{-most, most}, {{0, 100}}},
        {{most, -most}, {}},
    };
    for (const auto &c : cases) EXPECT_EQ(buffer.clampedRange(c.asked), c.got) << c.asked.lo << " ..< " << c.asked.hi;
    EXPECT_EQ(AudioEditorBuffer().clampedRange({0, 1}), std::nullopt);
}

TEST(Buffer, EqualMeansSamplesChannelsAndRate) {
    const std::vector<float> samples{1, 2, 3, 4};
    const AudioEditorBuffer a(samples, 2, 44100);
    EXPECT_EQ(a, AudioEditorBuffer(samples, 2, 44100));
    EXPECT_NE(a, AudioEditorBuffer(samples, 1, 44100));
    EXPECT_NE(a, AudioEditorBuffer(samples, 2, 48000));
    EXPECT_NE(a, AudioEditorBuffer(std::vector<float>{1, 2, 3, 5}, 2, 44100));
    EXPECT_NE(a, a.part({0, 1}));
    // Pieced together otherwise, but the same sound.
    const AudioEditorBuffer whole = noise(50000, 2, 7);
    const AudioEditorBuffer pieced = whole.part({0, 20000}).replacing({20000, 20000}, whole.part({20000, 50000}));
    const AudioEditorBuffer copy(whole.part({10, 30000}).samples(), 2, 44100);
    EXPECT_EQ(whole.replacing({10, 30000}, copy), pieced);
}

TEST(Buffer, WhatWasMovedFromIsEmpty) {
    AudioEditorBuffer a = noise(10, 1, 1);
    const AudioEditorBuffer b = std::move(a);
    EXPECT_EQ(b.frames(), 10);
    EXPECT_TRUE(a.isEmpty());  // NOLINT: the state after the move is what is tested
    EXPECT_TRUE(a.samples().empty());
    EXPECT_EQ(a.sharedPrefix(b), 0);
}

// Edits at random places against the same edits of a plain vector. The sizes make pieces of all kinds: crumbs, many crumbs side
// by side, pieces just below and above the length from which they are left alone.
class RandomEdits : public testing::TestWithParam<int> {
protected:
    void edit() {
        const std::int64_t channels = model_.buffer.channels(), frames = model_.buffer.frames();
        std::int64_t lo = between(0, frames), hi = chance_() % 3 ? std::min(frames, lo + between(0, 9000)) : lo;
        if (chance_() % 20 == 0) lo = 0, hi = frames / 2;
        const AudioEditorBuffer with = material(channels);
        const auto vectorWith = with.samples();
        const auto at = model_.plain.begin();
        model_.plain.insert(model_.plain.erase(at + lo * channels, at + hi * channels), vectorWith.begin(), vectorWith.end());
        model_.buffer = model_.buffer.replacing({lo, hi}, with);
    }

    // Something new, nothing, or a part of the sound itself.
    AudioEditorBuffer material(std::int64_t channels) {
        const std::int64_t frames = model_.buffer.frames();
        if (chance_() % 4 == 0) return AudioEditorBuffer(channels, 44100);
        if (chance_() % 3) return noise(between(1, chance_() % 2 ? 100 : 9000), channels, std::uint32_t(chance_()));
        const std::int64_t lo = between(0, frames);
        return model_.buffer.part({lo, std::min(frames, lo + between(0, 20000))});
    }

    std::int64_t between(std::int64_t lo, std::int64_t hi) { return lo + std::int64_t(chance_() % std::uint64_t(hi - lo + 1)); }

    std::mt19937 chance_{12345};
    struct {
        AudioEditorBuffer buffer;
        std::vector<float> plain;
    } model_;
};

TEST_P(RandomEdits, EqualTheSameEditsOfAPlainVector) {
    const std::int64_t channels = GetParam();
    model_.buffer = noise(30000, channels, 1);
    model_.plain = model_.buffer.samples();
    for (int round = 0; round < 300; ++round) {
        edit();
        ASSERT_EQ(model_.buffer.frames() * channels, std::int64_t(model_.plain.size()));
        ASSERT_TRUE(model_.buffer.samples() == model_.plain) << "round " << round;
        const std::int64_t frames = model_.buffer.frames();
        if (frames == 0) continue;
        const std::int64_t lo = between(0, frames - 1), hi = between(lo, frames), channel = between(0, channels - 1);
        ASSERT_EQ(model_.buffer.sample(lo, channel), model_.plain[std::size_t(lo * channels + channel)]);
        std::vector<float> one(std::size_t(hi - lo));
        model_.buffer.copyChannel({lo, hi}, channel, one.data());
        for (std::int64_t i = 0; i < hi - lo; ++i)
            ASSERT_EQ(one[std::size_t(i)], model_.plain[std::size_t((lo + i) * channels + channel)]);
        const auto first = model_.plain.begin();
        ASSERT_EQ(model_.buffer.part({lo, hi}).samples(), std::vector<float>(first + lo * channels, first + hi * channels));
    }
}

TEST_P(RandomEdits, LeaveWhatTheySharedInPlace) {
    const std::int64_t channels = GetParam(), crumbs = 2 * 8192 / channels;
    model_.buffer = noise(60000, channels, 1);
    for (int round = 0; round < 300; ++round) {
        const AudioEditorBuffer before = model_.buffer;
        const std::int64_t lo = between(0, before.frames()), hi = between(lo, before.frames());
        const AudioEditorBuffer after = before.replacing({lo, hi}, material(channels));
        const std::int64_t prefix = after.sharedPrefix(before), suffix = after.sharedSuffix(before);
        // Crumbs beside the seams may have been copied, nothing else: each merges with at most one short neighbour.
        ASSERT_GE(prefix, lo - crumbs) << "round " << round;
        ASSERT_GE(suffix, before.frames() - hi - crumbs) << "round " << round;
        ASSERT_EQ(before.sharedPrefix(after), prefix);
        ASSERT_EQ(before.sharedSuffix(after), suffix);
        ASSERT_TRUE(after.part({0, prefix}) == before.part({0, prefix}));
        ASSERT_EQ(AudioEditorBuffer(after.part({0, prefix}).samples(), channels, 44100).samples(),
                  before.part({0, prefix}).samples());
        const FrameRange mine{after.frames() - suffix, after.frames()}, theirs{before.frames() - suffix, before.frames()};
        ASSERT_EQ(after.part(mine).samples(), before.part(theirs).samples());
        model_.buffer = after.frames() > 200000 || after.frames() < 1000 ? noise(60000, channels, 2) : after;
    }
}

INSTANTIATE_TEST_SUITE_P(Channels, RandomEdits, testing::Values(1, 2, 3, 6));

TEST(Buffer, ManySmallEditsDoNotLeaveACrumbEach) {
    AudioEditorBuffer buffer = noise(100000, 1, 1);
    for (int i = 0; i < 2000; ++i) buffer = buffer.replacing({50000 + i, 50000 + i}, noise(1, 1, std::uint32_t(i)));
    int spans = 0;
    buffer.forEachSpan({0, buffer.frames()}, [&](std::span<const float>, FrameRange) { ++spans; });
    EXPECT_LE(spans, 4);
    EXPECT_EQ(buffer.frames(), 102000);
}

TEST(Buffer, SharingStopsWhereMemoryDiffers) {
    const AudioEditorBuffer a = noise(30000, 2, 1);
    const AudioEditorBuffer sameValues(a.samples(), 2, 44100);
    EXPECT_EQ(a.sharedPrefix(sameValues), 0) << "equal, but not the same memory";
    EXPECT_EQ(a.sharedPrefix(a), 30000);
    EXPECT_EQ(a.sharedSuffix(a), 30000);
    const AudioEditorBuffer changed = a.replacing({10000, 12000}, noise(2000, 2, 5));
    EXPECT_EQ(a.sharedPrefix(changed), 10000);
    EXPECT_EQ(a.sharedSuffix(changed), 18000);
    const AudioEditorBuffer longer = a.replacing({30000, 30000}, noise(5000, 2, 5));
    EXPECT_EQ(a.sharedPrefix(longer), 30000);
    EXPECT_EQ(a.sharedSuffix(longer), 0);
    EXPECT_EQ(a.part({5000, 30000}).sharedSuffix(a), 25000);
    EXPECT_EQ(a.sharedPrefix(noise(30000, 1, 1)), 0) << "other channel counts share nothing";
    EXPECT_EQ(AudioEditorBuffer(2, 44100).sharedPrefix(a), 0);
}

}  // namespace
}  // namespace kiv
