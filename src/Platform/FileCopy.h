#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "Platform/FileSystem.h"

// What both ways of replacing a file are made of.
namespace kiv {

using Produce = std::function<void(ByteSink &)>;
using Check = std::function<void(const ByteSource &)>;  // none: nothing is checked

// Writes to the file what `produce` makes, in blocks, since every write costs a call to the kernel.
void pour(FileSystem::File &file, const Produce &produce, std::size_t blockBytes);

// Has the file at `path` checked.
void checkFile(FileSystem &fileSystem, const std::string &path, const Check &check);

// Copies the whole file at `path` into a sink, as a Produce.
Produce contentsOf(FileSystem &fileSystem, const std::string &path, std::size_t blockBytes);

// Throws unless the file at `path` is still the one with this identity, or still missing.
void requireUnchanged(FileSystem &fileSystem, const std::string &path, const std::optional<FileSystem::Identity> &before);

std::string folderOf(std::string_view path);  // of an absolute path, "/" at the top
std::string nameOf(std::string_view path);
// As much of the name as leaves room for additions on every file system, cut between characters.
std::string shortened(std::string_view name);

// Removes a file if it can; for ways out of a failure that must not hide the failure itself.
void removeQuietly(FileSystem &fileSystem, const std::string &path) noexcept;

}  // namespace kiv
