#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "Editor/AudioEditorModel/AudioEditorModel.h"
#include "Editor/Surfaces/Pointer.h"
#include "Editor/Surfaces/WaveformGeometry.h"

namespace kiv {

// What pointer and keys do to the waveform: placing the cursor, selecting, dragging edges and the view.
class WaveformInput {
public:
    explicit WaveformInput(AudioEditorModel &model) : model_(model) {}

    // The left button; clicks counts quick successive presses.
    void press(const PointerEvent &event, int clicks, const WaveformGeometry &geometry);
    void pressMiddle(const PointerEvent &event, const WaveformGeometry &geometry);
    // Before the menu opens: a click outside the selection sets the cursor.
    void pressRight(const PointerEvent &event, const WaveformGeometry &geometry);
    void move(const PointerEvent &event, const WaveformGeometry &geometry);
    void release();
    // Everything as at the press. False when nothing is being dragged.
    bool cancel();
    bool isDragging() const { return press_.has_value(); }

    // While a selection is dragged past a side: the columns a second by which the view is to move, to the right when positive.
    double scrollSpeed(const WaveformGeometry &geometry) const;
    // Moves the view, and the selection with it, as the pointer does that rests outside.
    void scroll(double seconds, const WaveformGeometry &geometry);

    PointerShape shape(const PointerEvent &event, const WaveformGeometry &geometry) const;
    void key(ViewKey key, Modifiers modifiers, const WaveformGeometry &geometry);

private:
    struct Press {
        std::int64_t cursor = 0;
        std::optional<FrameRange> selection;
        AudioEditorZoom view;
        bool movesView = false;
        PointerEvent at;
        PointerEvent last;
        double grab = 0;                    // frames by which the dragged edge lay off the pointer
        std::optional<std::int64_t> start;  // where the dragged edge stood
    };

    std::optional<std::int64_t> edgeNear(double x, const WaveformGeometry &geometry) const;
    void begin(const PointerEvent &event, bool movesView);
    void dragEdge(std::int64_t edge, std::int64_t fixed);
    void drag(const PointerEvent &event, const WaveformGeometry &geometry);
    void extendTo(std::int64_t fixed, std::int64_t frame);
    void selectBetweenMarks(std::int64_t frame);
    std::int64_t draggedFrame(const PointerEvent &event, std::int64_t fixed, const WaveformGeometry &geometry) const;
    std::int64_t movingEnd() const;
    std::int64_t keyTarget(ViewKey key, bool toMark, std::int64_t from, const WaveformGeometry &geometry) const;
    void moveTo(std::int64_t frame, bool extends);

    AudioEditorModel &model_;
    std::optional<Press> press_;
    std::optional<std::int64_t> fixed_;  // the end of the selection that did not move last
};

// The file's ends, markers and loop points, in order, each once.
std::vector<std::int64_t> markedFrames(const AudioEditorState &state);

}  // namespace kiv
