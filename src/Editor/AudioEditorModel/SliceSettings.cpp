#include "Editor/AudioEditorModel/SliceSettings.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace kiv {
namespace {

using Mode = AudioEditorSlicer::Mode;
using State = AudioEditorSlicerState;

// Any place in a sound; detection keeps the slices inside it.
constexpr NumberSetting gridOffset{"", 0, -2147483647, 2147483647};
constexpr NumberSetting gridLengthPercent{"", 100, 0, 100};

// clang-format off
constexpr SliceSettingRow rows[] = {
    {SliceSetting::sensitivity, "sensitivity", &State::sliceSensitivity, Setting::sliceSensitivity, Mode::transients, 5, 1, "Sensitivity", "%",
     "Higher = softer hits split too (too high: noise splits). Scroll or drag up / down = 5 %, with ⇧ = 1 %; double-click = default. Resets the slices."},
    {SliceSetting::preRollMs, "preRollMs", &State::sliceTransientPreRollMs, Setting::slicePreRollMs, Mode::transients, 1, 1, "Pre-roll", "ms",
     "Audio kept before each attack. Scroll or drag up / down = 1 ms; double-click = default. Resets the slices."},
    {SliceSetting::tailDb, "tailDb", &State::sliceTailDb, Setting::sliceTailDb, Mode::transients, 1, 1, "Tail", "dB",
     "A slice ends once its sound fell this far under the hit (or into the background noise), at the latest on the next hit. Lower = longer tails. "
     "Scroll or drag up / down = 1 dB; double-click = default. Resets the slices."},
    {SliceSetting::lengthPercent, "lengthPercent", &State::sliceTransientLengthPercent, Setting::sliceLengthPercent, Mode::transients, 5, 1, "Length", "%",
     "Each slice's detected length scaled by this (100 % = as detected), at the latest up to the next slice. "
     "Scroll or drag up / down = 5 %, with ⇧ = 1 %; double-click = 100 %. Resets the slices."},
    {SliceSetting::thresholdDb, "thresholdDb", &State::sliceThresholdDb, Setting::sliceThresholdDb, Mode::stripSilence, 1, 1, "Threshold", "dB",
     "Level a slice must reach: drag up / down, double-click = default. Resets the slices."},
    {SliceSetting::minSilenceMs, "minSilenceMs", &State::sliceMinSilenceMs, Setting::sliceMinSilenceMs, Mode::stripSilence, 10, 1, "Min. silence", "ms",
     "Minimum time to accept as silence: shorter dips below the threshold do not split a slice. "
     "Scroll or drag up / down = 10 ms, with ⇧ = 1 ms; double-click = default. Resets the slices."},
    {SliceSetting::divisions, "divisions", &State::sliceDivisions, Setting::sliceDivisions, Mode::grid, 1, 1, "Divisions", "",
     "equal slices"},
    {SliceSetting::gridOffset, "gridOffset", &State::sliceGridOffset, gridOffset, Mode::grid, 10, 1, "Offset", "smp",
     "Moves every slice start, in samples. Scroll or drag up / down = 10, with ⇧ = 1; double-click = 0."},
    {SliceSetting::gridLengthPercent, "gridLengthPercent", &State::sliceGridLengthPercent, gridLengthPercent, Mode::grid, 5, 1, "Length", "%",
     "Shortens each slice to this share of its length. Scroll or drag up / down = 5 %, with ⇧ = 1 %; double-click = 100 %."},
    {SliceSetting::fadeInSamples, "fadeInSamples", &State::sliceFadeInSamples, Setting::sliceFadeInSamples, {}, 1, 1, "Fade in", "smp",
     "Fade in at the start of each slice, in samples (removes clicks): heard by Play Slice, applied to the saved slices. "
     "Scroll or drag up / down = 1; double-click = 0."},
    {SliceSetting::fadeOutSamples, "fadeOutSamples", &State::sliceFadeOutSamples, Setting::sliceFadeOutSamples, {}, 1, 1, "Fade out", "smp",
     "Fade out at the end of each slice, in samples (removes clicks): heard by Play Slice, applied to the saved slices. "
     "Scroll or drag up / down = 1; double-click = 0."},
};
// clang-format on

constexpr std::array divisions{2, 4, 8, 16, 32, 64};

}  // namespace

int SliceSettingRow::limited(double wanted) const {
    const double inRange = std::isnan(wanted) ? stored.fallback : std::clamp(wanted, stored.lo, stored.hi);
    const int whole = int(std::round(inRange));
    const bool isOffered = setting != SliceSetting::divisions || std::ranges::find(divisions, whole) != divisions.end();
    return isOffered ? whole : int(stored.fallback);
}

std::span<const SliceSettingRow> sliceSettings() { return rows; }

const SliceSettingRow &row(SliceSetting setting) { return rows[std::size_t(setting)]; }

const SliceSettingRow *sliceSettingFromField(std::string_view field) {
    const auto found = std::ranges::find(rows, field, &SliceSettingRow::field);
    return found == std::end(rows) ? nullptr : found;
}

std::string_view sliceModeTitle(Mode mode) {
    static constexpr std::string_view titles[] = {"Transients", "Strip Silence", "Grid"};
    return titles[std::size_t(mode)];
}

std::string_view sliceModeHelp(Mode mode) {
    static constexpr std::string_view helps[] = {
        "Slices = the hits (drums, plucks…): from each attack to its tail. Resets the slices.",
        "Slices = the parts above the threshold. Resets the slices.",
        "Slices = equal parts of the file. Resets the slices.",
    };
    return helps[std::size_t(mode)];
}

}  // namespace kiv
