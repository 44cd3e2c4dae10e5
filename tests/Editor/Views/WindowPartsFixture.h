#pragma once

#include <QMouseEvent>
#include <QWheelEvent>
#include <set>
#include <vector>

#include "Editor/AudioEditorModel/ModelFixture.h"
#include "Editor/Views/Accessible.h"
#include "Editor/Views/CommandTarget.h"
#include "Editor/Views/KivStyle.h"
#include "Editor/Views/TestApplication.h"
#include "Editor/Views/ViewStyle.h"

namespace kiv {

// Writes down what it is asked to do.
class FakeTarget : public CommandTarget {
public:
    bool isEnabled(EditorCommand command) const override { return !disabled.contains(command); }
    bool isWaiting(EditorCommand) const override { return waits; }
    bool isChecked(EditorCommand command) const override { return checked.contains(command); }
    bool isToggle(EditorCommand command) const override {
        return command == EditorCommand::loop || command == EditorCommand::followPlayhead || command == EditorCommand::slicer;
    }
    void perform(EditorCommand command) override { performed.push_back(command); }
    QString shortcutText(EditorCommand command) const override {
        const auto shortcut = row(command).shortcut;
        return shortcut ? onScreen(shortcut->displayString()) : QString();
    }

    std::set<EditorCommand> disabled, checked;
    std::vector<EditorCommand> performed;
    bool waits = false;
};

// Sees which of a widget and those inside it are painted.
class PaintCount : public QObject {
public:
    explicit PaintCount(QWidget &widget) {
        widget.installEventFilter(this);
        for (QWidget *child : widget.findChildren<QWidget *>()) child->installEventFilter(this);
    }
    template <class Act>
    std::set<QWidget *> during(Act act) {
        settle();
        painted_.clear();
        act();
        return painted_;
    }
    bool eventFilter(QObject *watched, QEvent *event) override {
        if (event->type() == QEvent::Paint) painted_.insert(static_cast<QWidget *>(watched));
        return false;
    }

private:
    static void settle() {
        for (int i = 0; i < 3; ++i) QApplication::processEvents();
    }
    std::set<QWidget *> painted_;
};

// A window for controls, with a model and somebody who takes the commands.
struct WindowPartsFixture : ModelFixture {
    QApplication &application = testApplication();
    ViewStyle style{AudioEditorTheme::dark()};
    FakeTarget target;
    QWidget window;

    WindowPartsFixture() {
        [[maybe_unused]] static const bool isPrepared = [] {
            QApplication::setStyle(new KivStyle);
            installAccessibility();
            return true;
        }();
        style.setReducesMotion(true);
        window.resize(1280, 400);
    }
    void showWindow() {
        window.show();
        window.activateWindow();
        settle();
    }
    static void settle() {
        for (int i = 0; i < 3; ++i) QApplication::processEvents();
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    static void click(QWidget *widget, QPoint at = {-1, -1}) {
        const QPointF place = at.x() < 0 ? QPointF(widget->rect().center()) : QPointF(at);
        for (QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) pointer(widget, type, place);
    }
    static void pointer(QWidget *widget, QEvent::Type type, QPointF at) {
        const bool isMove = type == QEvent::MouseMove;
        QMouseEvent event(type, at, widget->mapToGlobal(at), isMove ? Qt::NoButton : Qt::LeftButton,
                          type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton, {});
        QApplication::sendEvent(widget, &event);
    }
    static void drag(QWidget *widget, QPointF from, QPointF to) {
        pointer(widget, QEvent::MouseButtonPress, from);
        pointer(widget, QEvent::MouseMove, to);
        pointer(widget, QEvent::MouseButtonRelease, to);
    }
    static void key(QWidget *widget, int code, const QString &text = {}, Qt::KeyboardModifiers modifiers = {}) {
        QKeyEvent press(QEvent::KeyPress, code, modifiers, text);
        QApplication::sendEvent(widget, &press);
        QKeyEvent release(QEvent::KeyRelease, code, modifiers, text);
        QApplication::sendEvent(widget, &release);
    }
    static void type(QWidget *widget, const QString &text) {
        for (QChar c : text) key(widget, c.toUpper().unicode(), c);
    }
    static void wheel(QWidget *widget, int notches, Qt::KeyboardModifiers modifiers = {}) {
        const QPointF place(widget->rect().center());
        QWheelEvent event(place, widget->mapToGlobal(place), {}, {0, 120 * notches}, {}, modifiers, Qt::NoScrollPhase, false);
        QApplication::sendEvent(widget, &event);
    }
};

}  // namespace kiv
