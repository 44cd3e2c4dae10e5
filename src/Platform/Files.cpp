#include "Platform/Files.h"

#include "Platform/InPlaceReplace.h"
#include "Platform/SafeReplace.h"

namespace kiv {
namespace {

class FilesOnFileSystem : public Files {
public:
    explicit FilesOnFileSystem(FileSystem &fileSystem) : fileSystem_(fileSystem) {}

    std::unique_ptr<ByteSource> open(const std::string &path) override { return fileSystem_.open(path); }
    std::optional<FileSystem::Identity> identity(const std::string &path) override { return fileSystem_.identity(path); }
    void replace(const std::string &path, const Produce &produce, const Check &check) override {
        replaceSafely(fileSystem_, path, produce, 1 << 20, check);
    }
    std::vector<std::string> names(const std::string &folder) override {
        return identity(folder) ? fileSystem_.list(folder) : std::vector<std::string>();
    }
    bool isWritable(const std::string &folder) override {
        try {
            fileSystem_.requireWritable(folder);
            return true;
        } catch (const std::system_error &) {
            return false;
        }
    }
    void createFolder(const std::string &path) override {
        if (!identity(path)) fileSystem_.createFolder(path);
    }
    void moveToTrash(const std::string &path) override { fileSystem_.moveToTrash(path); }
    Recovery recoverInterrupted(const std::string &path) override {
        removeAbandonedSave(fileSystem_, path);
        return recoverInPlace(fileSystem_, path);
    }

private:
    FileSystem &fileSystem_;
};

}  // namespace

std::unique_ptr<Files> makeFiles(FileSystem &fileSystem) { return std::make_unique<FilesOnFileSystem>(fileSystem); }

}  // namespace kiv
