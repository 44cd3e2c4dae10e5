#include "Editor/Views/CommandTarget.h"

#include "App/Commands/ScreenText.h"

namespace kiv {

QString onScreen(std::string_view source) { return QString::fromStdString(screenText(source)); }

QString titleText(EditorCommand command) { return onScreen(row(command).title); }

QString tipText(const QString &help, const QString &shortcut) {
    return shortcut.isEmpty() ? help : help + " (" + shortcut + ")";
}

}  // namespace kiv
