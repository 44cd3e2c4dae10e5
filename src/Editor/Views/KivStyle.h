#pragma once

#include <QProxyStyle>

namespace kiv {

// The measures and delays of menus and tips, under our own painting. Stands on the toolkit's plain built-in style, which needs
// no plugin.
class KivStyle : public QProxyStyle {
public:
    KivStyle();

    QSize sizeFromContents(ContentsType type, const QStyleOption *option, const QSize &size,
                           const QWidget *widget) const override;
    int pixelMetric(PixelMetric metric, const QStyleOption *option, const QWidget *widget) const override;
    int styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget, QStyleHintReturn *data) const override;
};

}  // namespace kiv
