#pragma once

#include "Editor/AudioEditorModel/ModelFixture.h"
#include "Editor/Surfaces/BlockPowers.h"
#include "Editor/Surfaces/WaveformColumns.h"
#include "Editor/Surfaces/WaveformGeometry.h"

namespace kiv {

inline BlockPowers powersOf(const AudioEditorBuffer &buffer) {
    BlockPowers powers = carriedPowers(buffer, AudioEditorBuffer(), {});
    completePowers(buffer, powers);
    return powers;
}

// A sound with all its summaries.
struct Sound {
    explicit Sound(AudioEditorBuffer aBuffer) : buffer(std::move(aBuffer)), peaks(buffer), powers(powersOf(buffer)) {}
    SoundSource source(std::int64_t generation = 1) const { return {buffer, peaks, powers, generation, 1}; }

    AudioEditorBuffer buffer;
    AudioEditorPeaks peaks;
    BlockPowers powers;
};

// A model whose view shows `framesPerPixel` frames a pixel from a frame on, 1000 pixels wide and 200 high.
struct SurfaceFixture : ModelFixture {
    ViewSize size{1000, 200, 1};

    void show(double first, double framesPerPixel) {
        const double frames = double(buffer().frames());
        const double visible = framesPerPixel * size.width;
        model.setView({frames / visible, first + visible / 2});
        told.clear();
    }
    WaveformGeometry geometry() const { return waveformGeometry(state(), size); }
};

}  // namespace kiv
