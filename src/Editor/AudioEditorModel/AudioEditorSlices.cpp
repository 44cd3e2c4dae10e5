#include "Editor/AudioEditorModel/AudioEditorSlices.h"

#include <algorithm>

namespace kiv::AudioEditorSlices {
namespace {

using Energy = AudioEditorSlicer::Energy;
using Mode = AudioEditorSlicer::Mode;

// Samples whose energies, or frames whose hits, take a few milliseconds to find: so much is done on the spot.
constexpr std::int64_t quickSamples = std::int64_t(1) << 21;

template <class Change>
void update(AudioEditorModel &model, Change change) {
    AudioEditorSlicerState next = model.state();
    change(next);
    model.setSlicerState(std::move(next));
}

bool isFade(SliceSetting setting) { return setting == SliceSetting::fadeInSamples || setting == SliceSetting::fadeOutSamples; }

bool isSameDetection(const AudioEditorSlicerState &a, const AudioEditorSlicerState &b) {
    const auto isSame = [&](const SliceSettingRow &row) { return isFade(row.setting) || a.*row.value == b.*row.value; };
    return a.sliceMode == b.sliceMode && std::ranges::all_of(sliceSettings(), isSame);
}

void copyDetection(const AudioEditorSlicerState &from, AudioEditorSlicerState &to) {
    to.sliceMode = from.sliceMode;
    for (const SliceSettingRow &row : sliceSettings())
        if (!isFade(row.setting)) to.*row.value = from.*row.value;
}

// What a detection takes, and what comes of it.
struct Detection {
    std::int64_t generation = 0;
    AudioEditorSlicerState settings;
    AudioEditorSlicerState before;  // the settings that the present slices come from
    AudioEditorBuffer buffer;
    AudioEditorPeaks peaks;
    std::shared_ptr<const Energy> energy;
    std::vector<FrameRange> slices;

    void run(Progress &progress) {
        const AudioEditorSlicerState &s = settings;
        switch (s.sliceMode) {
            case Mode::grid:
                slices =
                    AudioEditorSlicer::grid(buffer.frames(), s.sliceDivisions, s.sliceGridOffset, s.sliceGridLengthPercent);
                return;
            case Mode::stripSilence:
                if (!hasPeaks()) peaks = AudioEditorPeaks(buffer, &progress);
                if (!peaks.isExact()) peaks.takeTail(peaks.measuredTail(buffer, &progress));
                slices = AudioEditorSlicer::detect(buffer, peaks, s.sliceThresholdDb, s.sliceMinSilenceMs);
                return;
            case Mode::transients:
                if (!energy) energy = std::make_shared<const Energy>(buffer, &progress);
                slices = AudioEditorSlicer::transients(
                    buffer, *energy,
                    {s.sliceSensitivity, s.sliceTransientPreRollMs, s.sliceTailDb, s.sliceTransientLengthPercent});
                return;
        }
    }
    bool hasPeaks() const { return peaks.blocks() > 0; }
    // Whether it would be felt on the main thread.
    bool isLong() const {
        const std::int64_t samples = buffer.frames() * buffer.channels();
        switch (settings.sliceMode) {
            case Mode::grid:
                return false;
            case Mode::stripSilence:
                return (!hasPeaks() || !peaks.isExact()) && samples > quickSamples;
            case Mode::transients:
                return (energy ? buffer.frames() / 8 : samples) > quickSamples;
        }
        return false;
    }
};

std::shared_ptr<Detection> present(const AudioEditorState &state, const AudioEditorSlicerState &before) {
    const auto &energy = state.sliceEnergy;
    const bool isKnown = energy && energy->generation == state.generation;
    return std::make_shared<Detection>(
        Detection{state.generation, state, before, state.buffer, state.peaks, isKnown ? energy->energy : nullptr, {}});
}

void start(AudioEditorModel &model, const AudioEditorSlicerState &before);

// The sound may be another by now, and the settings too: then all of it is done again.
void take(AudioEditorModel &model, const Detection &detection) {
    const AudioEditorModel::Batch batch(model);
    const AudioEditorState &state = model.state();
    const bool isSameSound = detection.generation == state.generation;
    const bool isWanted = isSameSound && isSameDetection(detection.settings, state);
    update(model, [&](AudioEditorSlicerState &next) {
        next.sliceAnalyzing = false;
        if (isSameSound && detection.energy) next.sliceEnergy = SliceEnergy{detection.generation, detection.energy};
        if (!isWanted) return;
        next.slices = detection.slices;
        next.pressSlices.reset();
    });
    if (!isWanted && state.slicerEnabled) start(model, detection.before);
}

// The bar would not tell the truth if it showed other settings than the slices were found with.
void giveUp(AudioEditorModel &model, const Detection &detection) {
    update(model, [&](AudioEditorSlicerState &next) {
        next.sliceAnalyzing = false;
        copyDetection(detection.before, next);
    });
}

void start(AudioEditorModel &model, const AudioEditorSlicerState &before) {
    const std::shared_ptr<Detection> detection = present(model.state(), before);
    if (!detection->isLong()) {
        Progress unwatched;
        detection->run(unwatched);
        return take(model, *detection);
    }
    update(model, [](AudioEditorSlicerState &next) { next.sliceAnalyzing = true; });
    model.analyse(
        {[detection](Progress &progress) { detection->run(progress); },
         [detection, &model](std::exception_ptr failure) { failure ? giveUp(model, *detection) : take(model, *detection); }});
}

// One that runs looks at its end whether it is still what is wanted.
void detectAgain(AudioEditorModel &model, const AudioEditorSlicerState &before) {
    if (model.state().slicerEnabled && !model.state().sliceAnalyzing) start(model, before);
}

}  // namespace

void setSlicerEnabled(AudioEditorModel &model, bool enabled) {
    const AudioEditorModel::Batch batch(model);
    model.setSlicerEnabled(enabled);
    if (model.state().slices.empty()) detectAgain(model, model.state());
}

void detect(AudioEditorModel &model, Mode mode) {
    const AudioEditorModel::Batch batch(model);
    const AudioEditorSlicerState before = model.state();
    model.setSlicerEnabled(true);
    update(model, [&](AudioEditorSlicerState &next) {
        next.sliceMode = mode;
        next.slicerNotice.reset();
    });
    detectAgain(model, before);
}

void setSetting(AudioEditorModel &model, SliceSetting setting, double value) {
    const SliceSettingRow &changed = row(setting);
    const int limited = changed.limited(value);
    if (model.state().*changed.value == limited) return;
    const AudioEditorModel::Batch batch(model);
    const AudioEditorSlicerState before = model.state();
    update(model, [&](AudioEditorSlicerState &next) {
        next.*changed.value = limited;
        next.slicerNotice.reset();
    });
    if (!isFade(setting)) detectAgain(model, before);
}

void setSlicesName(AudioEditorModel &model, std::string name) {
    update(model, [&](AudioEditorSlicerState &next) { next.slicesName = std::move(name); });
}

void setSlicerNotice(AudioEditorModel &model, std::optional<std::string> notice) {
    update(model, [&](AudioEditorSlicerState &next) { next.slicerNotice = std::move(notice); });
}

void moveSliceEdge(AudioEditorModel &model, SliceEdge edge, std::int64_t frame) {
    const AudioEditorState &state = model.state();
    const std::size_t i = edge.index;
    if (i >= state.slices.size()) return;
    update(model, [&](AudioEditorSlicerState &next) {
        if (!next.pressSlices) next.pressSlices = next.slices;
        FrameRange &slice = next.slices[i];
        const std::int64_t before = i > 0 ? next.slices[i - 1].hi : 0;
        const std::int64_t behind = i + 1 < next.slices.size() ? next.slices[i + 1].lo : state.buffer.frames();
        if (edge.start)
            slice.lo = std::clamp(frame, std::min(before, slice.lo), slice.hi - 1);
        else
            slice.hi = std::clamp(frame, slice.lo + 1, std::max(behind, slice.hi));
    });
}

// The step is taken from the slices as they were, so that undoing goes back to the press.
void endSliceMove(AudioEditorModel &model) {
    if (!model.state().pressSlices) return;
    const AudioEditorModel::Batch batch(model);
    const std::vector<FrameRange> moved = model.state().slices;
    cancelSliceMove(model);
    model.commitSlices(moved);
}

void cancelSliceMove(AudioEditorModel &model) {
    update(model, [](AudioEditorSlicerState &next) {
        if (next.pressSlices) next.slices = *std::exchange(next.pressSlices, std::nullopt);
    });
}

std::optional<std::size_t> sliceAt(const AudioEditorState &state, std::int64_t frame) {
    const auto isThere = [frame](FrameRange slice) { return slice.contains(frame); };
    const auto found = std::ranges::find_if(state.slices, isThere);
    return found == state.slices.end() ? std::nullopt : std::optional(std::size_t(found - state.slices.begin()));
}

void saveSlices(AudioEditorModel &model) {
    const AudioEditorState &state = model.state();
    if (!state.slices.empty() && model.onSaveSlices) model.onSaveSlices(state.slices, state.slicesName);
}

}  // namespace kiv::AudioEditorSlices
