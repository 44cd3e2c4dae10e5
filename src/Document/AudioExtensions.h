#pragma once

#include <array>
#include <string_view>

namespace kiv {

// The extensions, in lower case, of the files that the program can open.
inline constexpr std::array<std::string_view, 29> openableExtensions{
    "wav",  "wave", "bwf", "rf64", "w64", "aif", "aiff", "aifc", "caf", "au", "snd", "voc", "flac", "oga", "ogg",
    "opus", "mp3",  "mp2", "mp1",  "m4a", "m4b", "mp4",  "aac",  "wma", "wv", "ape", "tta", "ac3",  "mka"};

}  // namespace kiv
