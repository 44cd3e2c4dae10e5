#include "Document/Windows/MessageWindow.h"

#include <QScreen>
#include <QWidget>

#include "Editor/Views/AlertSheet.h"
#include "Editor/Views/CommandTarget.h"

namespace kiv {

namespace {

constexpr QSize most(10000, 10000);  // the message itself knows how wide it wants to be

class MessageWindow : public QWidget {
public:
    MessageWindow(ViewStyle &style, const std::string &message, const std::string &informative)
        : sheet_(
              style, AlertTone::error, {message, informative, {"OK"}}, [this](std::size_t) { close(); }, this) {
        setWindowTitle(onScreen("Kiv Audio Editor"));
        setAttribute(Qt::WA_DeleteOnClose);
        setAccessibleName(onScreen(message));
        sheet_.setInWindow();
        layOut(style);
        styleChanges_ = style.changed.add([this](const ViewStyle &now) { layOut(now); });
        sheet_.takeFocus();
    }

private:
    void layOut(const ViewStyle &style) {
        setFixedSize(sheet_.sizeFor(most));
        sheet_.resize(size());
        QPalette colors = palette();
        colors.setColor(QPalette::Window, style.color(AudioEditorThemeColor::dialogBg));
        setPalette(colors);
    }

    AlertSheet sheet_;
    Subscription styleChanges_;
};

}  // namespace

QWidget *showMessageWindow(ViewStyle &style, const std::string &message, const std::string &informative) {
    auto *window = new MessageWindow(style, message, informative);
    window->move(window->screen()->availableGeometry().center() - window->rect().center());
    window->show();
    window->raise();
    return window;
}

}  // namespace kiv
