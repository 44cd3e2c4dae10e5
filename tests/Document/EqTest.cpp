#include <gmock/gmock.h>

#include <cmath>

#include "Document/DocumentWorld.h"

namespace kiv {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

struct EqWorld : DocumentWorld {
    EqWorld() {
        open(Wav::file(std::vector<int>(20000, 8000)));
        EqSettings quieter;
        quieter.gainDb = -6;
        document->eq().setSettings(quieter);
        model.setEqEnabled(true);
    }
    float level() const { return model.state().buffer.sample(100, 0) * 32768; }
};

constexpr float lowered = 8000 * 0.5011872f;

TEST(DocumentEq, ASaveAsksAboutWhatIsHeardAndNotApplied) {
    const struct {
        const char *answer;
        bool saved;
        float level;
        bool open;
    } cases[] = {
        {"Apply EQ and Save", true, lowered, false}, {"Save Without EQ", true, 8000, true}, {"Cancel", false, 8000, true}};
    for (const auto &c : cases) {
        EqWorld world;
        world.ui.answers = {c.answer};
        EXPECT_EQ(world.save(), c.saved) << c.answer;
        EXPECT_NEAR(world.level(), c.level, 0.01) << c.answer;
        EXPECT_EQ(world.model.state().eqEnabled, c.open) << c.answer;
        ASSERT_EQ(world.ui.asked.size(), 1u);
        EXPECT_EQ(world.ui.asked[0].message, "The EQ is not applied");
        EXPECT_EQ(world.ui.asked[0].informative,
                  "What you hear through the EQ is not in the audio yet. Apply it before saving?");
        EXPECT_THAT(world.ui.asked[0].buttons, ElementsAre("Apply EQ and Save", "Save Without EQ", "Cancel"));
    }
    EqWorld flat;
    flat.document->eq().reset();
    EXPECT_TRUE(flat.save());
    EqWorld closed;
    closed.model.setEqEnabled(false);
    EXPECT_TRUE(closed.save());
    EXPECT_TRUE(closed.ui.asked.empty());
}

TEST(DocumentEq, IsHeardFromTheFirstFrameGlidesAndIsAnalyzed) {
    EqWorld world;
    world.document->player().play({.range = {0, 20000}, .loop = true});
    const float full = 8000 / 32768.0f, low = lowered / 32768;
    EXPECT_THAT(world.output.render(100), testing::Each(testing::FloatNear(low, 1e-6f)));
    world.model.setEqEnabled(false);
    world.output.render(4000);
    EXPECT_THAT(world.output.render(100), testing::Each(full));
    world.model.setEqEnabled(true);
    for (int i = 0; i < 3; ++i) world.output.render(4000), world.loop.advance(32ms);
    EXPECT_THAT(world.output.render(100), testing::Each(testing::FloatNear(low, 1e-6f)));
    const EqGrid grid{100, 100, 20};
    EXPECT_TRUE(world.document->eq().analyzer().curve(EqAnalyzer::output, grid, std::vector{0.0}, 8000));
    world.document->player().stop();
    EXPECT_FALSE(world.document->eq().analyzer().curve(EqAnalyzer::output, grid, std::vector{0.0}, 8000));
}

TEST(DocumentEq, AppliesToTheSelection) {
    EqWorld world;
    world.model.select({50, 150});
    world.document->applyEq();
    world.jobs.runAll();
    EXPECT_NEAR(world.level(), lowered, 0.01);
    EXPECT_NEAR(world.model.state().buffer.sample(10, 0) * 32768, 8000, 0.01);
    EXPECT_FALSE(world.model.state().eqEnabled);
    EXPECT_EQ(world.document->eq().settings().gainDb, -6) << "the settings stay";
}

}  // namespace
}  // namespace kiv
