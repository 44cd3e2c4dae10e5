#include <gtest/gtest.h>

#include "Editor/Surfaces/KnobGeometry.h"
#include "Editor/Surfaces/ValueInput.h"

namespace kiv {
namespace {

TEST(StepCounter, GivesWholeStepsAndTurnsBackAtOnce) {
    StepCounter counter;
    int total = 0;
    for (int i = 0; i < 10; ++i) total += counter.add(0.25);
    EXPECT_EQ(total, 2);
    EXPECT_EQ(counter.add(-1), -1) << "the half step upwards is forgotten";
    EXPECT_EQ(counter.add(3.5), 3);
    EXPECT_EQ(counter.add(0.5), 1);
}

// Writes down what the gestures mean: "+2", "-1s" for a small step, "reset", "open:7", "began", "ended", "cancelled".
struct ValueInputTest : testing::Test {
    ValueInput cell{8, Stepping::whole}, knob{2, Stepping::continuous};
    std::string told;

    ValueInputTest() {
        for (ValueInput *input : {&cell, &knob}) {
            input->onStep = [this](double steps, bool isSmall) {
                char text[32];
                std::snprintf(text, sizeof text, "%+g%s ", steps, isSmall ? "s" : "");
                told += text;
            };
            input->onReset = [this] { told += "reset "; };
            input->onOpen = [this](const std::string &typed) { told += "open:" + typed + " "; };
            input->onDragBegan = [this] { told += "began "; };
            input->onDragEnded = [this](bool isCancelled) { told += isCancelled ? "cancelled " : "ended "; };
        }
    }
    std::string take() { return std::exchange(told, {}); }
};

TEST_F(ValueInputTest, DragsStepByPixelsUpwards) {
    cell.press({40, 20});
    cell.move({40, 21});
    EXPECT_FALSE(cell.isDragging()) << "a trembling hand is no drag";
    cell.move({40, 12});
    cell.move({40, 5, {.shift = true}});
    cell.move({40, -4});
    cell.move({40, 6});
    EXPECT_FALSE(cell.release());
    EXPECT_EQ(take(), "began +1 +2 -1 ended ");
    knob.press({40, 20});
    knob.move({40, 16});
    knob.move({40, 17, {.shift = true}});
    EXPECT_TRUE(knob.cancel());
    EXPECT_EQ(take(), "began +2 -0.5s cancelled ");
}

TEST_F(ValueInputTest, TheHiddenPointerIsTakenBackWithoutAJump) {
    knob.press({40, 20});
    EXPECT_FALSE(knob.move({40, -60}));
    EXPECT_TRUE(knob.move({40, -100}));
    knob.returned();
    EXPECT_EQ(take(), "began +40 +20 ");
    knob.move({40, -102});  // was on its way when the pointer was taken back
    knob.move({40, -104});
    EXPECT_EQ(take(), "+1 +1 ");
    knob.move({40, 18});
    knob.move({40, 16});
    EXPECT_EQ(take(), "+1 +1 ");
}

TEST_F(ValueInputTest, WheelKeysAndTyping) {
    cell.turn({.up = 0.5});
    cell.turn({.up = 0.5});
    cell.turn({.up = -1, .modifiers = {.shift = true}});
    knob.turn({.up = 0.5});
    EXPECT_EQ(take(), "+1 -1s +0.5 ");
    cell.key(ValueKey::up, false);
    cell.key(ValueKey::down, true);
    cell.key(ValueKey::open, false);
    EXPECT_EQ(take(), "+1 -1s open: ");
    for (const char *text : {"7", "-", ",", "a", "", "12"}) cell.type(text);
    EXPECT_EQ(take(), "open:7 open:- open:, ");
}

TEST_F(ValueInputTest, ClicksAreNotDrags) {
    cell.press({40, 20});
    EXPECT_TRUE(cell.release());
    cell.doubleClick();
    EXPECT_FALSE(cell.release());
    cell.move({40, 90});
    EXPECT_FALSE(cell.cancel());
    EXPECT_EQ(take(), "reset ");
}

TEST(KnobGeometry, TurnsFromLowerLeftToLowerRight) {
    EXPECT_EQ(KnobGeometry::angle(0.5), 0);
    const auto left = KnobGeometry::at(0, 10), top = KnobGeometry::at(0.5, 10), right = KnobGeometry::at(1, 10);
    EXPECT_LT(left.x, KnobGeometry::centre().x);
    EXPECT_GT(left.y, KnobGeometry::centre().y);
    EXPECT_NEAR(top.y, KnobGeometry::centre().y - 10, 1e-9);
    EXPECT_NEAR(left.x + right.x, 2 * KnobGeometry::centre().x, 1e-9);
    EXPECT_EQ(KnobGeometry::arc(0.5, 0.25).sweep, -67.5);
}

}  // namespace
}  // namespace kiv
