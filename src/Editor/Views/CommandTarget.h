#pragma once

#include <QString>

#include "App/Commands/EditorCommand.h"

namespace kiv {

// To whom menus, buttons and keys hand a command, and who knows whether it can act now.
class CommandTarget {
public:
    virtual ~CommandTarget() = default;

    virtual bool isEnabled(EditorCommand command) const = 0;
    // Whether it waits for a sheet to be answered: it cannot act, but the bar does not grey out under the sheet.
    virtual bool isWaiting(EditorCommand) const { return false; }
    virtual bool isChecked(EditorCommand command) const = 0;  // toggles
    virtual bool isToggle(EditorCommand command) const = 0;
    // Does nothing when the command is not enabled.
    virtual void perform(EditorCommand command) = 0;
    // "Ctrl+Shift+S"; empty without a shortcut.
    virtual QString shortcutText(EditorCommand command) const = 0;
};

// The command's title as the screen shows it, and with its shortcut at the end.
QString titleText(EditorCommand command);
QString tipText(const QString &help, const QString &shortcut);
// Any text of ours on its way to the screen.
QString onScreen(std::string_view source);

}  // namespace kiv
