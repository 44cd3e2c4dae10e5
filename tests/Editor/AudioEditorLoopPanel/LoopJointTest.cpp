#include <gtest/gtest.h>

#include <cmath>

#include "Editor/AudioEditorCore/TestSounds.h"
#include "Editor/AudioEditorLoopPanel/AudioEditorJoint.h"

namespace kiv {
namespace {

using Curve = LoopCrossfade::Curve;

TEST(LoopCrossfade, turnsTheLoopsEndIntoWhatStandsBeforeItsStart) {
    const AudioEditorBuffer sound = inPieces(noise(1000, 2, 1));
    for (const Curve curve : {Curve::equalGain, Curve::equalPower}) {
        const LoopCrossfade fade{{300, 700}, 200, curve};
        const AudioEditorBuffer result = crossfaded(sound, fade);
        ASSERT_EQ(result.frames(), 1000);
        EXPECT_EQ(result.part({0, 500}), sound.part({0, 500}));
        EXPECT_EQ(result.part({700, 1000}), sound.part({700, 1000}));
        EXPECT_NEAR(result.sample(699, 1), sound.sample(299, 1), 1e-6) << "the last frame is all of the other side";
        const double half = curve == Curve::equalGain ? 0.5 : std::sqrt(0.5);
        EXPECT_NEAR(fade.gains(99).in, half, 1e-6);
        EXPECT_NEAR(fade.gains(99).out, half, 1e-6);
        for (std::int64_t i = 0; i < 200; ++i) {
            const auto [in, out] = fade.gains(i);
            EXPECT_NEAR(curve == Curve::equalGain ? in + out : in * in + out * out, 1, 1e-6);
            EXPECT_FLOAT_EQ(result.sample(500 + i, 0), out * sound.sample(500 + i, 0) + in * sound.sample(100 + i, 0));
        }
    }
    EXPECT_EQ(crossfaded(sound, {{300, 700}, 0, Curve::equalGain}), sound);
}

TEST(AudioEditorJoint, showsTheEndRunningIntoTheStart) {
    const AudioEditorBuffer sound = noise(1000, 2, 1);
    const auto expectFrames = [&](const std::vector<float> &shown, std::int64_t at, std::int64_t first, std::int64_t count) {
        for (std::int64_t i = 0; i < count; ++i)
            for (std::int64_t c = 0; c < 2; ++c) {
                const bool isThere = first + i >= 0 && first + i < 1000;
                EXPECT_EQ(shown[std::size_t((at + i) * 2 + c)], isThere ? sound.sample(first + i, c) : 0) << first + i;
            }
    };
    const auto plain = makeJoint(sound, {{30, 990}, 0, Curve::equalGain}, 50, 7);
    ASSERT_EQ(plain.buffer.size(), 200u);
    expectFrames(plain.buffer, 0, 940, 50);
    expectFrames(plain.buffer, 50, 30, 50);
    expectFrames(plain.continuation, 0, -20, 50);
    EXPECT_FALSE(plain.original);
    EXPECT_EQ(plain.generation, 7);
    expectFrames(makeJoint(sound, {{980, 1000}, 0, Curve::equalGain}, 50, 7).buffer, 50, 980, 50);

    for (const std::int64_t frames : {20, 80}) {  // less, and more, than is shown
        const LoopCrossfade fade{{100, 500}, frames, Curve::equalPower};
        const auto joint = makeJoint(sound, fade, 50, 1);
        EXPECT_EQ(joint.fade, frames);
        ASSERT_TRUE(joint.original);
        expectFrames(*joint.original, 0, 450, 50);
        const std::vector<float> heard = crossfaded(sound, fade).part({450, 500}).samples();
        EXPECT_TRUE(std::equal(heard.begin(), heard.end(), joint.buffer.begin()));
    }
}

TEST(AudioEditorJoint, isNoNarrowerThanFourFrames) {
    EXPECT_EQ(jointHalf(0.01, 44'100), 441);
    EXPECT_EQ(jointHalf(0.01, 159), 4);
    EXPECT_EQ(jointHalf(0.00999, 1000), 9);
}

}  // namespace
}  // namespace kiv
