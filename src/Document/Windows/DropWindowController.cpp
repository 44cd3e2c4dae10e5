#include "Document/Windows/DropWindowController.h"

#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QPainter>
#include <QScreen>
#include <QWidget>

#include "Document/Windows/AudioDrag.h"
#include "Document/Windows/KeyWindow.h"
#include "Editor/Views/Button.h"
#include "Editor/Views/CrispPainting.h"
#include "Editor/Views/FocusRing.h"
#include "Editor/Views/Icons.h"

namespace kiv {

namespace {

using Role = AudioEditorThemeColor;

constexpr int windowWidth = 480;
constexpr int inset = 16;
constexpr double frameRadius = 12;
constexpr int iconSize = 72, iconTop = 62;  // as much stands free at the foot
constexpr int iconToTitle = 16, titleToList = 4, listToButton = 20;

// The lines under the icon, from the top.
struct Lines {
    explicit Lines(const ViewStyle &style)
        : title(0, iconTop + iconSize + iconToTitle, windowWidth, style.grown(24)),
          list(0, title.bottom() + 1 + titleToList, windowWidth, style.grown(16)),
          button(0, list.bottom() + 1 + listToButton, windowWidth, style.grown(32)) {}

    int windowHeight() const { return button.bottom() + 1 + iconTop; }

    QRect title, list, button;
};

constexpr double dashTone = 0.337;

}  // namespace

class DropWindowController::Window : public QWidget, public KeyWindow, public CommandTarget {
public:
    Window(ViewStyle &style, ShortcutStore &shortcuts)
        : style_(style), shortcuts_(shortcuts), button_(new Button(style, ButtonKind::action, this)), ring_(style, this) {
        setWindowTitle(onScreen("Kiv Audio Editor"));
        setAcceptDrops(true);
        setAttribute(Qt::WA_OpaquePaintEvent);
        connect(button_, &QPushButton::clicked, this, [this] { perform(EditorCommand::open); });
        ring_.follow(button_);
        styleChanges_ = style.changed.add([this](const ViewStyle &) { layOut(); });
        shortcutChanges_ = shortcuts.didChange.add([this](const ShortcutStore &) { layOut(); });
        layOut();
    }

    CommandTarget &commandTarget() override { return *this; }
    bool isEnabled(EditorCommand command) const override {
        return command == EditorCommand::open || command == EditorCommand::close;
    }
    bool isChecked(EditorCommand) const override { return false; }
    bool isToggle(EditorCommand) const override { return false; }
    void perform(EditorCommand command) override {
        if (command == EditorCommand::open && onOpenCommand) onOpenCommand();
        if (command == EditorCommand::close) close();
    }
    QString shortcutText(EditorCommand command) const override {
        const auto shortcut = shortcuts_.shortcut(command);
        return shortcut ? onScreen(shortcut->displayString()) : QString();
    }

    std::function<void()> onOpenCommand, onQuit;
    std::function<void(const std::vector<std::string> &)> onDropped;

protected:
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        const ThemeColors &colors = style_.colors();
        painter.fillRect(rect(), toColor(colors[Role::waveBg]));
        paintFrame(painter);
        const Lines lines(style_);
        const double ratio = devicePixelRatioF();
        if (icon_.isNull() || icon_.devicePixelRatio() != ratio) icon_ = applicationIcon(iconSize, ratio);
        painter.drawPixmap(QPointF((width() - iconSize) / 2.0, iconTop), icon_);
        painter.setFont(style_.font(17, QFont::DemiBold));
        painter.setPen(toColor(colors[Role::topbarButtonText]));
        painter.drawText(lines.title, Qt::AlignCenter | Qt::TextDontClip, onScreen("Drop an audio file here"));
        painter.setFont(style_.font(13));
        painter.setPen(toColor(colors[Role::infoText]));
        painter.drawText(lines.list, Qt::AlignCenter | Qt::TextDontClip, onScreen("WAV, AIFF, FLAC, CAF, MP3"));
    }

    void keyPressEvent(QKeyEvent *event) override {
        const bool isQuit = event->key() == Qt::Key_Q && event->modifiers() == Qt::ControlModifier;
        if (isQuit && onQuit) return onQuit();
        if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) return button_->click();
        QWidget::keyPressEvent(event);
    }

    void dragEnterEvent(QDragEnterEvent *event) override {
        if (audioURLs(*event->mimeData()).empty()) return;
        setDragged(true);
        event->setDropAction(Qt::CopyAction);
        event->accept();
    }
    void dragLeaveEvent(QDragLeaveEvent *) override { setDragged(false); }
    void dropEvent(QDropEvent *event) override {
        setDragged(false);
        event->setDropAction(Qt::CopyAction);
        event->accept();
        if (onDropped) onDropped(audioURLs(*event->mimeData()));
    }

private:
    void setDragged(bool isDragged) {
        isDragged_ = isDragged;
        update();
    }

    void paintFrame(QPainter &painter) const {
        const ThemeColors &colors = style_.colors();
        const QRectF outer = snapped(painter, QRectF(rect()).adjusted(inset, inset, -inset, -inset));
        const double line = lineWidth(painter, 2);
        const QColor accent = toColor(colors[Role::accentBg]);
        painter.setRenderHint(QPainter::Antialiasing);
        QPen pen(isDragged_ ? accent : toColor(mix(colors[Role::waveBg], colors[Role::topbarButtonText], dashTone)), line);
        if (!isDragged_) {
            pen.setCapStyle(Qt::FlatCap);
            pen.setDashPattern({3, 2});  // in widths of the line
        }
        painter.setPen(pen);
        painter.setBrush(isDragged_ ? toColor(mix(colors[Role::waveBg], colors[Role::accentBg], 0.12))
                                    : QColor(Qt::transparent));
        painter.drawPath(roundedPath(outer.adjusted(line / 2, line / 2, -line / 2, -line / 2), frameRadius - line / 2));
    }

    void layOut() {
        const QString shortcut = shortcutText(EditorCommand::open);
        button_->setLabelAndText({}, tipText(onScreen("Choose a file"), shortcut));
        const Lines lines(style_);
        setFixedSize(windowWidth, lines.windowHeight());
        const int wide = button_->sizeHint().width() + 16;
        button_->setGeometry((width() - wide) / 2, lines.button.top(), wide, lines.button.height());
        update();
    }

    ViewStyle &style_;
    ShortcutStore &shortcuts_;
    Button *button_;
    FocusRing ring_;
    QPixmap icon_;
    bool isDragged_ = false;
    Subscription styleChanges_, shortcutChanges_;
};

DropWindowController::DropWindowController(ViewStyle &style, ShortcutStore &shortcuts)
    : window_(std::make_unique<Window>(style, shortcuts)) {
    window_->onOpenCommand = [this] {
        if (onOpenCommand) onOpenCommand();
    };
    window_->onQuit = [this] {
        if (onQuit) onQuit();
    };
    window_->onDropped = [this](const std::vector<std::string> &paths) {
        if (onDropped) onDropped(paths);
    };
}

DropWindowController::~DropWindowController() = default;

QWidget &DropWindowController::window() { return *window_; }

void DropWindowController::show() {
    const QRect screen = window_->screen()->availableGeometry();
    window_->move(screen.center() - window_->rect().center());
    window_->show();
}

void DropWindowController::close() { window_->close(); }

}  // namespace kiv
