#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Audio/Files/AudioSaveFormat.h"

// The formats that a sound may be saved as, as words of a call: "wav16".
namespace kiv::Cli {

std::optional<AudioSaveFormat> parseSaveFormat(std::string_view word);
std::string saveFormatNames();  // all, with blanks between

}  // namespace kiv::Cli
