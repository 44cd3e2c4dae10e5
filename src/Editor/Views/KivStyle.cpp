#include "Editor/Views/KivStyle.h"

#include <QStyleOptionMenuItem>

#include "Editor/Views/Menu.h"
#include "Editor/Views/ScrollBar.h"

namespace kiv {

KivStyle::KivStyle() : QProxyStyle("Fusion") {}

QSize KivStyle::sizeFromContents(ContentsType type, const QStyleOption *option, const QSize &size,
                                 const QWidget *widget) const {
    if (const auto *menu = dynamic_cast<const Menu *>(widget); menu && type == CT_MenuItem) {
        const auto *item = static_cast<const QStyleOptionMenuItem *>(option);
        return {1, menu->rowHeight(item->menuItemType == QStyleOptionMenuItem::Separator)};
    }
    if (const auto *bar = dynamic_cast<const MenuBar *>(widget); bar && type == CT_MenuBarItem)
        return bar->itemSize(static_cast<const QStyleOptionMenuItem *>(option)->text);
    return QProxyStyle::sizeFromContents(type, option, size, widget);
}

int KivStyle::pixelMetric(PixelMetric metric, const QStyleOption *option, const QWidget *widget) const {
    switch (metric) {
        case PM_MenuHMargin:
        case PM_MenuVMargin:
            return Menu::padding;
        case PM_MenuPanelWidth:
        case PM_MenuBarVMargin:
        case PM_MenuBarItemSpacing:
        case PM_MenuBarPanelWidth:
            return 0;
        case PM_MenuBarHMargin:
            return MenuBar::padding;
        case PM_ScrollBarExtent:
            return dynamic_cast<const ScrollBar *>(widget) ? ScrollBar::thickness
                                                           : QProxyStyle::pixelMetric(metric, option, widget);
        default:
            return QProxyStyle::pixelMetric(metric, option, widget);
    }
}

int KivStyle::styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget, QStyleHintReturn *data) const {
    switch (hint) {
        case SH_ToolTip_WakeUpDelay:
            return 600;
        case SH_ToolTip_FallAsleepDelay:  // so long after every time
        // Alt with a letter is a command, and Alt alone the start of one.
        case SH_MenuBar_AltKeyNavigation:
        case SH_Menu_AllowActiveAndDisabled:
        case SH_UnderlineShortcut:
            return 0;
        case SH_MenuBar_MouseTracking:
        case SH_Menu_MouseTracking:
            return 1;
        default:
            return QProxyStyle::styleHint(hint, option, widget, data);
    }
}

}  // namespace kiv
