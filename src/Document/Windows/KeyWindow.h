#pragma once

#include "Editor/Views/CommandTarget.h"
#include "Editor/Views/Sheet.h"

namespace kiv {

// A window in which keys are commands.
class KeyWindow {
public:
    virtual ~KeyWindow() = default;

    virtual CommandTarget &commandTarget() = 0;
    // The sheet that waits for an answer, or null.
    virtual Sheet *openSheet() { return nullptr; }
};

}  // namespace kiv
