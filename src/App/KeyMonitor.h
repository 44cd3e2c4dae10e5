#pragma once

#include <QObject>
#include <memory>

#include "App/KeyRouting.h"
#include "App/Keyboard.h"

class QKeyEvent;
class QWidget;

namespace kiv {

// Sees every key press of the program before any control does and gives it to whom it belongs: to the shortcut being recorded,
// the text being edited, the command it is the shortcut of, the sheet that is open, or else the focused control.
class KeyMonitor : public QObject {
public:
    KeyMonitor(ShortcutStore &store, ShortcutRecorder &recorder, std::unique_ptr<Keyboard> keyboard);

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool keyPressed(QWidget *window, const QKeyEvent &event);
    KeyContext contextIn(QWidget *window) const;

    ShortcutStore &store_;
    ShortcutRecorder &recorder_;
    std::unique_ptr<Keyboard> keyboard_;
    bool isComposing_ = false;
};

}  // namespace kiv
