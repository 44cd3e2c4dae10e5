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
    Recovery recoverInterrupted(const std::string &path) override { return recoverInPlace(fileSystem_, path); }

private:
    FileSystem &fileSystem_;
};

}  // namespace

std::unique_ptr<Files> makeFiles(FileSystem &fileSystem) { return std::make_unique<FilesOnFileSystem>(fileSystem); }

}  // namespace kiv
