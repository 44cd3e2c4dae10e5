#pragma once

#include <string>
#include <string_view>

#include "Platform/Defaults.h"

// Every stored setting as a row: its key, what it is when nothing (or nothing readable) is stored, and its range. No key string
// stands anywhere else. Values out of range are clamped, texts that are not listed give the default.
namespace kiv {

struct NumberSetting {
    std::string_view key;
    double fallback;
    double lo, hi;
};

struct FlagSetting {
    std::string_view key;
    bool fallback;
};

struct TextSetting {
    std::string_view key;
    std::string_view fallback;
    std::string_view allowed;  // the texts allowed, parted by blanks; empty: any
};

namespace Setting {
inline constexpr TextSetting timeUnit{"time_unit", "seconds", "seconds samples"};
inline constexpr FlagSetting followPlayhead{"follow_playhead", false};
inline constexpr FlagSetting emptyWindowAtLaunch{"empty_window_at_launch", true};
inline constexpr TextSetting shortcuts{"shortcuts", "", ""};
inline constexpr TextSetting theme{"theme", "auto", ""};
inline constexpr NumberSetting gainDb{"audio_editor_gain_db", 0, -24, 24};
inline constexpr NumberSetting normalizeDb{"audio_editor_normalize_db", 0, -24, 0};
inline constexpr TextSetting monoSource{"audio_editor_mono_source", "mix", "left right mix"};
inline constexpr FlagSetting loop{"audio_editor_loop", false};
inline constexpr FlagSetting loopZeroCrossing{"audio_editor_loop_zero_crossing", false};
inline constexpr FlagSetting loopCrossfadeEqualPower{"audio_editor_loop_xfade_equal_power", false};
inline constexpr TextSetting sliceMode{"audio_editor_slice_mode", "transients", "transients stripSilence grid"};
// Not clamped: what is none of those offered is the default.
inline constexpr NumberSetting sliceDivisions{"audio_editor_slice_divisions", 16, -2147483647, 2147483647};
inline constexpr NumberSetting sliceThresholdDb{"audio_editor_slice_threshold_db", -30, -60, 0};
inline constexpr NumberSetting sliceMinSilenceMs{"audio_editor_slice_min_silence_ms", 50, 10, 5000};
inline constexpr NumberSetting sliceSensitivity{"audio_editor_slice_sensitivity", 50, 0, 100};
inline constexpr NumberSetting slicePreRollMs{"audio_editor_slice_pre_roll_ms", 5, 0, 100};
inline constexpr NumberSetting sliceTailDb{"audio_editor_slice_tail_db", -50, -120, -6};
inline constexpr NumberSetting sliceLengthPercent{"audio_editor_slice_length_percent", 100, 0, 500};
inline constexpr NumberSetting sliceFadeInSamples{"audio_editor_slice_fade_in_samples", 0, 0, 500};
inline constexpr NumberSetting sliceFadeOutSamples{"audio_editor_slice_fade_out_samples", 0, 0, 500};
inline constexpr TextSetting spectralBrush{"audio_editor_spectral_brush", "attenuate", "attenuate accentuate"};
inline constexpr NumberSetting spectralBrushSize{"audio_editor_spectral_size", 40, 4, 400};
inline constexpr NumberSetting spectralIntensity{"audio_editor_spectral_intensity", 50, 0, 100};
inline constexpr TextSetting folderBookmarks{"folder_bookmarks", "", ""};
// Its place from the document's window on.
inline constexpr TextSetting savePanelFrame{"save_panel_frame", "", ""};
inline constexpr TextSetting documentWindowFrame{"KivDocumentWindow", "", ""};
}  // namespace Setting

// Typed access to the stored settings. Main thread only. Setting a value stores it at once.
class Settings {
public:
    explicit Settings(Defaults &defaults) : defaults_(defaults) {}

    double get(const NumberSetting &row) const;
    bool get(const FlagSetting &row) const;
    std::string get(const TextSetting &row) const;
    void set(const NumberSetting &row, double value);
    void set(const FlagSetting &row, bool value);
    void set(const TextSetting &row, std::string_view value);

private:
    Defaults &defaults_;
};

}  // namespace kiv
