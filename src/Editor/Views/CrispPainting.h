#pragma once

#include <QColor>
#include <QPainterPath>
#include <QRectF>
#include <string_view>

#include "Editor/Surfaces/Box.h"
#include "Editor/Views/ViewStyle.h"

class QPainter;

// Painting that is sharp at any scale: edges on whole device pixels, hairlines a whole number of them wide.
namespace kiv {

enum class Corners { none = 0, left = 1, right = 2, all = 3, bottom = 4 };

inline QRect toRect(const Box &box) { return {box.x, box.y, box.width, box.height}; }

// The rectangle with its edges on whole device pixels.
QRectF snapped(const QPainter &painter, const QRectF &rect);
// A line's width in logical pixels, as a whole number of device pixels: at a scale between whole ones the thinner choice.
double lineWidth(const QPainter &painter, double width = 1);

void fillCrisp(QPainter &painter, const QRectF &rect, const QColor &color);
QPainterPath roundedPath(const QRectF &rect, double radius, Corners corners = Corners::all);
// A filled box with a border line of its own inside its edge; no border for an invalid colour.
void paintBox(QPainter &painter, const QRectF &rect, double radius, const QColor &fill, const QColor &border = {},
              Corners corners = Corners::all, double borderWidth = 1);
// A filled box in a frame two pixels wide outside its edge, for what is being typed into.
void paintFramed(QPainter &painter, const QRectF &rect, double radius, const QColor &fill, const QColor &frame);
// An icon in the middle of a rectangle.
void paintIcon(QPainter &painter, const ViewStyle &style, std::string_view name, const QRectF &rect, const QColor &color,
               int size = 16);
// The shadow that a floating box of these edges throws, painted around and under it.
void paintShadow(QPainter &painter, const QRectF &box, const ViewStyle &style);
inline constexpr int shadowExtent = 48;  // how far it reaches beyond the box to the sides
inline constexpr int shadowDrop = 16;    // and how much further down

}  // namespace kiv
