#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Document/DocumentCore.h"

namespace kiv {

// Where the program may write: in folders that are writable, and in those that the user has allowed, which are remembered with
// all below them. Main thread only; the disk is asked by jobs, for it may take its time, or never answer.
class FolderAccess {
public:
    explicit FolderAccess(DocumentCore &core) : core_(core) {}

    // Calls `then` with the folder to write in, after asking for it where need be: the one wanted, or where the user has chosen
    // another, that. Nothing when the user refuses, or cancels the look at the disk, which is the document's work.
    using Then = std::function<void(const std::optional<std::string> &folder)>;
    void withAccess(const std::string &folder, const std::string &message, Then then);

private:
    std::vector<std::string> remembered() const;
    void ask(const std::string &folder, const std::string &message, Then then);
    void forgetGone();
    void remember(const std::string &folder);
    void store(const std::vector<std::string> &folders);

    DocumentCore &core_;
    bool looksForGone_ = false;
};

}  // namespace kiv
