#pragma once

#include <QObject>
#include <QPointer>

#include "Editor/Views/Field.h"

namespace kiv {

// The field that opens where a number stands, to type another one. Enter hands over what was typed; Esc, the Tab key and a
// press elsewhere drop it.
class InPlaceField : public QObject {
public:
    explicit InPlaceField(QWidget &control) : control_(control) {}

    // Takes what was typed; false leaves the field open with its frame saying that it could not be read.
    std::function<bool(const std::string &typed)> onEntered;
    // The field has closed by Enter or Esc: where the keyboard should go.
    std::function<void()> onLeft;
    // It has opened or closed, or what it holds has become readable or not.
    std::function<void()> onChanged;
    // The press that opened it has turned out to be the first of two quick ones. It has closed.
    std::function<void()> onDoubleClick;

    // Opens a field that its owner has given its look and place; its parent keeps it. All of its text is chosen unless some
    // has been typed already.
    void open(Field *field, const QString &text, const QString &typed = {});
    bool isOpen() const { return field_; }
    Field *field() const { return field_; }
    void close();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void enter();
    void tell() const;

    QWidget &control_;
    QPointer<Field> field_;
    bool wasPressed_ = false;  // the field itself
};

}  // namespace kiv
