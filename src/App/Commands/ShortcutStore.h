#pragma once

#include <optional>
#include <string>
#include <vector>

#include "App/Commands/EditorCommand.h"
#include "App/Commands/ShortcutJson.h"
#include "Platform/Defaults.h"
#include "Support/Observers.h"

namespace kiv {

// The user's changes to the default shortcuts, kept in the defaults under "shortcuts". Main thread only.
class ShortcutStore {
public:
    static constexpr const char *didChangeName = "KivShortcutsDidChange";

    // Loads what is stored; what cannot be decoded counts as nothing.
    explicit ShortcutStore(Defaults &defaults);

    // The shortcut in force, or nothing.
    std::optional<Shortcut> shortcut(EditorCommand command) const;
    bool isCustom(EditorCommand command) const;
    // A value equal to the default takes the change away. Does not save.
    void store(std::optional<Shortcut> shortcut, EditorCommand command);
    // Writes all changes and tells the observers.
    void save();
    void resetAll();

    // The first command, in their order, whose shortcut in force is among the candidates.
    std::optional<EditorCommand> match(const std::vector<Shortcut> &candidates) const;

    Observers<ShortcutStore> didChange;

private:
    Defaults &defaults_;
    ShortcutOverrides overrides_;  // names that are no command's are kept, but never asked for
};

// The capture of a new shortcut for a command. Main thread only.
class ShortcutRecorder {
public:
    explicit ShortcutRecorder(ShortcutStore &store) : store_(store) {}

    std::optional<EditorCommand> recording;
    std::optional<std::string> notice;  // which command lost its shortcut, in words

    // A click on the command's row: starts its recording, or ends it when it was going on.
    void toggle(EditorCommand command);
    // Gives the shortcut to the command being recorded and takes it from the one that had it. Ends the recording.
    void capture(const Shortcut &shortcut);
    // Ends the recording, clears the notice and takes all changes away.
    void restoreDefaults();

    Observers<ShortcutRecorder> changed;  // told by the three above, after all is done

private:
    ShortcutStore &store_;
};

}  // namespace kiv
