#pragma once

#include "Platform/FileCopy.h"
#include "Platform/Files.h"

namespace kiv {

// Passes every call on to other files, which must outlive it: for those that do one of them otherwise.
class ForwardingFiles : public Files {
public:
    explicit ForwardingFiles(Files &files) : files_(files) {}

    std::unique_ptr<ByteSource> open(const std::string &path) override { return files_.open(path); }
    std::optional<FileSystem::Identity> identity(const std::string &path) override { return files_.identity(path); }
    void replace(const std::string &path, const Produce &produce, const Check &check) override {
        files_.replace(path, produce, check);
    }
    std::vector<std::string> names(const std::string &folder) override { return files_.names(folder); }
    bool isWritable(const std::string &folder) override { return files_.isWritable(folder); }
    void createFolder(const std::string &path) override { files_.createFolder(path); }
    void moveToTrash(const std::string &path) override { files_.moveToTrash(path); }
    Recovery recoverInterrupted(const std::string &path) override { return files_.recoverInterrupted(path); }

private:
    Files &files_;
};

}  // namespace kiv
