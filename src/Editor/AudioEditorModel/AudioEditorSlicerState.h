#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Editor/AudioEditorCore/AudioEditorSlicer.h"

namespace kiv {

// One edge of one slice: its start, or its end.
struct SliceEdge {
    std::size_t index = 0;
    bool start = false;
    friend bool operator==(const SliceEdge &, const SliceEdge &) = default;
};

// The energies of the sound of one generation; kept, for only an edit changes them.
struct SliceEnergy {
    std::int64_t generation = 0;
    std::shared_ptr<const AudioEditorSlicer::Energy> energy;
    friend bool operator==(const SliceEnergy &, const SliceEnergy &) = default;
};

// What the slicer works with. The numbers are those of the rows in SliceSettings.h, which say their ranges.
struct AudioEditorSlicerState {
    bool slicerEnabled = false;
    std::vector<FrameRange> slices;
    AudioEditorSlicer::Mode sliceMode = AudioEditorSlicer::Mode::transients;
    int sliceThresholdDb = -30;
    int sliceMinSilenceMs = 50;
    int sliceSensitivity = 50;
    int sliceTransientPreRollMs = 5;
    int sliceTailDb = -50;
    int sliceTransientLengthPercent = 100;
    int sliceDivisions = 16;
    int sliceGridOffset = 0;
    int sliceGridLengthPercent = 100;
    int sliceFadeInSamples = 0;
    int sliceFadeOutSamples = 0;
    std::optional<SliceEnergy> sliceEnergy;
    bool sliceAnalyzing = false;  // a detection is running
    std::string slicesName;       // what the saved slices are called; empty: as the file
    std::optional<std::string> slicerNotice;
    std::optional<std::vector<FrameRange>> pressSlices;  // while a drag moves an edge

    friend bool operator==(const AudioEditorSlicerState &, const AudioEditorSlicerState &) = default;
};

}  // namespace kiv
