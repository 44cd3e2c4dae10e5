#include "Editor/Views/ViewStyle.h"

#include <QGuiApplication>
#include <algorithm>
#include <cmath>

#include "Editor/Surfaces/DevicePixels.h"
#include "Editor/Views/Icons.h"

namespace kiv {

namespace {

// A family that names nothing but "any sans" is what a desktop without a wish of its own gives.
bool namesAFont(const QString &family) {
    const QString name = family.toLower();
    return !name.isEmpty() && name != "sans" && name != "sans serif" && name != "sans-serif" && name != "system-ui";
}

}  // namespace

QColor toColor(Rgba color) {
    return QColor(int(color >> 24), int(color >> 16 & 0xFF), int(color >> 8 & 0xFF), int(color & 0xFF));
}

ViewStyle::ViewStyle(const AudioEditorTheme &theme) : colors_(theme), icons_(std::make_unique<Icons>()) {
    setDesktopFont(QGuiApplication::font());
}

ViewStyle::~ViewStyle() = default;

QFont ViewStyle::font(int pixels, QFont::Weight weight) const {
    QFont font;
    font.setFamilies(families_);
    font.setStyleHint(QFont::SansSerif);
    font.setPixelSize(int(std::lround(pixels * textFactor_)));
    font.setWeight(weight);
    return font;
}

int ViewStyle::grown(int height) const { return grownWithText(height, textFactor_); }

QPixmap ViewStyle::icon(std::string_view name, const QColor &color, double ratio, int size) const {
    return icons_->pixmap(name, size, ratio, color);
}

void ViewStyle::setTheme(const AudioEditorTheme &theme) {
    if (theme == colors_.theme) return;
    colors_ = ThemeColors(theme);
    changed.notify(*this);
}

void ViewStyle::setDesktopFont(const QFont &font) {
    const bool isNamed = namesAFont(font.family());
    const QStringList families = isNamed ? QStringList{font.family()} : QStringList{"Inter", "Noto Sans", "sans-serif"};
    const double factor = isNamed && font.pointSizeF() > 0 ? std::clamp(font.pointSizeF() / 10, 0.9, 1.6) : 1;
    if (families == families_ && factor == textFactor_) return;
    families_ = families;
    textFactor_ = factor;
    changed.notify(*this);
}

}  // namespace kiv
