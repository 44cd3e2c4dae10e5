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

}  // namespace

std::string userFolder(UserFolder folder) {
    const Row &row = rows[int(folder)];
    const std::string own = "/kiv-audio-editor";
    if (const std::string base = absolutePath(row.variable); !base.empty()) return base + own;
    if (const std::string home = absolutePath("HOME"); !home.empty()) return home + row.inHome + own;
    throw FileFault(std::errc::no_such_file_or_directory, "The user has no home folder");
}

}  // namespace kiv
