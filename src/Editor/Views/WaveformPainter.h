#pragma once

#include <QRect>

#include "Editor/Surfaces/WaveformImage.h"
#include "Editor/Surfaces/WaveformScene.h"
#include "Editor/Views/PainterTools.h"

class QPainter;

namespace kiv {

class ViewStyle;

// The pixels of a scene's sound, and of what an open dialog would make of it, kept from one painting to the next.
class WaveformPixels {
public:
    // Brings both up to date with a scene; the preview only where the scene has one.
    void update(const SoundSource &source, const WaveformScene &scene, const ThemeColors &colors);

    const WaveformImage &sound() const { return sound_; }
    const WaveformImage &preview() const { return preview_; }

private:
    WaveformColumns columns_;
    WaveformImage sound_, preview_;
};

// Paints the given part, in device pixels, of the waveform. The painter's unit must be one of these.
void paintWaveform(QPainter &painter, const WaveformScene &scene, const WaveformPixels &pixels, const ViewStyle &style,
                   TextCache &texts, const QRect &part);

}  // namespace kiv
