#include "App/MainMenu.h"

#include <QAction>
#include <algorithm>

#include "Editor/Views/CommandMenu.h"

namespace kiv {

namespace {

void addGroup(Menu &menu, EditorCommandGroup group, CommandTarget &target) {
    int section = 0;
    for (const EditorCommandRow &row : editorCommands()) {
        if (row.group != group) continue;
        if (!menu.isEmpty() && row.rule != section) menu.addSeparator();
        section = row.rule;
        addCommand(menu, row.command, target);
    }
}

// Ctrl+Q quits as everywhere, unless the user has given it to a command.
bool isQuitFree(const ShortcutStore &shortcuts) { return !shortcuts.match({Shortcut{"q", Shortcut::command}}); }

void addQuit(Menu &menu, const ShortcutStore &shortcuts, std::function<void()> quit) {
    menu.addSeparator();
    QAction *action = menu.addAction(onScreen("Quit"), &menu, std::move(quit));
    QObject::connect(&menu, &QMenu::aboutToShow, &menu, [&menu, &shortcuts, action] {
        menu.setShortcutText(action, isQuitFree(shortcuts) ? onScreen("⌘Q") : QString());
    });
}

}  // namespace

void fillMainMenu(MenuBar &bar, CommandTarget &target, const ShortcutStore &shortcuts, MainMenuActions actions) {
    for (int i = 0; i < editorCommandGroupCount; ++i) {
        const auto group = EditorCommandGroup(i);
        Menu *menu = bar.addOwnMenu(onScreen(heading(group)));
        addGroup(*menu, group, target);
        refreshCommands(*menu, target);
        QObject::connect(menu, &QMenu::aboutToShow, menu, [menu, &target] { refreshCommands(*menu, target); });
        if (group == EditorCommandGroup::file) addQuit(*menu, shortcuts, actions.quit);
    }
    Menu *help = bar.addOwnMenu(onScreen("Help"));
    help->addAction(onScreen("About"), help, std::move(actions.about));
}

}  // namespace kiv
