#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "Editor/AudioEditorModel/AudioEditorModel.h"
#include "Editor/Surfaces/Pointer.h"
#include "Editor/Surfaces/TimeEdges.h"
#include "Editor/Surfaces/WaveformGeometry.h"

namespace kiv {

// What pointer and keys do to the waveform: placing the cursor, selecting, dragging edges and the view.
class WaveformInput {
public:
    explicit WaveformInput(AudioEditorModel &model) : model_(model) {}

    // While a sheet is open the pointer may move the view, and nothing else. Ends the drag in progress.
    void setViewOnly(bool isViewOnly);
    bool isViewOnly() const { return isViewOnly_; }
    // Whichever button it is; the clicks are counted where they are the left one's and nothing is being dragged.
    void press(PointerButton button, const PointerEvent &event, const std::function<int()> &countClicks,
               const WaveformGeometry &geometry);
    // The left button; clicks counts quick successive presses.
    void press(const PointerEvent &event, int clicks, const WaveformGeometry &geometry);
    void pressMiddle(const PointerEvent &event, const WaveformGeometry &geometry);
    // Before the menu opens: a click outside the selection sets the cursor.
    void pressRight(const PointerEvent &event, const WaveformGeometry &geometry);
    void move(const PointerEvent &event, const WaveformGeometry &geometry);
    // A modifier was pressed or let go, or the view has moved, while the pointer rests.
    void modifiersChanged(Modifiers modifiers, const WaveformGeometry &geometry);
    void viewMoved(const WaveformGeometry &geometry);
    void release();
    // Everything as at the press. False when nothing is being dragged.
    bool cancel();
    bool isDragging() const { return press_.has_value(); }

    // While something is dragged past a side: the columns a second by which the view is to move, to the right when positive.
    // The last column counts as past it, for a window may end where the screen does.
    double scrollSpeed(const WaveformGeometry &geometry) const;
    // Moves the view, and what is dragged with it, as the pointer does that rests outside.
    void scroll(double seconds, const WaveformGeometry &geometry);

    PointerShape shape(const PointerEvent &event, const WaveformGeometry &geometry) const;
    void key(ViewKey key, Modifiers modifiers, const WaveformGeometry &geometry);

private:
    struct Press {
        std::int64_t cursor = 0;
        std::optional<FrameRange> selection;
        AudioEditorZoom view;
        PointerEvent at;
        PointerEvent last;
        std::int64_t anchor = 0;            // where a selection begins: at a mark near the press, else at the press
        std::optional<double> held;         // the frame that the view is held by
        double grab = 0;                    // frames by which the dragged edge lay off the pointer
        std::optional<std::int64_t> start;  // where the dragged edge stood
    };

    void begin(const PointerEvent &event);
    void pressEdge(TimeEdge edge, const WaveformGeometry &geometry);
    void pressExtending(std::int64_t frame, const WaveformGeometry &geometry);
    void dragView(double x, const WaveformGeometry &geometry);
    void drag(const PointerEvent &event, const WaveformGeometry &geometry);
    void dragLoop(bool isStart, const PointerEvent &event, const WaveformGeometry &geometry);
    std::optional<std::int64_t> markNear(const PointerEvent &event, const WaveformGeometry &geometry) const;
    void extendTo(std::int64_t fixed, std::int64_t frame);
    void selectBetweenMarks(std::int64_t frame);
    std::int64_t draggedFrame(const PointerEvent &event, TimeEdge::Kind kind, std::int64_t fixed,
                              const WaveformGeometry &geometry) const;
    std::int64_t movingEnd() const;
    std::int64_t keyTarget(ViewKey key, bool toMark, std::int64_t from, const WaveformGeometry &geometry) const;
    void moveTo(std::int64_t frame, bool extends);

    AudioEditorModel &model_;
    std::optional<Press> press_;
    bool isViewOnly_ = false;
    std::optional<std::int64_t> fixed_;  // the end of the selection that did not move last
};

}  // namespace kiv
