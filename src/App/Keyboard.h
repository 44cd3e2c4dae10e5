#pragma once

#include <map>
#include <memory>
#include <string>

#include "App/Commands/Shortcut.h"

class QKeyEvent;

namespace kiv {

// What the keys of the user's keyboard give without modifiers, which the toolkit does not tell.
class Keyboard {
public:
    virtual ~Keyboard() = default;

    struct Characters {
        std::string plain;    // with no modifiers
        std::string shifted;  // with shift
    };
    // The characters of the key that an event is about; empty for keys that give none.
    virtual Characters characters(const QKeyEvent &event) = 0;
    // The layout may have changed.
    virtual void forget() {}
};

// Asks the X server where there is one.
std::unique_ptr<Keyboard> makeKeyboard();

// Where there is nobody to ask: takes the event's own key for the plain character, and of keys that were once pressed without
// shift remembers what that gave.
class LearningKeyboard : public Keyboard {
public:
    Characters characters(const QKeyEvent &event) override;

private:
    std::map<unsigned, std::string> plain_;  // by scan code
};

// A key event in the terms of shortcuts.
KeyPress keyPress(const QKeyEvent &event, Keyboard &keyboard);

}  // namespace kiv
