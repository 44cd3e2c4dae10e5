#include "Editor/Views/Menu.h"

#include <QApplication>
#include <QFontMetricsF>
#include <QMouseEvent>
#include <QPainter>
#include <cmath>
#include <utility>

#include "Editor/Views/CrispPainting.h"

namespace kiv {

namespace {

using Role = AudioEditorThemeColor;

constexpr int titlePadding = 9;

QString shortcutOf(const QAction *action) { return action->data().toString(); }

bool hasChecks(const QMenu &menu) {
    for (const QAction *action : menu.actions())
        if (action->isCheckable()) return true;
    return false;
}

}  // namespace

Menu::Menu(const ViewStyle &style, QWidget *parent) : Menu(style, QString(), parent) {}

Menu::Menu(const ViewStyle &style, const QString &title, QWidget *parent) : QMenu(title, parent), style_(style) {
    connect(this, &QMenu::aboutToShow, this, [this] { updateWidth(); });
    if (style.hasTranslucency()) {
        setAttribute(Qt::WA_TranslucentBackground);
        setWindowFlag(Qt::FramelessWindowHint);
        setWindowFlag(Qt::NoDropShadowWindowHint);
        setContentsMargins(shadowExtent, 1, shadowExtent, shadowExtent + shadowDrop);
    } else {
        setContentsMargins(1, 1, 1, 1);
    }
}

void Menu::setShortcutText(QAction *action, const QString &text) {
    if (shortcutOf(action) != text) action->setData(text);  // which tells the menu that the action has changed
}

int Menu::rowHeight(bool isSeparator) const { return isSeparator ? menuRuleHeight : menuRowHeight(style_); }

QRect Menu::panel() const { return rect().marginsRemoved(contentsMargins()); }

void Menu::actionEvent(QActionEvent *event) {
    QMenu::actionEvent(event);
    isWidthKnown_ = false;
}

void Menu::changeEvent(QEvent *event) {
    if (event->type() == QEvent::FontChange) isWidthKnown_ = false;
    QMenu::changeEvent(event);
}

// Texts are measured when the menu is first needed and not while the program starts.
void Menu::updateWidth() {
    if (std::exchange(isWidthKnown_, true)) return;
    double widest = 0;
    for (const QAction *action : actions()) widest = std::max(widest, menuRowWidth(lookOf(action), style_));
    const QMargins margins = contentsMargins();
    setMinimumWidth(int(std::ceil(widest)) + 2 * padding + margins.left() + margins.right());
}

void Menu::showEvent(QShowEvent *event) {
    // The window is placed with its shadow; what should stand at the point asked for is the panel.
    move(pos() - QPoint(contentsMargins().left() - 1, 0));
    QMenu::showEvent(event);
}

void Menu::mousePressEvent(QMouseEvent *event) {
    if (rect().contains(event->position().toPoint()) && !panel().contains(event->position().toPoint())) {
        close();
        return;
    }
    QMenu::mousePressEvent(event);
}

MenuRowLook Menu::lookOf(const QAction *action) const {
    return {.text = action->text(),
            .shortcut = shortcutOf(action),
            .isChosen = action == activeAction() && action->isEnabled(),
            .isEnabled = action->isEnabled(),
            .isChecked = action->isCheckable() && action->isChecked(),
            .hasCheckColumn = hasChecks(*this)};
}

void Menu::paintEvent(QPaintEvent *event) {
    QPainter painter(this);
    const QRect inner = panel().adjusted(padding, padding, -padding, -padding);
    inner.contains(event->rect()) ? painter.fillRect(event->rect(), style_.color(Role::dialogBg))
                                  : paintSurroundings(painter, event->rect());
    for (QAction *action : actions()) {
        if (!action->isVisible()) continue;
        const QRectF row = actionGeometry(action);
        action->isSeparator() ? paintMenuRule(painter, row, style_) : paintMenuRow(painter, row, lookOf(action), style_);
    }
}

void Menu::paintSurroundings(QPainter &painter, const QRect &changed) const {
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.fillRect(changed, Qt::transparent);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    // Above the panel there is no room, for there is the menu bar: the shadow begins further down, so that it is not cut off.
    paintFloat(painter, panel(), menuRadius, style_, shadowExtent - shadowDrop);
}

MenuBar::MenuBar(ViewStyle &style, QWidget *parent) : QMenuBar(parent), style_(style) {
    styleChanges_ = style.changed.add([this](const ViewStyle &) { measureAnew(); });
}

// The toolkit keeps the places of titles and rows until it hears of another font.
void MenuBar::measureAnew() {
    QEvent event(QEvent::FontChange);
    QApplication::sendEvent(this, &event);
    for (const QAction *action : actions()) QApplication::sendEvent(action->menu(), &event);
    update();
}

Menu *MenuBar::addOwnMenu(const QString &title) {
    auto *menu = new Menu(style_, title, this);
    addMenu(menu);
    return menu;
}

QSize MenuBar::itemSize(const QString &text) const {
    return {int(std::lround(QFontMetricsF(style_.font(13)).horizontalAdvance(text))) + 2 * titlePadding, style_.grown(28)};
}

void MenuBar::open() {
    if (!actions().isEmpty()) setActiveAction(actions().first());
}

void MenuBar::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    const ThemeColors &colors = style_.colors();
    painter.fillRect(rect(), toColor(colors[Role::topbarBg]));
    painter.setFont(style_.font(13));
    for (QAction *action : actions()) {
        const QRectF item = actionGeometry(action);
        if (action == activeAction()) paintBox(painter, item.adjusted(0, 3, 0, -3), 5, toColor(colors.hover));
        painter.setPen(toColor(colors[Role::topbarButtonText]));
        painter.drawText(item, Qt::AlignCenter, action->text());
    }
}

}  // namespace kiv
