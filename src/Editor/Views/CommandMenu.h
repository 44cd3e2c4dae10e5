#pragma once

#include <vector>

#include "Editor/Views/CommandTarget.h"
#include "Editor/Views/Menu.h"

namespace kiv {

// Puts a command at the end of a menu.
QAction *addCommand(Menu &menu, EditorCommand command, CommandTarget &target);
// Brings title, shortcut, check mark and "can act" of every command in the menu up to date.
void refreshCommands(Menu &menu, const CommandTarget &target);

// The menu over the waveform.
void popUpContextMenu(const ViewStyle &style, CommandTarget &target, QWidget *parent, QPoint global);

}  // namespace kiv
