#include "Editor/Surfaces/SavePanelLayout.h"

#include <algorithm>

namespace kiv {
namespace {

constexpr int edge = 20;       // above the first part and around the buttons
constexpr int aboveName = 18;  // of which its frame takes 2
constexpr int nameToFolder = 10, folderToList = 8, listToStatus = 8, statusToBand = 10;
constexpr int bandLine = 1;  // above the band, and of its height
constexpr int bandPadding = 16, betweenBandRows = 8, containersToBits = 20;
constexpr int leastList = 140;

bool isOneRow(const SavePanelMeasures &m, int width) {
    return 2 * savePanelPadding + m.label + m.containers + containersToBits + m.bitsLabel + m.bits <= width;
}

int bandHeight(const SavePanelMeasures &m, int width) {
    if (m.containers == 0) return 0;
    return 2 * bandPadding + m.field + (isOneRow(m, width) ? 0 : betweenBandRows + m.field);
}

int listTop(const SavePanelMeasures &m) {
    const int name = (m.note > 0 ? edge + m.note : 0) + aboveName;
    return name + m.field + nameToFolder + m.crumb + folderToList;
}

int belowList(const SavePanelMeasures &m, int width) {
    const int band = bandHeight(m, width);
    return listToStatus + m.status + (band > 0 ? statusToBand + band + edge : statusToBand) + m.field + edge;
}

}  // namespace

SavePanelLayout::SavePanelLayout(int width, int height, const SavePanelMeasures &m) {
    const int left = savePanelPadding, wide = width - 2 * left;
    note = {left, m.note > 0 ? edge : 0, wide, m.note};
    name = {left + m.label, note.bottom() + aboveName, wide - m.label, m.field};
    folder = {name.x, name.bottom() + nameToFolder, name.width, m.crumb};
    list = {left, listTop(m), wide, height - listTop(m) - belowList(m, width)};
    places = {left, list.y, m.places, list.height};
    files = {places.right(), list.y, list.right() - places.right(), list.height};
    status = {left, list.bottom() + listToStatus, wide, m.status};
    band = {0, status.bottom() + statusToBand, width, bandHeight(m, width)};
    const int row = band.y + bandLine + bandPadding;
    containers = {name.x, row, m.containers, m.field};
    const bool isBeside = isOneRow(m, width);
    bitsLabelLeft = isBeside ? containers.right() + containersToBits : left;
    bits = {isBeside ? bitsLabelLeft + m.bitsLabel : name.x, isBeside ? row : containers.bottom() + betweenBandRows, m.bits,
            m.field};
    buttons = {left, height - edge - m.field, wide, m.field};
}

int SavePanelLayout::smallestWidth(const SavePanelMeasures &m) {
    return 2 * savePanelPadding + m.label + std::max({m.containers, m.bits, 2 * m.places});
}

int SavePanelLayout::smallestHeight(int width, const SavePanelMeasures &m) {
    return listTop(m) + leastList + belowList(m, width);
}

}  // namespace kiv
