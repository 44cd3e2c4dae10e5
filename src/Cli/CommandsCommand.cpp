#include <algorithm>

#include "App/Commands/EditorCommand.h"
#include "Cli/Commands.h"

namespace kiv::Cli {

namespace {

std::optional<std::string> shortcutText(const EditorCommandRow &row) {
    return row.shortcut ? std::optional(row.shortcut->displayString()) : std::nullopt;
}

std::string asJson(JsonWriter::Layout layout) {
    JsonWriter json(layout);
    json.beginList();
    for (const EditorCommandRow &row : editorCommands())
        json.beginObject()
            .field("raw", row.raw)
            .field("title", row.title)
            .field("group", heading(row.group))
            .field("shortcut", shortcutText(row))
            .endObject();
    return json.endList().take();
}

std::string padded(std::string_view text, std::size_t width) {
    return std::string(text) + std::string(width - std::min(width, text.size()), ' ');
}

std::string asText() {
    constexpr std::size_t rawWidth = 21, groupWidth = 11;
    std::string text;
    for (const EditorCommandRow &row : editorCommands()) {
        text += padded(row.raw, rawWidth) + padded(heading(row.group), groupWidth) + std::string(row.title);
        if (const auto shortcut = shortcutText(row)) text += "  " + *shortcut;
        text += "\n";
    }
    return text;
}

}  // namespace

std::string commands(const CommandsCall &call) { return call.json ? asJson(*call.json) : asText(); }

}  // namespace kiv::Cli
