#pragma once

#include "Platform/FileSystem.h"

namespace kiv {

// The files of this machine. A file open for writing is held by an advisory lock, which goes with the process; where a file
// system knows no locks, files count as not held elsewhere and as not abandoned.
class LinuxFileSystem : public FileSystem {
public:
    std::string resolve(const std::string &path) override;
    std::optional<Identity> identity(const std::string &path) override;
    std::unique_ptr<ByteSource> open(const std::string &path) override;
    std::unique_ptr<File> create(const std::string &path, Access access) override;
    bool removeAbandoned(const std::string &path) override;
    std::unique_ptr<File> holdAbandoned(const std::string &path) override;
    bool share(const std::string &path, const std::string &as) override;
    bool addName(const std::string &path, const std::string &name) override;
    std::unique_ptr<File> overwrite(const std::string &path) override;
    void copyAttributes(const std::string &from, const std::string &to) override;
    void rename(const std::string &from, const std::string &to) override;
    void remove(const std::string &path) override;
    void makeFolders(const std::string &path) override;
    void createFolder(const std::string &path) override;
    std::vector<std::string> list(const std::string &folder) override;
    void moveToTrash(const std::string &path) override;
    std::int64_t freeBytes(const std::string &folder) override;
    void syncFolder(const std::string &folder) override;
    void requireWritable(const std::string &path) override;
    std::string temporaryFolder() override;  // kiv-audio-editor/saving in the user's state folder
};

}  // namespace kiv
