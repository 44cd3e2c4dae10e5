#pragma once

namespace kiv {

// A rectangle in whole logical pixels.
struct Box {
    int x = 0, y = 0, width = 0, height = 0;

    int right() const { return x + width; }  // the first column outside
    int bottom() const { return y + height; }
    bool isEmpty() const { return width <= 0 || height <= 0; }
    friend bool operator==(const Box &, const Box &) = default;
};

}  // namespace kiv
