#pragma once

#include <array>
#include <optional>

#include "Editor/Surfaces/Box.h"

namespace kiv {

// The controls of the top bar, from left to right.
enum class TopBarItem {
    goToStart,
    playStop,
    goToEnd,
    loop,
    position,
    slicer,
    editLoop,
    spectral,
    eq,
    maxLevel,
    verticalZoomOut,
    verticalZoomValue,
    verticalZoomIn,
    zoomOut,
    zoomIn,
    zoomFit,
    zoomSelection,
    followPlayhead,
};
inline constexpr int topBarItemCount = 18;
inline constexpr int topBarModeCount = 4;  // slicer … eq: those with words

// What depends on the type in use.
struct TopBarMeasures {
    std::array<int, topBarModeCount> wordedWidths{75, 98, 92, 58};  // of the mode buttons with their words
    int positionWidth = 104;
    int maxLevelWidth = 106;
    int verticalValueWidth = 60;
    int barHeight = 44;
    int buttonHeight = 28;
};

// Where the controls stand in a bar of the given width. The narrower it is, the more goes: the words of the mode buttons, the
// vertical zoom, the highest level, the position; each also when the type is so large that they would run into each other.
struct TopBarLayout {
    TopBarLayout(int width, const TopBarMeasures &measures);

    const std::optional<Box> &operator[](TopBarItem item) const { return boxes[std::size_t(item)]; }

    std::array<std::optional<Box>, topBarItemCount> boxes;
    Box separator;
    bool showsWords = true;

private:
    bool place(int width, const TopBarMeasures &measures, int dropped);
    int placeLeft(const TopBarMeasures &measures, int dropped);
    int placeRight(int width, const TopBarMeasures &measures, int dropped);
};

}  // namespace kiv
