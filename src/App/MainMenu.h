#pragma once

#include <functional>

#include "App/Commands/ShortcutStore.h"
#include "Editor/Views/CommandTarget.h"
#include "Editor/Views/Menu.h"

namespace kiv {

// What the menus offer beyond the commands.
struct MainMenuActions {
    std::function<void()> quit, about;
};

// Fills a window's menu bar from the table of commands. What can act, what is on and the shortcuts are brought up to date
// whenever a menu opens.
void fillMainMenu(MenuBar &bar, CommandTarget &target, const ShortcutStore &shortcuts, MainMenuActions actions);

}  // namespace kiv
