#pragma once

#include <string>

namespace kiv {

// Moves a file to the user's trash, as the desktop's trash specification (1.0) lays it out: the one in the home folder if that
// is on the same file system, else the file system's own. Nothing is ever copied or removed: where there is no trash that the
// file can be moved to, it stays and this throws std::system_error.
void trashFile(const std::string &path);

}  // namespace kiv
