#include "App/KeyMonitor.h"

#include <QApplication>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QWidget>
#include <QWindow>

#include "Document/Windows/KeyWindow.h"
#include "Editor/Views/Field.h"
#include "Editor/Views/ValueControl.h"

namespace kiv {

namespace {

// The widget whose window an event was sent to.
QWidget *widgetOf(const QObject *window) {
    for (QWidget *widget : QApplication::topLevelWidgets())
        if (widget->windowHandle() == window) return widget;
    return nullptr;
}

TextFocus textFocus() {
    QWidget *focus = QApplication::focusWidget();
    if (const auto *field = dynamic_cast<Field *>(focus); field && field->isNumber()) return TextFocus::number;
    const auto *line = qobject_cast<QLineEdit *>(focus);
    return line && !line->isReadOnly() ? TextFocus::text : TextFocus::none;
}

void editText(QLineEdit &line, TextEdit edit) {
    switch (edit) {
        case TextEdit::cut:
            return line.cut();
        case TextEdit::copy:
            return line.copy();
        case TextEdit::paste:
            return line.paste();
        case TextEdit::selectAll:
            return line.selectAll();
        case TextEdit::undo:
            return line.undo();
        case TextEdit::redo:
            return line.redo();
    }
}

template <class... Calls>
struct Overloaded : Calls... {
    using Calls::operator()...;
};
template <class... Calls>
Overloaded(Calls...) -> Overloaded<Calls...>;

}  // namespace

KeyMonitor::KeyMonitor(ShortcutStore &store, ShortcutRecorder &recorder, std::unique_ptr<Keyboard> keyboard)
    : store_(store), recorder_(recorder), keyboard_(std::move(keyboard)) {
    qApp->installEventFilter(this);
    // A layout is changed in another program's window.
    connect(qApp, &QGuiApplication::applicationStateChanged, this, [this] { keyboard_->forget(); });
}

bool KeyMonitor::eventFilter(QObject *watched, QEvent *event) {
    switch (event->type()) {
        case QEvent::KeyPress:
            // On its way to the window, before the toolkit looks for the focused widget; it passes here again after that.
            if (!watched->isWindowType()) return false;
            if (QWidget *window = widgetOf(watched)) return keyPressed(window, *static_cast<QKeyEvent *>(event));
            return false;
        case QEvent::InputMethod:
            isComposing_ = !static_cast<QInputMethodEvent *>(event)->preeditString().isEmpty();
            return false;
        case QEvent::FocusOut:
            if (watched->isWidgetType()) isComposing_ = false;
            return false;
        default:
            return false;
    }
}

KeyContext KeyMonitor::contextIn(QWidget *window) const {
    KeyContext context;
    context.isRecording = recorder_.recording.has_value();
    context.isComposing = isComposing_;
    context.hasPopup = QApplication::activePopupWidget() != nullptr;
    context.text = textFocus();
    context.takesNumbers = dynamic_cast<ValueControl *>(QApplication::focusWidget()) != nullptr;
    auto *keys = dynamic_cast<KeyWindow *>(window);
    Sheet *sheet = keys ? keys->openSheet() : nullptr;
    context.hasSheet = sheet != nullptr;
    context.focusIsInSheet = sheet && QApplication::focusWidget() && sheet->isAncestorOf(QApplication::focusWidget());
    return context;
}

bool KeyMonitor::keyPressed(QWidget *window, const QKeyEvent &event) {
    auto *keys = dynamic_cast<KeyWindow *>(window);
    if (!keys && !recorder_.recording) return false;
    const KeyPress press = keyPress(event, *keyboard_);
    const auto act = Overloaded{
        [&](const CaptureShortcut &capture) { return recorder_.capture(capture.shortcut), true; },
        [&](const EditText &edit) {
            if (auto *line = qobject_cast<QLineEdit *>(QApplication::focusWidget())) editText(*line, edit.edit);
            return true;
        },
        [&](const PerformCommand &command) {
            if (keys) keys->commandTarget().perform(command.command);
            return true;
        },
        [&](KeyPath path) {
            if (path == KeyPath::sheet) keys->openSheet()->takeKey(press);
            return path != KeyPath::focus;
        },
    };
    return std::visit(act, route(press, contextIn(window), store_));
}

}  // namespace kiv
