#include "Editor/Surfaces/TopBarLayout.h"

namespace kiv {

namespace {

constexpr int padding = 12;
constexpr int gap = 4;
constexpr int iconWidth = 32;
constexpr int playWidth = 44;

// How many of the parts that may go are gone.
enum Dropped { words = 1, verticalZoom, maxLevel, position };
constexpr std::array widthBelow{1120, 960, 800, 660};

int droppedAt(int width) {
    int dropped = 0;
    for (int limit : widthBelow) dropped += width < limit;
    return dropped;
}

// Puts boxes one after the other, to the right or to the left.
struct Row {
    const TopBarMeasures &measures;
    std::array<std::optional<Box>, topBarItemCount> &boxes;
    int x;

    Box box(int width) const { return {x, (measures.barHeight - measures.buttonHeight) / 2, width, measures.buttonHeight}; }
    void right(TopBarItem item, int width, int after) {
        boxes[std::size_t(item)] = box(width);
        x += width + after;
    }
    // Buttons of a group share the line between them: such a box reaches one pixel under its right neighbour.
    void left(TopBarItem item, int width, int before, int shared = 0) {
        x -= width;
        boxes[std::size_t(item)] = box(width + shared);
        x -= before;
    }
};

}  // namespace

TopBarLayout::TopBarLayout(int width, const TopBarMeasures &measures) {
    int dropped = droppedAt(width);
    while (!place(width, measures, dropped) && dropped < position) ++dropped;
}

bool TopBarLayout::place(int width, const TopBarMeasures &measures, int dropped) {
    boxes.fill(std::nullopt);
    showsWords = dropped < words;
    return placeLeft(measures, dropped) + padding <= placeRight(width, measures, dropped);
}

int TopBarLayout::placeLeft(const TopBarMeasures &measures, int dropped) {
    Row row{measures, boxes, padding};
    row.right(TopBarItem::goToStart, iconWidth, gap);
    row.right(TopBarItem::playStop, playWidth, gap);
    row.right(TopBarItem::goToEnd, iconWidth, 8);
    row.right(TopBarItem::loop, iconWidth, 0);
    if (dropped < position) {
        row.x += 16;
        row.right(TopBarItem::position, measures.positionWidth, 0);
    }
    row.x += padding;
    separator = row.box(1);
    row.x += 1 + 16;
    for (int i = 0; i < topBarModeCount; ++i) {
        const TopBarItem item = TopBarItem(int(TopBarItem::slicer) + i);
        const int after = item == TopBarItem::spectral ? 12 : item == TopBarItem::eq ? 0 : gap;
        row.right(item, showsWords ? measures.wordedWidths[std::size_t(i)] : iconWidth, after);
    }
    return row.x;
}

int TopBarLayout::placeRight(int width, const TopBarMeasures &measures, int dropped) {
    Row row{measures, boxes, width - padding};
    row.left(TopBarItem::followPlayhead, iconWidth, 8);
    row.left(TopBarItem::zoomSelection, iconWidth, 0);
    for (TopBarItem item : {TopBarItem::zoomFit, TopBarItem::zoomIn, TopBarItem::zoomOut}) row.left(item, iconWidth - 1, 0, 1);
    if (dropped < verticalZoom) {
        row.x -= 16;
        row.left(TopBarItem::verticalZoomIn, iconWidth, 0);
        row.left(TopBarItem::verticalZoomValue, measures.verticalValueWidth - 1, 0, 1);
        row.left(TopBarItem::verticalZoomOut, iconWidth - 1, 0, 1);
    }
    if (dropped < maxLevel) {
        row.x -= 16;
        row.left(TopBarItem::maxLevel, measures.maxLevelWidth, 0);
    }
    return row.x;
}

}  // namespace kiv
