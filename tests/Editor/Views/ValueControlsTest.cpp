#include <gtest/gtest.h>

#include "Editor/Views/Choices.h"
#include "Editor/Views/FocusRing.h"
#include "Editor/Views/Knob.h"
#include "Editor/Views/ParameterCell.h"
#include "Editor/Views/Segments.h"
#include "Editor/Views/WindowPartsFixture.h"

namespace kiv {
namespace {

using Role = AudioEditorThemeColor;

struct ValueControlsTest : WindowPartsFixture {
    FocusRing ring{style, &window};

    ValueControlsTest() { window.setFocusPolicy(Qt::StrongFocus); }
    ~ValueControlsTest() override { window.hide(); }
    template <class Control>
    Control &shown(Control *control) {
        control->move(40, 40);
        control->resize(control->sizeHint());
        ring.followAll(&window);
        showWindow();
        window.setFocus();
        return *control;
    }
    // The accent under the pointer.
    QColor touched() const {
        return toColor(mix(style.colors()[Role::accentBg], style.colors()[Role::topbarButtonText], 0.08));
    }
    QColor colorAt(QWidget &widget, QPoint at) { return window.grab().toImage().pixelColor(widget.pos() + at); }
};

struct CellTest : ValueControlsTest {
    double percent = 50;
    ParameterCell &cell = shown(make());

    ParameterCell *make() {
        auto *made = new ParameterCell(style, &window);
        made->input().onStep = [this](double steps, bool isSmall) { set(percent + steps * (isSmall ? 1 : 5)); };
        made->input().onReset = [this] { set(50); };
        made->inPlace().onEntered = [this](const std::string &typed) {
            if (typed.find_first_not_of("0123456789") != typed.npos) return false;
            set(std::stod(typed));
            return true;
        };
        made->setScene(scene());
        return made;
    }
    ParameterCellScene scene() const {
        return {.label = "Sensitivity", .value = std::to_string(int(percent)), .unit = "%", .facts = {percent, 0, 100, 1}};
    }
    void set(double value) {
        percent = value;
        cell.setScene(scene());
    }
};

TEST_F(CellTest, IsDraggedScrolledAndReset) {
    wheel(&cell, 2);
    wheel(&cell, -1, Qt::ShiftModifier);
    EXPECT_EQ(percent, 59);
    pointer(&cell, QEvent::MouseButtonPress, {20, 20});
    pointer(&cell, QEvent::MouseMove, {20, -12});
    EXPECT_EQ(percent, 79);
    EXPECT_EQ(cell.cursor().shape(), Qt::BlankCursor);
    EXPECT_EQ(colorAt(cell, {60, 36}), style.color(Role::accentBg));
    pointer(&cell, QEvent::MouseButtonRelease, {20, -12});
    EXPECT_NE(cell.cursor().shape(), Qt::BlankCursor);
    EXPECT_FALSE(cell.hasFocus()) << "the keyboard stays where it was";
    pointer(&cell, QEvent::MouseButtonDblClick, {20, 20});
    EXPECT_EQ(percent, 50);
}

TEST_F(CellTest, KeysStepAndTypedDigitsOpenTheField) {
    click(&cell);
    ASSERT_TRUE(cell.hasFocus());
    EXPECT_FALSE(ring.isVisible()) << "no key has moved the focus";
    key(&cell, Qt::Key_Up);
    key(&cell, Qt::Key_Down, {}, Qt::ShiftModifier);
    EXPECT_EQ(percent, 54);
    key(&cell, Qt::Key_7, "7");
    ASSERT_TRUE(cell.inPlace().isOpen());
    Field *field = cell.inPlace().field();
    type(field, "2x");
    key(field, Qt::Key_Return);
    EXPECT_TRUE(cell.inPlace().isOpen()) << "72x cannot be read";
    EXPECT_EQ(colorAt(cell, {40, 1}), toColor(style.colors().over));
    key(field, Qt::Key_Backspace);
    EXPECT_EQ(colorAt(cell, {40, 1}), style.color(Role::accentBg));
    key(field, Qt::Key_Return);
    EXPECT_EQ(percent, 72);
    EXPECT_TRUE(cell.hasFocus());
    EXPECT_TRUE(ring.isVisible());
    key(&cell, Qt::Key_Return);
    EXPECT_EQ(cell.inPlace().field()->selectedText(), "72");
    type(cell.inPlace().field(), "9");
    key(cell.inPlace().field(), Qt::Key_Escape);
    EXPECT_EQ(percent, 72);
}

TEST_F(ValueControlsTest, KnobsTurnByPartsOfTheirRange) {
    auto &knob = shown(new Knob(style, &window));
    double fraction = 0.5;
    knob.onTurn = [&](double by) { knob.setScene({.name = "Frequency", .fraction = fraction += by, .text = "1 kHz"}); };
    knob.setScene({.name = "Frequency", .fraction = fraction, .text = "1.10 kHz"});
    wheel(&knob, 1);
    EXPECT_NEAR(fraction, 0.51, 1e-9);
    wheel(&knob, -1, Qt::ShiftModifier);
    EXPECT_NEAR(fraction, 0.509, 1e-9);
    pointer(&knob, QEvent::MouseButtonPress, {19, 18});
    pointer(&knob, QEvent::MouseMove, {19, -32});
    pointer(&knob, QEvent::MouseButtonRelease, {19, -32});
    EXPECT_NEAR(fraction, 0.759, 1e-9) << "200 pixels are the whole range";
    EXPECT_GE(knob.width(), 38);
    key(&knob, Qt::Key_3, "3");
    EXPECT_EQ(knob.inPlace().field()->text(), "3");
}

TEST_F(ValueControlsTest, SegmentsAreOneStopAndMoveByArrows) {
    auto &segments = shown(new Segments(style, ButtonKind::bar, {"Transients", "Strip Silence", "Grid"}, &window));
    std::vector<int> chosen;
    segments.onChosen = [&](int index) { chosen.push_back(index); };
    segments.setChosen(1);
    EXPECT_TRUE(chosen.empty()) << "only what the user does is told";
    segments.button(1)->setFocus(Qt::TabFocusReason);
    EXPECT_EQ(ring.geometry(), segments.geometry().adjusted(-3, -3, 3, 3));
    key(segments.button(1), Qt::Key_Right);
    key(segments.button(2), Qt::Key_Right);
    EXPECT_TRUE(segments.button(2)->hasFocus());
    key(segments.button(2), Qt::Key_Left);
    click(segments.button(0));
    EXPECT_EQ(chosen, (std::vector{2, 1, 0}));
    int stops = 0;
    for (int i = 0; i < segments.count(); ++i) stops += (segments.button(i)->focusPolicy() & Qt::TabFocus) != 0;
    EXPECT_EQ(stops, 1);
    EXPECT_EQ(colorAt(segments, {segments.button(0)->width() - 1, 14}), touched())
        << "the chosen one stands over its neighbour's border";
}

TEST_F(ValueControlsTest, ChoicesAreToggledByClickAndEnter) {
    auto &check = shown(new CheckBox(style, "Scroll the view with the playhead", &window));
    click(&check);
    EXPECT_TRUE(check.isChecked());
    EXPECT_NE(colorAt(check, {2, 14}), toColor(style.colors().fieldBorder));
    key(&check, Qt::Key_Return);
    EXPECT_FALSE(check.isChecked());
    check.setFocus(Qt::TabFocusReason);
    EXPECT_EQ(ring.size(), QSize(22, 22)) << "the mark wears the ring";
}

}  // namespace
}  // namespace kiv
