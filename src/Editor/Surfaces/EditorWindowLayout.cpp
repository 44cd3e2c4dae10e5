#include "Editor/Surfaces/EditorWindowLayout.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <utility>

namespace kiv {

namespace {

constexpr int cascadeStep = 24;
constexpr int titleBar = 32;  // about what the desktop's own frame takes above a window

int overviewHeight(int windowHeight) { return windowHeight < 440 ? 0 : windowHeight < 560 ? 28 : 44; }

// How much of a box is on a screen; screens do not overlap.
std::int64_t commonArea(const Box &a, const Box &b) {
    const int width = std::min(a.right(), b.right()) - std::max(a.x, b.x);
    const int height = std::min(a.bottom(), b.bottom()) - std::max(a.y, b.y);
    return std::int64_t(std::max(width, 0)) * std::max(height, 0);
}

std::int64_t areaOnScreens(const Box &frame, const std::vector<Box> &screens) {
    std::int64_t area = 0;
    for (const Box &screen : screens) area += commonArea(frame, screen);
    return area;
}

bool isAllOnScreens(const Box &frame, const std::vector<Box> &screens) {
    return areaOnScreens(frame, screens) == std::int64_t(frame.width) * frame.height;
}

// How far a box is from another, in pixels of either direction.
int distance(const Box &a, const Box &b) {
    const int dx = std::max({0, b.x - a.right(), a.x - b.right()});
    const int dy = std::max({0, b.y - a.bottom(), a.y - b.bottom()});
    return dx + dy;
}

// The screen that most of a box is on, else the nearest one.
const Box &screenOf(const Box &frame, const std::vector<Box> &screens) {
    return *std::min_element(screens.begin(), screens.end(), [&](const Box &a, const Box &b) {
        return std::pair(-commonArea(frame, a), distance(frame, a)) < std::pair(-commonArea(frame, b), distance(frame, b));
    });
}

// With its title bar.
Box movedInto(Box frame, const Box &screen) {
    frame.width = std::min(frame.width, screen.width);
    frame.height = std::min(frame.height, screen.height - titleBar);
    frame.x = std::clamp(frame.x, screen.x, screen.right() - frame.width);
    frame.y = std::clamp(frame.y, screen.y + titleBar, screen.bottom() - frame.height);
    return frame;
}

}  // namespace

EditorWindowLayout::EditorWindowLayout(int width, int height, const EditorWindowMeasures &measures) {
    int y = 0;
    const auto next = [&](int rowHeight) {
        const Box row{0, y, width, rowHeight};
        y += rowHeight;
        return row;
    };
    menuBar = next(measures.menuBar);
    topBar = next(measures.topBar);
    overview = next(overviewHeight(height));
    ruler = next(measures.ruler);
    const Box sound = next(std::max(0, height - measures.infoLine - y));
    infoLine = next(measures.infoLine);
    gutter = {0, sound.y, measures.gutter, sound.height};
    waveform = {measures.gutter, sound.y, width - measures.gutter, sound.height};
}

std::string frameText(const Box &frame) {
    return std::to_string(frame.x) + " " + std::to_string(frame.y) + " " + std::to_string(frame.width) + " " +
           std::to_string(frame.height);
}

std::optional<Box> parseFrame(std::string_view text) {
    std::array<int, 4> numbers{};
    const char *at = text.data(), *end = at + text.size();
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        const auto [next, error] = std::from_chars(at, end, numbers[i]);
        const bool isLast = i + 1 == numbers.size();
        if (error != std::errc() || (isLast ? next != end : next == end || *next != ' ')) return std::nullopt;
        at = next + !isLast;
    }
    return Box{numbers[0], numbers[1], numbers[2], numbers[3]};
}

Box openingFrame(const std::optional<Box> &remembered, const std::vector<Box> &screens) {
    const Box &first = screens.front();
    if (!remembered) {
        constexpr int width = 1280, height = 800;
        return movedInto({first.x + (first.width - width) / 2, first.y + (first.height - height) / 2, width, height}, first);
    }
    Box frame = *remembered;
    frame.width = std::max(frame.width, editorWindowMinimumWidth);
    frame.height = std::max(frame.height, editorWindowMinimumHeight);
    return isAllOnScreens(frame, screens) ? frame : movedInto(frame, screenOf(frame, screens));
}

Box cascaded(Box frame, const std::vector<Box> &others, const std::vector<Box> &screens) {
    const Box &screen = screenOf(frame, screens);
    const auto isTaken = [&](const Box &other) { return other.x == frame.x && other.y == frame.y; };
    for (std::size_t tries = 0; tries <= others.size() && std::any_of(others.begin(), others.end(), isTaken); ++tries) {
        frame.x += cascadeStep;
        frame.y += cascadeStep;
        if (isAllOnScreens(frame, screens)) continue;
        frame.x = screen.x;
        frame.y = screen.y + titleBar;
    }
    return frame;
}

}  // namespace kiv
