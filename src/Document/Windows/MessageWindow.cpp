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
    MessageWindow(ViewStyle &style, AlertTone tone, const DocumentUi::Question &question,
                  std::function<void(std::size_t)> answer)
        : answer_(std::move(answer)),
          sheet_(
              style, tone, question, [this](std::size_t button) { answered(button); }, this) {
        setWindowTitle(onScreen("Kiv Audio Editor"));
        setAttribute(Qt::WA_DeleteOnClose);
        setAccessibleName(onScreen(question.message));
        sheet_.setInWindow();
        layOut(style);
        styleChanges_ = style.changed.add([this](const ViewStyle &now) { layOut(now); });
        sheet_.takeFocus();
    }

protected:
    void closeEvent(QCloseEvent *) override {
        if (answer_) sheet_.cancel();
    }

private:
    // The answer may bring up another window, without which closing this one would end the program.
    void answered(std::size_t button) {
        if (const auto answer = std::exchange(answer_, nullptr)) answer(button);
        close();
    }

    void layOut(const ViewStyle &style) {
        setFixedSize(sheet_.sizeFor(most));
        sheet_.resize(size());
        QPalette colors = palette();
        colors.setColor(QPalette::Window, style.color(AudioEditorThemeColor::dialogBg));
        setPalette(colors);
    }

    std::function<void(std::size_t)> answer_;
    AlertSheet sheet_;
    Subscription styleChanges_;
};

QWidget *show(QWidget *window) {
    window->move(window->screen()->availableGeometry().center() - window->rect().center());
    window->show();
    window->raise();
    return window;
}

}  // namespace

QWidget *showMessageWindow(ViewStyle &style, const std::string &message, const std::string &informative) {
    return show(new MessageWindow(style, AlertTone::error, {message, informative, {"OK"}}, {}));
}

QWidget *askInWindow(ViewStyle &style, const DocumentUi::Question &question, std::function<void(std::size_t)> answer) {
    return show(new MessageWindow(style, AlertTone::warning, question, std::move(answer)));
}

}  // namespace kiv
