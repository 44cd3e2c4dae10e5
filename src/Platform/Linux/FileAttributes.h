#pragma once

#include <string>

namespace kiv {

// Gives the file `to` the owner (where allowed), extended attributes, access lists and mode of the file `from`. Throws
// std::system_error where something of it that belongs to the user cannot be kept.
void copyFileAttributes(const std::string &from, const std::string &to);

}  // namespace kiv
