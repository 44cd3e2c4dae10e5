#include "Platform/FileCopy.h"

#include <vector>

#include "Platform/FileFault.h"

namespace kiv {
namespace {

class BlockSink : public ByteSink {
public:
    BlockSink(FileSystem::File &file, std::size_t blockBytes) : file_(file), blockBytes_(blockBytes) {
        block_.reserve(blockBytes);
    }

    void write(std::span<const std::byte> bytes) override {
        while (!bytes.empty()) {
            const auto part = bytes.first(std::min(bytes.size(), blockBytes_ - block_.size()));
            block_.insert(block_.end(), part.begin(), part.end());
            bytes = bytes.subspan(part.size());
            if (block_.size() == blockBytes_) flush();
        }
    }

    void flush() {
        if (!block_.empty()) file_.write(block_);
        block_.clear();
    }

private:
    FileSystem::File &file_;
    std::size_t blockBytes_;
    std::vector<std::byte> block_;
};

}  // namespace

void pour(FileSystem::File &file, const Produce &produce, std::size_t blockBytes) {
    BlockSink sink(file, blockBytes);
    produce(sink);
    sink.flush();
}

void checkFile(FileSystem &fileSystem, const std::string &path, const Check &check) {
    if (check) check(*fileSystem.open(path));
}

Produce contentsOf(FileSystem &fileSystem, const std::string &path, std::size_t blockBytes) {
    return [&fileSystem, path, blockBytes](ByteSink &sink) {
        const auto source = fileSystem.open(path);
        std::vector<std::byte> block(blockBytes);
        for (std::int64_t at = 0; at < source->size();) {
            const std::size_t count = source->read(at, block);
            if (count == 0) throw FileFault(std::errc::io_error, "The file became shorter while it was copied");
            sink.write(std::span(block).first(count));
            at += std::int64_t(count);
        }
    };
}

void requireUnchanged(FileSystem &fileSystem, const std::string &path, const std::optional<FileSystem::Identity> &before) {
    if (fileSystem.identity(path) != before)
        throw FileFault(std::errc::operation_canceled, "Another program has changed the file during the save");
}

std::string folderOf(std::string_view path) {
    const auto slash = path.rfind('/');
    return std::string(path.substr(0, slash == 0 ? 1 : slash));
}

std::string nameOf(std::string_view path) { return std::string(path.substr(path.rfind('/') + 1)); }

std::string shortened(std::string_view name) {
    constexpr std::size_t longest = 100;
    if (name.size() <= longest) return std::string(name);
    std::size_t cut = longest;
    const auto continues = [&](std::size_t i) { return (static_cast<unsigned char>(name[i]) & 0xC0) == 0x80; };
    while (cut > longest - 4 && continues(cut)) --cut;
    return std::string(name.substr(0, cut));
}

void removeQuietly(FileSystem &fileSystem, const std::string &path) noexcept {
    try {
        fileSystem.remove(path);
    } catch (...) {
    }
}

}  // namespace kiv
