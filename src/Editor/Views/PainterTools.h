#pragma once

#include <QFont>
#include <QRect>
#include <QStaticText>
#include <QString>
#include <map>
#include <string>

#include "Editor/Surfaces/DevicePixels.h"
#include "Editor/Surfaces/ViewMarks.h"
#include "Editor/Surfaces/WaveformGeometry.h"
#include "Editor/Surfaces/WaveformRaster.h"
#include "Preferences/AudioEditorTheme.h"

class QPainter;
class QRegion;
class QWidget;

// Painting in whole device pixels at any scale, as the scenes of the sound's views count them.
namespace kiv {

class ViewStyle;

// A widget's size as its scene takes it, and the painting of what has changed there: strips of columns counted from `left`.
ViewSize viewSize(const QWidget &view, const ViewStyle &style);
void updateDamaged(QWidget &view, const Damage &damage, int left = 0);

// Makes the painter's unit one device pixel, counted from the widget's upper left corner rounded to a whole one.
void useDevicePixels(QPainter &painter);

// The device pixels that a logical rectangle touches, and the logical pixels that some device columns touch.
QRect toDevice(const QRect &logical, double scale);
QRect toLogical(PixelSpan columns, int height, double scale);

QRect rectOf(PixelSpan columns, PixelSpan rows);
void fill(QPainter &painter, const QRect &rect, Rgba color);
// Pixels that a raster wrote, `width` a row: the columns from fromColumn on, at the given place.
void drawPixels(QPainter &painter, const Pixel *pixels, int width, int rows, int fromColumn, const QRect &place);

// A theme's colour as the rasters take it.
Pixel toPixel(Rgba color);

// Texts laid out once and kept as long as the font stays.
class TextCache {
public:
    // Draws with the baseline's left end at a place in device pixels, or its right end. The painter's unit may be either.
    void drawLeft(QPainter &painter, const QFont &font, const std::string &text, double x, double baseline, double scale);
    void drawRight(QPainter &painter, const QFont &font, const std::string &text, double x, double baseline, double scale);
    // In device pixels.
    double width(const QFont &font, const std::string &text, double scale) { return layout(font, text).size().width() * scale; }
    void drawCentred(QPainter &painter, const QFont &font, const std::string &text, double x, double baseline, double scale);

private:
    void draw(QPainter &painter, const QFont &font, const std::string &text, double x, double baseline, double scale,
              double before);
    const QStaticText &layout(const QFont &font, const std::string &text);

    std::map<std::pair<QString, std::string>, QStaticText> texts_;  // by font and text
};

}  // namespace kiv
