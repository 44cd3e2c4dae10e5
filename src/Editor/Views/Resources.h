#pragma once

#include <string_view>

// Files that the program carries inside itself.
namespace kiv::Resources {

std::string_view interfaceIcons();   // icons.svg, one <symbol> an icon
std::string_view applicationIcon();  // kiv-audio-editor.svg

}  // namespace kiv::Resources
