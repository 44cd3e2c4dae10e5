#pragma once

#include <QColor>
#include <QFont>
#include <QPixmap>
#include <QStringList>
#include <memory>
#include <string_view>

#include "Preferences/AudioEditorTheme.h"
#include "Support/Observers.h"

namespace kiv {

class Icons;

QColor toColor(Rgba color);

// How everything in a window looks: colours, type, radius. One for the program, borrowed by every view; views redraw when it
// says that it changed.
class ViewStyle {
public:
    explicit ViewStyle(const AudioEditorTheme &theme);
    ~ViewStyle();

    const ThemeColors &colors() const { return colors_; }
    QColor color(AudioEditorThemeColor role) const { return toColor(colors_[role]); }
    double radius() const { return colors_.theme.buttonRadius; }

    // The desktop's interface font, else Inter, Noto Sans, the default sans; `pixels` at a desktop font of 10 points, scaled
    // with it by 0.9 … 1.6.
    QFont font(int pixels, QFont::Weight weight = QFont::Normal) const;
    double textFactor() const { return textFactor_; }
    // A height that holds text, grown with the text factor in steps of 4.
    int grown(int height) const;
    bool reducesMotion() const { return reducesMotion_; }
    // Whether windows may be see-through, for round corners and shadows of menus and tips.
    bool hasTranslucency() const { return hasTranslucency_; }

    // An interface icon in a square of `size` logical pixels at `ratio` device pixels each.
    QPixmap icon(std::string_view name, const QColor &color, double ratio, int size = 16) const;

    void setTheme(const AudioEditorTheme &theme);
    void setReducesMotion(bool reduces) { reducesMotion_ = reduces; }
    void setTranslucency(bool has) { hasTranslucency_ = has; }
    // Takes over the desktop's interface font; again when it has changed.
    void setDesktopFont(const QFont &font);

    Observers<ViewStyle> changed;

private:
    ThemeColors colors_;
    double textFactor_ = 1;
    bool reducesMotion_ = false;
    bool hasTranslucency_ = false;
    QStringList families_;
    std::unique_ptr<Icons> icons_;
};

}  // namespace kiv
