#pragma once

#include <map>
#include <string>
#include <string_view>

// The text form of the stored settings: a line `key=value` each, sorted by key. A backslash begins an escape: `\n` and `\r` for
// line ends, `\=` for an equals sign in a key, `\\` for itself; all other bytes stand for themselves. Lines without an equals
// sign mean nothing; of two with one key the later counts.
namespace kiv {

using SettingsMap = std::map<std::string, std::string, std::less<>>;

SettingsMap settingsFromText(std::string_view text);
std::string textFromSettings(const SettingsMap &settings);

}  // namespace kiv
