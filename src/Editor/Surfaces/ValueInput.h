#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Editor/Surfaces/Pointer.h"

namespace kiv {

// Whole steps out of parts of one; what is left over waits for the next part. A turn back begins at once.
class StepCounter {
public:
    int add(double steps);
    void clear() { rest_ = 0; }

private:
    double rest_ = 0;
};

enum class Stepping { whole, continuous };
enum class ValueKey { up, down, open };

// What a drag does that begins sideways: in a field it chooses text.
enum class Sideways { isNothing, choosesText };

inline constexpr double stepPixels = 8;

// What pointer, wheel and keys do to a number, however it is shown. The pointer of a drag is hidden and stays put: the view
// takes it back whenever it has gone far, so that no edge of the screen ends the drag. Places are in logical pixels.
class ValueInput {
public:
    // Dragging up so many pixels is a step, as is a notch of the wheel.
    explicit ValueInput(double pixelsPerStep = stepPixels, Stepping stepping = Stepping::whole,
                        Sideways sideways = Sideways::isNothing)
        : pixelsPerStep_(pixelsPerStep), stepping_(stepping), sideways_(sideways) {}

    std::function<void(double steps, bool isSmall)> onStep;
    std::function<void()> onReset;
    // The field is to open, holding what has been typed already.
    std::function<void(const std::string &typed)> onOpen;
    // Where the number follows the pointer, as a slider's does, instead of going by steps: the pointer stays to be seen.
    std::function<void(const PointerEvent &)> onFollow;
    // Around a drag; a cancelled one is to leave everything as it was when it began.
    std::function<void()> onDragBegan;
    std::function<void(bool isCancelled)> onDragEnded;

    void press(const PointerEvent &event);
    // True when the pointer has gone so far that it should be taken back; say so with returned() once it is.
    bool move(const PointerEvent &event);
    void returned();
    // True when it was a click: nothing has been dragged.
    bool release();
    // Ends the drag as if it had not been; false when there is none.
    bool cancel();
    void doubleClick();
    void turn(const WheelTurn &turn);
    // True when somebody takes it.
    bool key(ValueKey key, bool isSmall);
    // True when the text begins a number, for which a field opens.
    bool type(const std::string &text);

    bool isDragging() const { return isDragging_; }

private:
    struct Place {
        double x = 0, y = 0;
    };
    double climb(const PointerEvent &event);
    void step(double steps, bool isSmall);
    void begin();
    void end(bool isCancelled);

    double pixelsPerStep_;
    Stepping stepping_;
    Sideways sideways_;
    StepCounter dragged_, turned_;
    std::optional<Place> pressed_;
    Place last_;
    std::optional<Place> beforeReturn_;  // moves from before the return may still come
    bool isDragging_ = false;
};

// Lets a cancelled drag set the value again that there was when it began.
template <class Get, class Set>
void restoreWhenCancelled(ValueInput &input, Get get, Set set) {
    const auto before = std::make_shared<decltype(get())>();
    input.onDragBegan = [=] { *before = get(); };
    input.onDragEnded = [=](bool isCancelled) {
        if (isCancelled) set(*before);
    };
}

}  // namespace kiv
