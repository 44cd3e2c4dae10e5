#include "App/Commands/ShortcutJson.h"

#include <nlohmann/json.hpp>

namespace kiv {
namespace {

using Json = nlohmann::json;

Json encode(const std::optional<Shortcut> &shortcut) {
    if (!shortcut) return {{"key", nullptr}, {"modifiers", 0}};
    return {{"key", shortcut->key}, {"modifiers", shortcut->modifiers}};
}

bool isShortcut(const Json &value) {
    if (!value.is_object() || !value.contains("modifiers") || !value["modifiers"].is_number_unsigned()) return false;
    return !value.contains("key") || value["key"].is_null() || value["key"].is_string();
}

std::optional<Shortcut> decode(const Json &value) {
    if (!value.contains("key") || value["key"].is_null()) return std::nullopt;
    return Shortcut{value["key"].get<std::string>(), value["modifiers"].get<std::uint64_t>() & Shortcut::modifierMask};
}

}  // namespace

std::optional<std::string> encodeShortcuts(const ShortcutOverrides &overrides) try {
    Json object = Json::object();
    for (const auto &[raw, shortcut] : overrides) object[raw] = encode(shortcut);
    return object.dump();
} catch (const Json::type_error &) {  // a text that is not UTF-8
    return std::nullopt;
}

std::optional<ShortcutOverrides> decodeShortcuts(std::string_view text) {
    const Json object = Json::parse(text, nullptr, false);
    if (!object.is_object()) return std::nullopt;
    ShortcutOverrides overrides;
    for (const auto &[raw, value] : object.items()) {
        if (!isShortcut(value)) return std::nullopt;
        overrides[raw] = decode(value);
    }
    return overrides;
}

}  // namespace kiv
