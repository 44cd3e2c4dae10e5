#include "Platform/Linux/UserFolders.h"

#include <cstdlib>

#include "Platform/FileFault.h"

namespace kiv {
namespace {

struct Row {
    const char *variable;
    const char *inHome;
};

constexpr Row rows[] = {{"XDG_CONFIG_HOME", "/.config"}, {"XDG_STATE_HOME", "/.local/state"}};

// Paths that are not absolute are to be ignored.
std::string absolutePath(const char *variable) {
    const char *value = std::getenv(variable);
    return value && value[0] == '/' ? value : "";
}

std::string baseFolder(const Row &row) {
    if (const std::string base = absolutePath(row.variable); !base.empty()) return base;
    if (const std::string home = absolutePath("HOME"); !home.empty()) return home + row.inHome;
    throw FileFault(std::errc::no_such_file_or_directory, "The user has no home folder");
}

}  // namespace

std::string userFolder(UserFolder folder) { return baseFolder(rows[int(folder)]) + "/kiv-audio-editor"; }

std::string userDataFolder() { return baseFolder({"XDG_DATA_HOME", "/.local/share"}); }

}  // namespace kiv
