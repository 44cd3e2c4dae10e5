#include "Document/Windows/AboutWindow.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QScreen>
#include <QWidget>

#include "Editor/Views/Button.h"
#include "Editor/Views/CommandTarget.h"
#include "Editor/Views/CrispPainting.h"
#include "Editor/Views/Icons.h"

namespace kiv {

namespace {

using Role = AudioEditorThemeColor;

constexpr int windowWidth = 400;
constexpr int iconSize = 72;
constexpr int padding = 24;
constexpr int iconToTitle = 12, betweenLines = 4, linesToButton = 28;

class AboutWindow : public QWidget {
public:
    explicit AboutWindow(ViewStyle &style) : style_(style), ok_(new Button(style, ButtonKind::sheetDefault, this)) {
        setWindowTitle(onScreen("Kiv Audio Editor"));
        setAttribute(Qt::WA_DeleteOnClose);
        ok_->setLabelAndText({}, onScreen("OK"));
        layOut();
        styleChanges_ = style.changed.add([this](const ViewStyle &) { layOut(); });
        ok_->setFocus();
        connect(ok_, &QPushButton::clicked, this, [this] { close(); });
        setAccessibleName(onScreen("Kiv Audio Editor") + " " + QCoreApplication::applicationVersion());
    }

protected:
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        const ThemeColors &colors = style_.colors();
        painter.fillRect(rect(), toColor(colors[Role::dialogBg]));
        painter.drawPixmap(QPointF((width() - iconSize) / 2.0, padding), applicationIcon(iconSize, devicePixelRatioF()));
        int y = padding + iconSize + iconToTitle;
        const auto line = [&](int height, const QFont &font, Rgba color, const QString &text) {
            painter.setFont(font);
            painter.setPen(toColor(color));
            painter.drawText(QRect(0, y, width(), style_.grown(height)), Qt::AlignCenter | Qt::TextDontClip, text);
            y += style_.grown(height) + betweenLines;
        };
        line(24, style_.font(17, QFont::DemiBold), colors[Role::dialogText], onScreen("Kiv Audio Editor"));
        line(20, style_.font(13), colors.dialogDim, onScreen("Version") + " " + QCoreApplication::applicationVersion());
        line(20, style_.font(12), colors.dialogDim, onScreen("Free software under the GNU General Public License 3 or later"));
    }

    void keyPressEvent(QKeyEvent *event) override {
        const int key = event->key();
        if (key == Qt::Key_Escape || key == Qt::Key_Return || key == Qt::Key_Enter) close();
    }

private:
    void layOut() {
        const int lines = style_.grown(24) + 2 * style_.grown(20) + 2 * betweenLines;
        const QSize size = ok_->sizeHint();
        setFixedSize(int(windowWidth * style_.textFactor()),
                     padding + iconSize + iconToTitle + lines + linesToButton + size.height() + padding);
        ok_->setGeometry(width() - padding - size.width(), height() - padding - size.height(), size.width(), size.height());
        update();
    }

    ViewStyle &style_;
    Button *ok_;
    Subscription styleChanges_;
};

}  // namespace

QWidget *showAboutWindow(ViewStyle &style) {
    auto *window = new AboutWindow(style);
    window->move(window->screen()->availableGeometry().center() - window->rect().center());
    window->show();
    return window;
}

}  // namespace kiv
