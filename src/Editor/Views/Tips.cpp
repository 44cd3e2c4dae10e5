#include "Editor/Views/Tips.h"

#include <QApplication>
#include <QPainter>
#include <QScreen>
#include <QWidget>
#include <QWindow>

#include "Editor/Views/CrispPainting.h"
#include "Editor/Views/FloatPainter.h"

namespace kiv {

namespace {

constexpr int belowControl = 6;

}  // namespace

class Tips::Window : public QWidget {
public:
    explicit Window(const ViewStyle &style)
        : QWidget(nullptr, Qt::ToolTip | Qt::FramelessWindowHint | Qt::NoDropShadowWindowHint | Qt::WindowTransparentForInput),
          style_(style),
          isRound_(style.hasTranslucency()) {
        setAttribute(Qt::WA_ShowWithoutActivating);
        if (isRound_) setAttribute(Qt::WA_TranslucentBackground);
    }

    void showUnder(QWidget *control) {
        text_ = control->toolTip();
        const QSize box = tipSize(text_, style_);
        winId();  // makes the native window, which must know whose tip it is before it is shown
        windowHandle()->setTransientParent(control->window()->windowHandle());
        setGeometry(QRect(placeFor(control, box), box).marginsAdded(margins()));
        show();
        update();
    }

protected:
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        painter.fillRect(rect(), Qt::transparent);
        painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
        const QRectF box = rect().marginsRemoved(margins());
        paintFloat(painter, box, tipRadius, style_);
        paintTipText(painter, box, text_, style_);
    }

private:
    QMargins margins() const {
        return isRound_ ? QMargins(shadowExtent, shadowExtent, shadowExtent, shadowExtent + shadowDrop) : QMargins(1, 1, 1, 1);
    }

    // Under the control, over it where there is no room, and never off the screen.
    static QPoint placeFor(QWidget *control, const QSize &box) {
        const QRect place(control->mapToGlobal(QPoint()), control->size());
        const QRect screen = control->screen()->availableGeometry();
        int y = place.bottom() + 1 + belowControl;
        if (y + box.height() > screen.bottom()) y = place.top() - belowControl - box.height();
        const int x = std::clamp(place.left(), screen.left(), std::max(screen.left(), screen.right() + 1 - box.width()));
        return {x, y};
    }

    const ViewStyle &style_;
    bool isRound_;
    QString text_;
};

Tips::Tips(const ViewStyle &style) : style_(style) { qApp->installEventFilter(this); }

Tips::~Tips() = default;

bool Tips::isShown() const { return window_ && window_->isVisible(); }

void Tips::show(QWidget *control) {
    if (!window_) window_ = std::make_unique<Window>(style_);
    control_ = control;
    window_->showUnder(control);
}

void Tips::hide() {
    if (isShown()) window_->hide();
    control_ = nullptr;
}

bool Tips::eventFilter(QObject *watched, QEvent *event) {
    switch (event->type()) {
        case QEvent::ToolTip: {
            auto *control = qobject_cast<QWidget *>(watched);
            if (!control || control->toolTip().isEmpty()) return false;
            show(control);
            return true;
        }
        case QEvent::Leave:
        case QEvent::Hide:
        case QEvent::Destroy:
            if (watched == control_) hide();
            return false;
        case QEvent::MouseButtonPress:
        case QEvent::KeyPress:
        case QEvent::Wheel:
        case QEvent::WindowDeactivate:
            if (control_) hide();
            return false;
        default:
            return false;
    }
}

}  // namespace kiv
