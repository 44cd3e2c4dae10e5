#include "Platform/Linux/SettingsText.h"

namespace kiv {
namespace {

enum class Part { key, value };

void appendEscaped(std::string &out, std::string_view text, Part part) {
    for (const char c : text) {
        if (c == '\n' || c == '\r')
            out += c == '\n' ? "\\n" : "\\r";
        else if (c == '\\' || (c == '=' && part == Part::key))
            (out += '\\') += c;
        else
            out += c;
    }
}

// Takes text from the front of `line`, up to an end that is not escaped, which is dropped.
std::string takeUnescaped(std::string_view &line, char end) {
    std::string out;
    while (!line.empty()) {
        const char c = line.front();
        line.remove_prefix(1);
        if (c == end) return out;
        if (c != '\\' || line.empty()) {
            out += c;
            continue;
        }
        const char escaped = line.front();
        line.remove_prefix(1);
        out += escaped == 'n' ? '\n' : escaped == 'r' ? '\r' : escaped;
    }
    return out;
}

std::string_view takeLine(std::string_view &text) {
    const auto line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(text.size(), line.size() + 1));
    return line.ends_with('\r') ? line.substr(0, line.size() - 1) : line;  // an editor's doing: ours are escaped
}

bool hasKey(std::string_view line) {
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i] == '=') return true;
        if (line[i] == '\\') ++i;
    }
    return false;
}

}  // namespace

SettingsMap settingsFromText(std::string_view text) {
    SettingsMap settings;
    while (!text.empty()) {
        auto line = takeLine(text);
        if (!hasKey(line)) continue;
        std::string key = takeUnescaped(line, '=');
        settings.insert_or_assign(std::move(key), takeUnescaped(line, '\n'));
    }
    return settings;
}

std::string textFromSettings(const SettingsMap &settings) {
    std::string text;
    for (const auto &[key, value] : settings) {
        appendEscaped(text, key, Part::key);
        text += '=';
        appendEscaped(text, value, Part::value);
        text += '\n';
    }
    return text;
}

}  // namespace kiv
