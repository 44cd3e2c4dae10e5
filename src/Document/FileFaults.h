#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Audio/Files/AudioFileContents.h"

namespace kiv {

// What the user is told of a file that was read, so many frames of it, and is not whole: what is there, and silence where
// something was, is all there is to be saved. A text each; the name is as it is to be told.
std::vector<std::string> faultTexts(const std::string &name, const AudioFileContents &contents, std::int64_t frames);

}  // namespace kiv
