#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Document/DocumentUi.h"
#include "Platform/Files.h"
#include "Preferences/Settings.h"

namespace kiv {

// Where the program may write: in folders that are writable, and in those that the user has allowed, which are remembered with
// all below them. Main thread only.
class FolderAccess {
public:
    FolderAccess(Files &files, Settings &settings, DocumentUi &ui) : files_(files), settings_(settings), ui_(ui) {}

    // Calls `then` with the folder to write in, after asking for it where need be: the one wanted, or where the user has chosen
    // another, that. Nothing when the user refuses.
    using Then = std::function<void(const std::optional<std::string> &folder)>;
    void withAccess(const std::string &folder, const std::string &message, Then then);

    // The remembered folders. One that is gone is forgotten.
    std::vector<std::string> remembered();

private:
    void remember(const std::string &folder);
    void store(const std::vector<std::string> &folders);

    Files &files_;
    Settings &settings_;
    DocumentUi &ui_;
};

}  // namespace kiv
