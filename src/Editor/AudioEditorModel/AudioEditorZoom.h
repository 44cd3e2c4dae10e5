#pragma once

#include <cstdint>

#include "Editor/AudioEditorCore/FrameRange.h"

namespace kiv {

// Which part of the sound is in view: zoom 1 shows all of it, centerFrame is in the middle. Pure functions; `frames` is the
// sound's frame count, taken as at least 1.
struct AudioEditorZoom {
    double zoom = 1;
    double centerFrame = 0.5;

    friend bool operator==(const AudioEditorZoom &, const AudioEditorZoom &) = default;
};

// At least 16 frames stay in view; a shorter sound stays at 1.
double maximumZoom(std::int64_t frames);
double visibleFrames(const AudioEditorZoom &view, std::int64_t frames);
double firstVisibleFrame(const AudioEditorZoom &view, std::int64_t frames);
bool isInView(const AudioEditorZoom &view, double frame, std::int64_t frames);  // both ends count

AudioEditorZoom clampedCenter(AudioEditorZoom view, std::int64_t frames);
AudioEditorZoom clampedView(AudioEditorZoom view, std::int64_t frames);  // zoom and centre
AudioEditorZoom zoomedToFit(std::int64_t frames);
// Fits the range exactly, as far as the limits allow.
AudioEditorZoom zoomedToRange(FrameRange range, std::int64_t frames);
// The new zoom, with the anchor frame staying where it is on the screen.
AudioEditorZoom zoomedAround(AudioEditorZoom view, double zoom, double anchorFrame, std::int64_t frames);
// The new zoom, with the frame under x staying there; x out of 0 … width counts as its nearer end.
AudioEditorZoom zoomedAt(AudioEditorZoom view, double zoom, double x, double width, std::int64_t frames);
AudioEditorZoom scrolledBy(AudioEditorZoom view, double deltaFrames, std::int64_t frames);
// Turned so that the frame stands 10 % from the left, if it is not in view.
AudioEditorZoom revealing(AudioEditorZoom view, double frame, std::int64_t frames);

inline constexpr double zoomStep = 1.5;
inline constexpr int verticalZoomStepDb = 3;
inline constexpr int verticalZoomMinDb = -12;
inline constexpr int verticalZoomMaxDb = 36;

}  // namespace kiv
