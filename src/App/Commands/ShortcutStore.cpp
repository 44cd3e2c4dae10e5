#include "App/Commands/ShortcutStore.h"

#include <algorithm>

#include "Preferences/Settings.h"

namespace kiv {

ShortcutStore::ShortcutStore(Defaults &defaults) : defaults_(defaults) {
    const std::optional<std::string> stored = defaults.text(Setting::shortcuts.key);
    if (stored) overrides_ = decodeShortcuts(*stored).value_or(ShortcutOverrides());
}

std::optional<Shortcut> ShortcutStore::shortcut(EditorCommand command) const {
    const EditorCommandRow &defaults = row(command);
    const auto changed = overrides_.find(std::string(defaults.raw));
    return changed == overrides_.end() ? defaults.shortcut : changed->second;
}

bool ShortcutStore::isCustom(EditorCommand command) const { return shortcut(command) != row(command).shortcut; }

void ShortcutStore::store(std::optional<Shortcut> shortcut, EditorCommand command) {
    const EditorCommandRow &defaults = row(command);
    std::string raw(defaults.raw);
    if (shortcut == defaults.shortcut)
        overrides_.erase(raw);
    else
        overrides_.insert_or_assign(std::move(raw), std::move(shortcut));
}

void ShortcutStore::save() {
    if (const auto encoded = encodeShortcuts(overrides_)) defaults_.setText(Setting::shortcuts.key, *encoded);
    didChange.notify(*this);
}

void ShortcutStore::resetAll() {
    overrides_.clear();
    save();
}

std::optional<EditorCommand> ShortcutStore::match(const std::vector<Shortcut> &candidates) const {
    for (const EditorCommandRow &candidateRow : editorCommands()) {
        const std::optional<Shortcut> mine = shortcut(candidateRow.command);
        if (mine && std::ranges::find(candidates, *mine) != candidates.end()) return candidateRow.command;
    }
    return std::nullopt;
}

void ShortcutRecorder::toggle(EditorCommand command) {
    recording = recording == command ? std::nullopt : std::optional(command);
    changed.notify(*this);
}

void ShortcutRecorder::restoreDefaults() {
    recording.reset();
    notice.reset();
    store_.resetAll();
    changed.notify(*this);
}

void ShortcutRecorder::capture(const Shortcut &shortcut) {
    if (!recording) return;
    const EditorCommand command = *std::exchange(recording, std::nullopt);
    std::optional<EditorCommand> loser = store_.match({shortcut});
    if (loser == command) loser.reset();
    if (loser) store_.store(std::nullopt, *loser);
    store_.store(shortcut, command);
    notice.reset();
    if (loser)
        notice = shortcut.displayString() + " was used by “" + std::string(row(*loser).title) + "”, which now has no shortcut.";
    store_.save();
    changed.notify(*this);
}

}  // namespace kiv
