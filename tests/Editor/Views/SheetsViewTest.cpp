#include <QAccessible>
#include <functional>

#include "Editor/Views/AlertSheet.h"
#include "Editor/Views/LevelSheet.h"
#include "Editor/Views/MonoSheet.h"
#include "Editor/Views/SheetHost.h"
#include "Editor/Views/StretchSheet.h"
#include "Editor/Views/WindowPartsFixture.h"

namespace kiv {
namespace {

using Question = DocumentUi::Question;

struct SheetsViewTest : WindowPartsFixture {
    SheetHost host{style, &window};
    std::vector<std::size_t> answers;

    SheetsViewTest() {
        load(AudioEditorBuffer(std::vector<float>(88200, 0.5f), 2, 44100));
        host.setRoom({0, 72, 1280, 700});
        showWindow();
    }
    Sheet &show(std::unique_ptr<Sheet> sheet) {
        host.show(std::move(sheet));
        settle();
        return *host.current();
    }
    LevelSheet &level(Dialog dialog = Dialog::gain) {
        model.openDialog(dialog);
        return static_cast<LevelSheet &>(show(std::make_unique<LevelSheet>(model, dialog, style)));
    }
    StretchSheet &stretch() {
        model.openDialog(Dialog::timeStretch);
        return static_cast<StretchSheet &>(show(std::make_unique<StretchSheet>(model, style)));
    }
    MonoSheet &mono() {
        model.openDialog(Dialog::mono);
        return static_cast<MonoSheet &>(show(std::make_unique<MonoSheet>(model, style)));
    }
    AlertSheet &alert(Question question) {
        const auto answer = [this](std::size_t button) {
            answers.push_back(button);
            host.dismiss();
        };
        return static_cast<AlertSheet &>(show(std::make_unique<AlertSheet>(style, AlertTone::warning, question, answer)));
    }
    static KeyPress typed(const char *character, std::uint64_t modifiers = 0) {
        KeyPress press;
        press.plain = press.unmodified = character;
        press.modifiers = modifiers;
        return press;
    }
    static QPushButton *button(const QWidget &sheet, const QString &text) {
        for (QPushButton *candidate : sheet.findChildren<QPushButton *>())
            if (candidate->text() == text) return candidate;
        throw std::logic_error("there is no button " + text.toStdString());
    }
    QRect place(const Sheet &sheet) const { return {sheet.mapTo(&window, QPoint()), sheet.size()}; }
};

TEST_F(SheetsViewTest, HangFromTheBarInTheMiddleAsDrawn) {
    const auto shown = [&](Sheet &sheet) {
        EXPECT_TRUE(sheet.isAncestorOf(QApplication::focusWidget()));
        const QRect all = place(sheet);
        host.dismissAll();
        model.closeDialog();
        return all;
    };
    EXPECT_EQ(shown(level()), QRect(400, 72, 480, 152));
    EXPECT_EQ(shown(mono()), QRect(400, 72, 480, 198));
    EXPECT_EQ(shown(stretch()), QRect(400, 72, 480, 166));
    setStretchMode(model, StretchMode::s950);
    EXPECT_EQ(shown(stretch()), QRect(320, 72, 640, 166));
    EXPECT_EQ(shown(alert({QString("word ").repeated(60).toStdString(), "", {"OK"}})).width(), 576);
}

// Every control of every sheet is inside the lowest window, whatever the type's size, and lies upon no other.
TEST_F(SheetsViewTest, AreWhollyUsableInTheSmallestWindow) {
    const std::string name(200, 'n');
    const std::vector<std::pair<const char *, std::function<Sheet &()>>> all{
        {"gain", [&]() -> Sheet & { return level(); }},
        {"mono", [&]() -> Sheet & { return mono(); }},
        {"clean", [&]() -> Sheet & { return setStretchMode(model, StretchMode::clean), stretch(); }},
        {"cyclic", [&]() -> Sheet & { return setStretchMode(model, StretchMode::s950), stretch(); }},
        {"long",
         [&]() -> Sheet & {
             return alert({name, name + name + name, {"Save Anyway", "Save As…", "Cancel"}});
         }},
        {"EQ", [&]() -> Sheet & {
             return alert({"The EQ is not applied",
                           "What you hear through the EQ is not in the audio yet. Apply it to the selection before saving?",
                           {"Apply EQ to Selection and Save", "Save Without EQ", "Cancel"}});
         }}};
    for (const double points : {9.0, 10.0, 12.0, 14.0, 16.0}) {
        QFont font("Inter");
        font.setPointSizeF(points);
        style.setDesktopFont(font);
        const int top = style.grown(28) + style.grown(44);
        host.setRoom({0, top, 640, 400 - top});
        for (const auto &[what, make] : all) {
            const Sheet &sheet = make();
            SCOPED_TRACE(testing::Message() << what << " at " << points);
            EXPECT_LE(place(sheet).bottom(), 399);
            std::vector<QRect> taken;
            for (QWidget *child : sheet.findChildren<QWidget *>(Qt::FindDirectChildrenOnly)) {
                if (!child->isVisible()) continue;
                EXPECT_TRUE(sheet.rect().contains(child->geometry())) << child->accessibleName().toStdString();
                const bool isButton = dynamic_cast<Button *>(child) != nullptr;
                EXPECT_GE(child->width(), isButton ? child->sizeHint().width() : 0);
                // Fields wear a frame that nothing else needs the room of; neighbours of a group share a border.
                const QRect core = child->geometry().adjusted(4, 4, -4, -4);
                for (const QRect &other : taken) EXPECT_FALSE(core.intersects(other));
                taken.push_back(core);
            }
            host.dismissAll();
            model.closeDialog();
        }
    }
}

TEST_F(SheetsViewTest, FieldSliderAndModelAgree) {
    LevelSheet &sheet = level();
    Field *field = &sheet.field();
    LevelSliderView *slider = &sheet.slider();
    EXPECT_EQ(field->text(), "0.0");
    type(field, "-4,5");
    EXPECT_EQ(state().gainDb, -4.5);
    EXPECT_EQ(slider->level(), -4.5);
    EXPECT_EQ(field->text(), "−4,5") << "is not rewritten while it is typed, but for its minus";
    slider->setFocus(Qt::TabFocusReason);
    EXPECT_EQ(field->text(), "−4.5") << "but once it is left";
    key(slider, Qt::Key_Right, {}, Qt::ShiftModifier);
    EXPECT_EQ(field->text(), "−4.4");
    key(slider, Qt::Key_End);
    EXPECT_EQ(state().gainDb, 24);
    pointer(slider, QEvent::MouseButtonPress, {20, 15});
    EXPECT_EQ(slider->cursor().shape(), Qt::ArrowCursor) << "a thumb is seen where it goes";
    EXPECT_LT(state().gainDb, -20);
    key(QApplication::focusWidget(), Qt::Key_Escape);
    EXPECT_EQ(state().gainDb, 24) << "as at the press";
    EXPECT_EQ(state().dialog, Dialog::gain) << "and the sheet stays";
}

// The same in every sheet: wheel, drag, keys, Shift, double-click, and Esc in a drag.
TEST_F(SheetsViewTest, EveryNumberIsSteppedInTheSameWay) {
    struct Row {
        QWidget *control;
        std::function<double()> value;
        double step, smallStep, reset;
    };
    const auto walk = [&](const Row &row) {
        const double start = row.value();
        wheel(row.control, 2);
        EXPECT_NEAR(row.value(), start + 2 * row.step, 1e-9);
        wheel(row.control, -1, Qt::ShiftModifier);
        key(row.control, Qt::Key_Down);
        EXPECT_NEAR(row.value(), start + row.step - row.smallStep, 1e-9);
        if (dynamic_cast<Field *>(row.control)) {
            const double before = row.value();
            drag(row.control, {20, 20}, {20, -4});
            EXPECT_NEAR(row.value(), before + 3 * row.step, 1e-9);
            pointer(row.control, QEvent::MouseButtonPress, {20, 20});
            pointer(row.control, QEvent::MouseMove, {20, 40});
            EXPECT_EQ(row.control->cursor().shape(), Qt::BlankCursor);
            key(&window, Qt::Key_Escape);
            EXPECT_NEAR(row.value(), before + 3 * row.step, 1e-9) << "as at the press";
            EXPECT_TRUE(state().dialog);
            drag(row.control, {20, 20}, {60, 22});
            EXPECT_NEAR(row.value(), before + 3 * row.step, 1e-9) << "sideways text is chosen";
        }
        pointer(row.control, QEvent::MouseButtonDblClick, {20, 20});
        EXPECT_NEAR(row.value(), row.reset, 1e-9);
        EXPECT_FALSE(row.control->toolTip().isEmpty());
    };
    LevelSheet &gain = level();
    for (QWidget *control : {static_cast<QWidget *>(&gain.field()), static_cast<QWidget *>(&gain.slider())})
        walk({control, [&] { return state().gainDb; }, 0.5, 0.1, 0});
    host.dismissAll();
    model.closeDialog();
    setStretchMode(model, StretchMode::s950);
    StretchSheet &sheet = stretch();
    for (const StretchNumber &number : stretchNumbers)
        walk({&sheet.field(number.field), [&] { return double(state().stretch.*number.value); }, double(number.step),
              double(number.smallStep), double(StretchSettings{}.*number.value)});
    EXPECT_EQ(sheet.field(StretchField::time).toolTip().toStdString(),
              "Scroll or drag up / down = 5 %, with Shift = 1 %; double-click = 100 %.");
}

TEST_F(SheetsViewTest, UnreadableTextIsNotApplied) {
    LevelSheet &sheet = level();
    type(&sheet.field(), "3x");
    EXPECT_FALSE(button(sheet, "Apply")->isEnabled());
    key(&sheet.field(), Qt::Key_Return);
    EXPECT_EQ(state().dialog, Dialog::gain);
    EXPECT_FALSE(model.canUndo());
    key(&sheet.field(), Qt::Key_Backspace);
    key(&sheet.field(), Qt::Key_Return);
    EXPECT_EQ(state().dialog, std::nullopt);
    EXPECT_NEAR(buffer().sample(0, 0), 0.5 * std::pow(10, 0.15), 1e-6);
}

TEST_F(SheetsViewTest, NumbersTypedElsewhereGoToTheField) {
    LevelSheet &sheet = level(Dialog::normalize);
    window.setFocus();
    EXPECT_TRUE(sheet.takeKey(typed("-")));
    EXPECT_EQ(QApplication::focusWidget(), &sheet.field());
    EXPECT_TRUE(state().dialogTypedAhead);
    EXPECT_EQ(state().dialogText, "-");
    EXPECT_FALSE(sheet.takeKey(typed("3", Shortcut::command)));
}

TEST_F(SheetsViewTest, EscapeCancelsAndTabStaysInside) {
    LevelSheet &sheet = level();
    for (int i = 0; i < 9; ++i) {
        key(QApplication::focusWidget(), Qt::Key_Tab);
        EXPECT_TRUE(sheet.isAncestorOf(QApplication::focusWidget()));
    }
    key(button(sheet, "Cancel"), Qt::Key_Escape);
    EXPECT_EQ(state().dialog, std::nullopt);
    EXPECT_FALSE(model.canUndo());
}

TEST_F(SheetsViewTest, StretchNumbersAreTypedOneAfterTheOther) {
    StretchSheet &sheet = stretch();
    EXPECT_TRUE(sheet.field(StretchField::time).hasFocus());
    type(&sheet.field(StretchField::time), "125");
    key(QApplication::focusWidget(), Qt::Key_Tab);
    type(&sheet.field(StretchField::semitones), "-3");
    key(QApplication::focusWidget(), Qt::Key_Tab);
    EXPECT_EQ(sheet.field(StretchField::semitones).text(), QString::fromUtf8("−3"));
    sheet.field(StretchField::cents).clearFocus();
    EXPECT_TRUE(sheet.takeKey(typed("9"))) << "typed before a field has the focus";
    EXPECT_EQ(state().stretch, (StretchSettings{StretchMode::clean, 125, 9, 0, 1000}));
    type(&sheet.field(StretchField::time), "x");
    EXPECT_FALSE(button(sheet, "Apply")->isEnabled());
    sheet.segments().button(1)->click();
    sheet.autoButton().click();
    EXPECT_EQ(sheet.field(StretchField::cycle).text(), "990");  // a constant repeats after any lag: the shortest, 45, 22 times
}

TEST_F(SheetsViewTest, MonoTilesAreChosenByKeysAndConfirmed) {
    using enum AudioEditorMonoSource;
    MonoSheet &sheet = mono();
    key(QApplication::focusWidget(), Qt::Key_L, "l");
    EXPECT_EQ(state().monoSource, left);
    key(QApplication::focusWidget(), Qt::Key_Right);
    EXPECT_EQ(state().monoSource, right);
    EXPECT_TRUE(button(sheet, "Right")->isChecked());
    click(button(sheet, "Left"));
    EXPECT_EQ(state().monoSource, left);
    key(QApplication::focusWidget(), Qt::Key_Return);
    EXPECT_EQ(buffer().channels(), 1);
}

TEST_F(SheetsViewTest, AlertButtonsStandFromRightToLeftWithCancelLast) {
    AlertSheet &sheet = alert({"Save?", "It will be lost.", {"Save", "Don’t Save", "Cancel"}});
    EXPECT_GT(button(sheet, "Save")->x(), button(sheet, "Don’t Save")->x());
    EXPECT_GT(button(sheet, "Don’t Save")->x(), button(sheet, "Cancel")->x());
    EXPECT_EQ(button(sheet, "Save"), QApplication::focusWidget());
    key(button(sheet, "Don’t Save"), Qt::Key_Return);
    sheet.cancel();
    EXPECT_EQ(answers, std::vector<std::size_t>{1}) << "answered once";
}

TEST_F(SheetsViewTest, EscapeMeansCancelWhereverItStandsInTheList) {
    alert({"A?", "", {"Yes", "Cancel", "No"}}).cancel();
    alert({"Failed", "", {"OK"}}).cancel();
    alert({"A?", "", {"Yes", "No"}}).cancel();
    EXPECT_EQ(answers, (std::vector<std::size_t>{1, 0})) << "without a Cancel there is nothing that Esc could mean";
}

TEST_F(SheetsViewTest, OneAtATime) {
    bool isGone = false;
    host.onGone = [&] { isGone = true; };
    alert({"first", "", {"OK"}});
    host.show(std::make_unique<AlertSheet>(style, AlertTone::error, Question{"second", "", {"OK"}}, nullptr));
    EXPECT_EQ(host.current()->accessibleName(), "first");
    host.dismiss();
    EXPECT_EQ(host.current()->accessibleName(), "second");
    EXPECT_FALSE(isGone);
    host.dismiss();
    EXPECT_EQ(host.current(), nullptr);
    EXPECT_TRUE(isGone);
}

TEST_F(SheetsViewTest, AssistiveToolsReadAndSetWhatIsShown) {
    const auto seen = [](QWidget *widget) { return QAccessible::queryAccessibleInterface(widget); };
    const auto toggle = [&](QWidget *choice) { seen(choice)->actionInterface()->doAction("Toggle"); };
    model.setGainDb(-4.5);
    LevelSheet &sheet = level();
    QAccessibleInterface *slider = seen(&sheet.slider());
    EXPECT_EQ(slider->role(), QAccessible::Slider);
    EXPECT_EQ(slider->text(QAccessible::Value), "−4.5 dB");
    slider->valueInterface()->setCurrentValue(3);
    EXPECT_EQ(state().gainDb, 3);
    EXPECT_EQ(seen(&sheet)->role(), QAccessible::Dialog);
    host.dismissAll();
    toggle(stretch().segments().button(1));
    EXPECT_EQ(state().stretch.mode, StretchMode::s950);
    host.dismissAll();
    toggle(button(mono(), "Right"));
    EXPECT_EQ(state().monoSource, AudioEditorMonoSource::right);
    for (QWidget *control : host.current()->findChildren<QPushButton *>())
        EXPECT_FALSE(seen(control)->text(QAccessible::Description).isEmpty()) << control->accessibleName().toStdString();
}

}  // namespace
}  // namespace kiv
