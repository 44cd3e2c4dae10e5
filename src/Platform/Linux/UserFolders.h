#pragma once

#include <string>

namespace kiv {

// The program's own folders in the user's home, as the desktop's base directory specification places them. They need not exist
// yet. Throws std::system_error where there is no home.
enum class UserFolder { config, state };
std::string userFolder(UserFolder folder);
// The folder in which programs keep the user's data, each in one of its own.
std::string userDataFolder();

}  // namespace kiv
