#pragma once

#include "Preferences/AudioEditorTheme.h"

namespace kiv {

// Prints the contrast of every text and mark on what it stands on, as painted; returns how many lie below what they need.
int printContrast(const char *name, const AudioEditorTheme &theme);

}  // namespace kiv
