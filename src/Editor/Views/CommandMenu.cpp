#include "Editor/Views/CommandMenu.h"

#include <QAction>

namespace kiv {

namespace {

constexpr const char *commandProperty = "kivCommand";

using enum EditorCommand;
const std::vector<std::vector<EditorCommand>> contextSections{
    {cut, copy, paste, delete_, trim},
    {gain, normalize, fadeIn, fadeOut, silence, reverse},
    {zoomSelection, saveSelection},
};

}  // namespace

QAction *addCommand(Menu &menu, EditorCommand command, CommandTarget &target) {
    QAction *action = menu.addAction(titleText(command));
    action->setProperty(commandProperty, int(command));
    action->setCheckable(target.isToggle(command));
    QObject::connect(action, &QAction::triggered, &menu, [&target, command] { target.perform(command); });
    return action;
}

void refreshCommands(Menu &menu, const CommandTarget &target) {
    for (QAction *action : menu.actions()) {
        const QVariant stored = action->property(commandProperty);
        if (!stored.isValid()) continue;
        const auto command = EditorCommand(stored.toInt());
        action->setEnabled(target.isEnabled(command));
        if (action->isCheckable()) action->setChecked(target.isChecked(command));
        menu.setShortcutText(action, target.shortcutText(command));
    }
}

void popUpContextMenu(const ViewStyle &style, CommandTarget &target, QWidget *parent, QPoint global) {
    auto *menu = new Menu(style, parent);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    for (const auto &section : contextSections) {
        if (!menu->isEmpty()) menu->addSeparator();
        for (EditorCommand command : section) addCommand(*menu, command, target);
    }
    refreshCommands(*menu, target);
    menu->popup(global);
}

}  // namespace kiv
