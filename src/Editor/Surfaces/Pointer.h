#pragma once

#include <cmath>
#include <optional>

// What pointer, wheel and keys tell a view, as plain values. Places are in device pixels of the view.
namespace kiv {

struct Modifiers {
    bool shift = false, control = false;
};

enum class PointerButton { left, middle, right, other };

struct PointerEvent {
    double x = 0, y = 0;
    Modifiers modifiers = {};
};

enum class PointerShape { arrow, textBeam, horizontalSize, openHand, closedHand };

// A turn of the wheel or a swipe, in notches, which may be parts of one: up and to the left are positive.
struct WheelTurn {
    double up = 0, left = 0;
    Modifiers modifiers = {};
};

// Keys that a focused view takes once no command wanted them.
enum class ViewKey { left, right, home, end, pageUp, pageDown, up, down };

// Which of quick successive presses in one place a press is: 1, 2, 3, then 1 again.
class ClickCounter {
public:
    // Milliseconds and device pixels; `interval` and `distance` are the desktop's for a double click.
    int press(double milliseconds, double x, double y, double interval, double distance) {
        const bool again = count_ > 0 && milliseconds - at_ <= interval && std::hypot(x - x_, y - y_) <= distance;
        count_ = again ? count_ % 3 + 1 : 1;
        at_ = milliseconds;
        x_ = x;
        y_ = y;
        return count_;
    }

private:
    int count_ = 0;
    double at_ = 0, x_ = 0, y_ = 0;
};

}  // namespace kiv
