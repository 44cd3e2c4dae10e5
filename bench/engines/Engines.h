#pragma once

#include "Editor/AudioEditorCore/AudioEditorBuffer.h"
#include "Editor/EqCore/EqSettings.h"

namespace kiv {

// All nine filters and the output gain at work.
EqSettings allOfTheEqualizer();

// How near the engines come to what they are meant to do, as tables.
void printTables();

}  // namespace kiv
