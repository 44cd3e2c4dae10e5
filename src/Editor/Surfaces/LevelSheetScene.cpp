#include "Editor/Surfaces/LevelSheetScene.h"

#include <algorithm>
#include <cmath>

#include "Editor/AudioEditorCore/AudioEditorOps.h"
#include "Editor/AudioEditorModel/AudioEditorEdits.h"
#include "Editor/Surfaces/DecibelText.h"

namespace kiv {

namespace {

float largestOfBlocks(const AudioEditorPeaks &peaks, std::int64_t lo, std::int64_t hi) {
    float peak = 0;
    for (std::size_t channel = 0; channel < peaks.mins.size(); ++channel)
        for (std::int64_t block = lo; block < hi; ++block)
            peak = std::max({peak, -peaks.mins[channel][std::size_t(block)], peaks.maxs[channel][std::size_t(block)]});
    return peak;
}

}  // namespace

float peakOfRange(const AudioEditorBuffer &buffer, const AudioEditorPeaks &peaks, FrameRange range) {
    constexpr std::int64_t size = AudioEditorPeaks::blockSize;
    // The last block ends with the sound, so it is whole in a range that does.
    const std::int64_t first = (range.lo + size - 1) / size;
    const std::int64_t whole = range.hi == buffer.frames() ? peaks.blocks() : range.hi / size;
    const std::int64_t end = std::min(whole, peaks.looseFrom);
    if (first >= end) return AudioEditorOps::peak(buffer, range);
    const FrameRange before{range.lo, first * size}, after{std::min(end * size, range.hi), range.hi};
    return std::max(
        {AudioEditorOps::peak(buffer, before), largestOfBlocks(peaks, first, end), AudioEditorOps::peak(buffer, after)});
}

LevelSlider levelSlider(Dialog dialog) {
    return dialog == Dialog::gain ? LevelSlider{} : LevelSlider{.lo = -24, .hi = 0, .origin = -24};
}

std::string dialogTarget(const AudioEditorState &state) {
    const std::int64_t frames = state.selection ? state.selection->count() : state.buffer.frames();
    return std::string(state.selection ? "Selection" : "Whole file") + " · " +
           format(state.timeUnit, double(frames), state.buffer.sampleRate());
}

LevelSheetScene levelSheetScene(const AudioEditorState &state, Dialog dialog, float peak) {
    const double before = amplitudeDb(peak);
    const bool isGain = dialog == Dialog::gain;
    const double value = dialogLevel(state, dialog);
    const double after = isGain || peak <= 0 ? before + (isGain ? value : 0) : value;
    // Judged as it is shown: what reads 0.0 dB is not over.
    const bool isOver = after >= 0.05;
    return {
        .title = isGain ? "Gain" : "Normalize",
        .target = dialogTarget(state),
        .value = value,
        .peakBefore = decibelText(before),
        .peakAfter = decibelText(after),
        .note = isOver                ? "over full scale"
                : isGain || peak <= 0 ? ""
                                      : "gain " + decibelText(after - before),
        .isOver = isOver,
        .isReadable = state.dialogText.empty() || AudioEditorEdits::parseDecibels(state.dialogText).has_value(),
    };
}

double dialogLevel(const AudioEditorState &state, Dialog dialog) {
    return dialog == Dialog::gain ? state.gainDb : state.normalizeDb;
}

void setDialogLevel(AudioEditorModel &model, Dialog dialog, double db) {
    const AudioEditorModel::Batch batch(model);
    model.setDialogText({}, false);
    dialog == Dialog::gain ? model.setGainDb(db) : model.setNormalizeDb(db);
}

void stepDialogLevel(AudioEditorModel &model, Dialog dialog, double db) {
    setDialogLevel(model, dialog, std::round((dialogLevel(model.state(), dialog) + db) * 10) / 10);
}

void typeDialogLevel(AudioEditorModel &model, Dialog dialog, const std::string &text, bool typedAhead) {
    const AudioEditorModel::Batch batch(model);
    if (const auto db = AudioEditorEdits::parseDecibels(text))
        dialog == Dialog::gain ? model.setGainDb(*db) : model.setNormalizeDb(*db);
    model.setDialogText(text, typedAhead);
}

}  // namespace kiv
