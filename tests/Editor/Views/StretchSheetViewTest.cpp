#include "Editor/Views/SheetHost.h"
#include "Editor/Views/StretchSheet.h"
#include "Editor/Views/WindowPartsFixture.h"

namespace kiv {
namespace {

struct StretchSheetViewTest : WindowPartsFixture {
    SheetHost host{style, &window};
    StretchSheet &sheet = shown();

    StretchSheet &shown() {
        load(AudioEditorBuffer(std::vector<float>(88200, 0.5f), 2, 44100));
        host.setRoom(72, 1280);
        showWindow();
        model.openDialog(Dialog::timeStretch);
        host.show(std::make_unique<StretchSheet>(model, style));
        settle();
        return static_cast<StretchSheet &>(*host.current());
    }
    const Button &apply() const {
        for (const Button *button : sheet.findChildren<Button *>())
            if (button->text() == "Apply") return *button;
        throw std::logic_error("there is no Apply");
    }
};

TEST_F(StretchSheetViewTest, NumbersAreTypedOneAfterTheOther) {
    EXPECT_TRUE(sheet.field(StretchField::time).hasFocus());
    type(&sheet.field(StretchField::time), "125");
    key(QApplication::focusWidget(), Qt::Key_Tab);
    type(&sheet.field(StretchField::semitones), "-3");
    key(QApplication::focusWidget(), Qt::Key_Tab);
    EXPECT_EQ(sheet.field(StretchField::semitones).text(), QString::fromUtf8("−3"));
    sheet.field(StretchField::cents).clearFocus();
    KeyPress nine;
    nine.plain = nine.unmodified = "9";
    EXPECT_TRUE(sheet.takeKey(nine)) << "typed before a field has the focus";
    EXPECT_EQ(model.state().stretch, (StretchSettings{StretchMode::clean, 125, 9, 0, 1000}));
    key(&sheet.field(StretchField::semitones), Qt::Key_Up);
    type(&sheet.field(StretchField::time), "x");
    EXPECT_FALSE(apply().isEnabled());
    EXPECT_EQ(model.state().stretch.semitones, 10);
}

TEST_F(StretchSheetViewTest, GrowsForItsCycle) {
    EXPECT_EQ(sheet.width(), 480);
    EXPECT_FALSE(sheet.field(StretchField::cycle).isVisible());
    sheet.segments().button(1)->click();
    EXPECT_EQ(sheet.width(), 640);
    EXPECT_EQ(sheet.mapTo(&window, QPoint(0, 0)).x(), 320);
    EXPECT_TRUE(sheet.autoButton().isVisible());
    sheet.autoButton().click();
    EXPECT_EQ(sheet.field(StretchField::cycle).text(), "990");  // a constant repeats after any lag: the shortest, 45, 22 times
    sheet.cancel();
    EXPECT_FALSE(model.state().dialog);
}

}  // namespace
}  // namespace kiv
