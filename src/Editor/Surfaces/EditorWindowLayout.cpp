#include "Editor/Surfaces/EditorWindowLayout.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace kiv {

namespace {

constexpr int cascadeStep = 24;

int overviewHeight(int windowHeight) { return windowHeight < 440 ? 0 : windowHeight < 560 ? 28 : 44; }

bool overlap(const Box &a, const Box &b) { return a.x < b.right() && b.x < a.right() && a.y < b.bottom() && b.y < a.bottom(); }

// How far a box is from another, in pixels of either direction.
int distance(const Box &a, const Box &b) {
    const int dx = std::max({0, b.x - a.right(), a.x - b.right()});
    const int dy = std::max({0, b.y - a.bottom(), a.y - b.bottom()});
    return dx + dy;
}

Box movedInto(Box frame, const Box &screen) {
    frame.width = std::min(frame.width, screen.width);
    frame.height = std::min(frame.height, screen.height);
    frame.x = std::clamp(frame.x, screen.x, screen.right() - frame.width);
    frame.y = std::clamp(frame.y, screen.y, screen.bottom() - frame.height);
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
        const int width = std::min(1280, first.width), height = std::min(800, first.height);
        return {first.x + (first.width - width) / 2, first.y + (first.height - height) / 2, width, height};
    }
    Box frame = *remembered;
    frame.width = std::max(frame.width, editorWindowMinimumWidth);
    frame.height = std::max(frame.height, editorWindowMinimumHeight);
    if (std::any_of(screens.begin(), screens.end(), [&](const Box &screen) { return overlap(frame, screen); })) return frame;
    return movedInto(frame, *std::min_element(screens.begin(), screens.end(), [&](const Box &a, const Box &b) {
                         return distance(frame, a) < distance(frame, b);
                     }));
}

Box cascaded(Box frame, const std::vector<Box> &others) {
    const auto isTaken = [&](const Box &other) { return other.x == frame.x && other.y == frame.y; };
    while (std::any_of(others.begin(), others.end(), isTaken)) {
        frame.x += cascadeStep;
        frame.y += cascadeStep;
    }
    return frame;
}

}  // namespace kiv
