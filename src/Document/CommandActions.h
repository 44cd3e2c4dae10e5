#pragma once

#include "App/Commands/EditorCommand.h"
#include "Document/AudioDocument.h"

namespace kiv {

// What a command does to a document, a row each. Commands of the program itself (open, close) and those whose feature the
// document lacks have no row here.
struct CommandAction {
    EditorCommand command;
    bool (*enabled)(const AudioDocument &);
    void (*perform)(AudioDocument &);
    bool (*checked)(const AudioDocument &) = nullptr;  // toggles only
};

const CommandAction *action(EditorCommand command);
bool isEnabled(EditorCommand command, const AudioDocument &document);
// Does nothing when the command is not enabled.
void perform(EditorCommand command, AudioDocument &document);

}  // namespace kiv
