#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "Audio/Files/AudioFileContents.h"
#include "Platform/FileSystem.h"

namespace kiv {

// The file that a document belongs to, as it was last read or written. A value; a new one begins with each of these.
struct DocumentFile {
    using Identity = std::optional<FileSystem::Identity>;

    std::string path;
    // Without the samples, which are the model's; none before it is read. They may hold very much: jobs share them.
    std::shared_ptr<const AudioFileContents> contents;
    Identity identity;              // none: whatever is there
    std::int64_t savedVersion = 0;  // of the model's content, which the file holds
    // What was found in its place since, and told of: another file, or that there is nothing.
    std::optional<Identity> found = {};

    bool isGone() const { return found && !*found; }

    // Also by another path. A file that is gone may have left its number to another one, which has other times.
    bool isAt(const std::string &where, const Identity &there) const { return where == path || (there && there == identity); }
};

}  // namespace kiv
