#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "App/Commands/ShortcutStore.h"
#include "Editor/Views/ViewStyle.h"

class QWidget;

namespace kiv {

// The window that is there when no document is: audio files can be dropped on it or chosen from it.
class DropWindowController {
public:
    DropWindowController(ViewStyle &style, ShortcutStore &shortcuts);
    ~DropWindowController();

    void show();
    void close();
    QWidget &window();

    std::function<void()> onOpenCommand;
    std::function<void(const std::vector<std::string> &paths)> onDropped;
    std::function<void()> onQuit;

private:
    class Window;
    std::unique_ptr<Window> window_;
};

}  // namespace kiv
