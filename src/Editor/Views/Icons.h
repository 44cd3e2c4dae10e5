#pragma once

#include <QColor>
#include <QHash>
#include <QPixmap>
#include <string_view>

namespace kiv {

// The interface icons, drawn from their outlines in any colour and kept. Main thread only; nothing is drawn before it is asked
// for.
class Icons {
public:
    // The icon in a square of `size` logical pixels at `ratio` device pixels each; an empty picture for an unknown name.
    QPixmap pixmap(std::string_view name, int size, double ratio, const QColor &color);

private:
    QHash<QString, QPixmap> drawn_;
};

// The application's own icon.
QPixmap applicationIcon(int size, double ratio);

}  // namespace kiv
