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
