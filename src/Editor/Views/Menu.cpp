#include "Editor/Views/Menu.h"

#include <QFontMetricsF>
#include <QMouseEvent>
#include <QPainter>
#include <cmath>
#include <utility>

#include "Editor/Views/CrispPainting.h"

namespace kiv {

namespace {

using Role = AudioEditorThemeColor;

constexpr int rowPadding = 12;
constexpr int checkWidth = 22;
constexpr int beforeShortcut = 61;
constexpr double menuRadius = 8;
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

int Menu::rowHeight(bool isSeparator) const { return isSeparator ? 9 : style_.grown(28); }

QRect Menu::panel() const { return rect().marginsRemoved(contentsMargins()); }

void Menu::actionEvent(QActionEvent *event) {
    QMenu::actionEvent(event);
    isWidthKnown_ = false;
}

// Texts are measured when the menu is first needed and not while the program starts.
void Menu::updateWidth() {
    if (std::exchange(isWidthKnown_, true)) return;
    const QFontMetricsF metrics(style_.font(13));
    double widest = 0;
    for (const QAction *action : actions()) {
        const QString shortcut = shortcutOf(action);
        const double right = shortcut.isEmpty() ? 0 : beforeShortcut + metrics.horizontalAdvance(shortcut);
        widest = std::max(widest, metrics.horizontalAdvance(action->text()) + right);
    }
    const int check = hasChecks(*this) ? checkWidth : 0;
    const QMargins margins = contentsMargins();
    setMinimumWidth(int(std::ceil(widest)) + check + 2 * (rowPadding + padding) + margins.left() + margins.right());
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

void Menu::paintEvent(QPaintEvent *event) {
    QPainter painter(this);
    const QRectF box = panel();
    const bool isRound = style_.hasTranslucency();
    if (isRound) {
        paintSurroundings(painter, event->rect());
    } else {
        painter.fillRect(rect(), toColor(mix(style_.colors()[Role::dialogBg], style_.colors()[Role::dialogText], 0.2)));
    }
    paintBox(painter, box, isRound ? menuRadius : 0, style_.color(Role::dialogBg));
    for (QAction *action : actions())
        if (action->isVisible()) paintRow(painter, actionGeometry(action), action);
}

// The shadow is only drawn anew where more than rows changes.
void Menu::paintSurroundings(QPainter &painter, const QRect &changed) const {
    if (panel().adjusted(padding, padding, -padding, -padding).contains(changed)) return;
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.fillRect(changed, Qt::transparent);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    // Above the panel there is no room, for there is the menu bar: the shadow begins further down, so that it is not cut off.
    paintShadow(painter, QRectF(panel()).adjusted(0, shadowExtent - shadowDrop, 0, 0), style_);
    paintBox(painter, QRectF(panel()).adjusted(-1, -1, 1, 1), menuRadius + 1, toColor(style_.colors().panelEdge));
}

void Menu::paintRow(QPainter &painter, const QRectF &row, QAction *action) const {
    const ThemeColors &colors = style_.colors();
    if (action->isSeparator()) {
        const QRectF line(row.left(), row.top() + 4, row.width(), lineWidth(painter));
        return fillCrisp(painter, line, toColor(colors.dialogLine));
    }
    const bool isChosen = action == activeAction() && action->isEnabled();
    if (isChosen) paintBox(painter, row, 5, toColor(colors[Role::accentBg]));
    const Rgba rest =
        action->isEnabled() ? colors[Role::dialogText] : mix(colors[Role::dialogBg], colors[Role::dialogText], 0.42);
    const Rgba shortcut = action->isEnabled() ? colors.dialogDim : rest;
    QRectF inside = row.adjusted(rowPadding, 0, -rowPadding, 0);
    painter.setFont(style_.font(13));
    painter.setPen(toColor(isChosen ? colors[Role::accentFg] : shortcut));
    painter.drawText(inside, Qt::AlignRight | Qt::AlignVCenter, shortcutOf(action));
    const QColor text = toColor(isChosen ? colors[Role::accentFg] : rest);
    if (action->isCheckable() && action->isChecked())
        paintIcon(painter, style_, "check", QRectF(inside.left() - 3, row.top(), 16, row.height()), text);
    if (hasChecks(*this)) inside.setLeft(inside.left() + checkWidth);
    painter.setPen(text);
    painter.drawText(inside, Qt::AlignLeft | Qt::AlignVCenter, action->text());
}

MenuBar::MenuBar(const ViewStyle &style, QWidget *parent) : QMenuBar(parent), style_(style) {}

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
