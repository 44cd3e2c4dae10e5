#pragma once

#include <QAbstractButton>
#include <QAccessibleWidget>
#include <QWidget>

namespace kiv {

class Adjustable;

// A text that is read and not edited: the bridge to the desktop's assistive tools has no other way for the words of a value.
class ReadOnlyText : public QAccessibleTextInterface {
public:
    virtual QString shownText() const = 0;

    void selection(int, int *start, int *end) const override { *start = *end = 0; }
    int selectionCount() const override { return 0; }
    void addSelection(int, int) override {}
    void removeSelection(int) override {}
    void setSelection(int, int, int) override {}
    int cursorPosition() const override { return 0; }
    void setCursorPosition(int) override {}
    QString text(int start, int end) const override { return shownText().mid(start, end - start); }
    int characterCount() const override { return int(shownText().size()); }
    QRect characterRect(int) const override { return {}; }
    int offsetAtPoint(const QPoint &) const override { return -1; }
    void scrollToSubstring(int, int) override {}
    QString attributes(int, int *start, int *end) const override {
        *start = 0;
        *end = characterCount();
        return {};
    }
};

// A control with a number: its value in figures and in words, to be set and stepped. Pressing it opens its field.
class AccessibleValue : public QAccessibleWidget, public QAccessibleValueInterface, public ReadOnlyText {
public:
    AccessibleValue(QWidget *widget, Adjustable &adjustable, QAccessible::Role role);

    void *interface_cast(QAccessible::InterfaceType type) override;
    QString text(QAccessible::Text kind) const override;
    using ReadOnlyText::text;
    QString shownText() const override;

    QVariant currentValue() const override;
    void setCurrentValue(const QVariant &value) override;
    QVariant maximumValue() const override;
    QVariant minimumValue() const override;
    QVariant minimumStepSize() const override;

    QStringList actionNames() const override;
    void doAction(const QString &name) override;

private:
    Adjustable &adjustable_;
};

// A button that does the same for an assistive tool as for a click, also where it is one of several choices.
class AccessibleButton : public QAccessibleWidget {
public:
    explicit AccessibleButton(QAbstractButton *button) : QAccessibleWidget(button) {}

    QAccessible::Role role() const override;
    QString text(QAccessible::Text kind) const override;
    QAccessible::State state() const override;
    QStringList actionNames() const override;
    void doAction(const QString &name) override;

private:
    QAbstractButton &button() const { return *static_cast<QAbstractButton *>(widget()); }
};

// A picture of a sound that says in words what is chosen in it.
class AccessiblePicture : public QAccessibleWidget, public ReadOnlyText {
public:
    explicit AccessiblePicture(QWidget *widget) : QAccessibleWidget(widget, QAccessible::Canvas) {}

    void *interface_cast(QAccessible::InterfaceType type) override;
    QString text(QAccessible::Text kind) const override;
    using ReadOnlyText::text;
    QString shownText() const override { return widget()->accessibleDescription(); }
};

}  // namespace kiv
