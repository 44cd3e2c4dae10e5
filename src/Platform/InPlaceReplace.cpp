#include "Platform/InPlaceReplace.h"

#include <algorithm>
#include <array>
#include <vector>

#include "Platform/FileFault.h"

namespace kiv {
namespace {

using Recovery = Files::Recovery;

// The copies made for one file. Their names are made from its path, so that they can be found again.
struct Copies {
    std::string folder;
    std::string oldFile;
    std::string oldUnfinished;
    std::string newFile;
};

// The 64-bit hash of Fowler, Noll and Vo, in hexadecimal digits.
std::string hashText(std::string_view text) {
    std::uint64_t hash = 14695981039346656037u;
    for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211u;
    std::string digits(16, '0');
    for (auto digit = digits.rbegin(); digit != digits.rend(); ++digit, hash >>= 4) *digit = "0123456789abcdef"[hash & 15];
    return digits;
}

Copies copiesFor(FileSystem &fileSystem, const std::string &target) {
    const std::string folder = fileSystem.temporaryFolder();
    const std::string stem = folder + "/" + shortened(nameOf(target)) + "-" + hashText(target);
    return {folder, stem + ".old", stem + ".old-unfinished", stem + ".new"};
}

enum class Found { old, next, halfWritten, foreign };

// What is known of the file after comparing it, byte by byte, with what it was and what it was to become.
class Comparison {
public:
    Comparison(std::int64_t size, std::int64_t oldSize, std::int64_t newSize)
        : oldSize_(oldSize),
          newSize_(newSize),
          isOld_(size == oldSize),
          isNew_(size == newSize),
          isForeign_(size < std::min(oldSize, newSize) || size > std::max(oldSize, newSize)) {}

    // The three hold the same number of bytes, from the same place on; those past the end of the old or new one do not count.
    void add(std::int64_t at, std::span<const std::byte> now, std::span<const std::byte> old, std::span<const std::byte> next) {
        for (std::size_t i = 0; i < now.size(); ++i) {
            const std::int64_t place = at + std::int64_t(i);
            const bool likeOld = place < oldSize_ && now[i] == old[i];
            const bool likeNew = place < newSize_ && now[i] == next[i];
            const bool unwritten = place >= std::min(oldSize_, newSize_) && now[i] == std::byte(0);
            isOld_ = isOld_ && likeOld;
            isNew_ = isNew_ && likeNew;
            isForeign_ = isForeign_ || !(likeOld || likeNew || unwritten);
        }
    }

    Found found() const {
        if (isOld_ || isNew_) return isOld_ ? Found::old : Found::next;
        return isForeign_ ? Found::foreign : Found::halfWritten;
    }

private:
    std::int64_t oldSize_, newSize_;
    bool isOld_, isNew_, isForeign_;
};

void readWhole(const ByteSource &source, std::int64_t at, std::span<std::byte> out) {
    for (std::size_t done = 0; done < out.size();) {
        const std::size_t count = source.read(at + std::int64_t(done), out.subspan(done));
        if (count == 0) return;
        done += count;
    }
}

Found compare(FileSystem &fileSystem, const std::string &target, const Copies &copies, std::size_t blockBytes) {
    // Without the new copy, which goes last, nothing can be told.
    if (!fileSystem.identity(copies.newFile)) return Found::foreign;
    const std::array sources{fileSystem.open(target), fileSystem.open(copies.oldFile), fileSystem.open(copies.newFile)};
    const std::int64_t size = sources[0]->size();
    Comparison comparison(size, sources[1]->size(), sources[2]->size());
    std::array<std::vector<std::byte>, 3> blocks;
    for (std::int64_t at = 0; at < size && comparison.found() != Found::foreign; at += std::int64_t(blockBytes)) {
        const auto count = std::size_t(std::min(size - at, std::int64_t(blockBytes)));
        for (std::size_t i = 0; i < 3; ++i) {
            blocks[i].resize(count);
            readWhole(*sources[i], at, blocks[i]);
        }
        comparison.add(at, blocks[0], blocks[1], blocks[2]);
    }
    return comparison.found();
}

// The old copy goes first, and for good, before the new one: without it the file counts as whole.
void discard(FileSystem &fileSystem, const Copies &copies) {
    if (fileSystem.identity(copies.oldFile)) {
        fileSystem.remove(copies.oldFile);
        fileSystem.syncFolder(copies.folder);
    }
    for (const auto &path : {copies.oldUnfinished, copies.newFile})
        if (fileSystem.identity(path)) fileSystem.remove(path);
}

void discardQuietly(FileSystem &fileSystem, const Copies &copies) noexcept {
    try {
        discard(fileSystem, copies);
    } catch (...) {  // left for the next time: a whole file is recognised as whole
    }
}

// With the time of the old copy the file is as it was for whoever goes by that.
enum class Time { now, ofSource };

void writeOver(FileSystem::File &file, FileSystem &fileSystem, const std::string &source, Time time, std::size_t blockBytes) {
    file.rewind();
    pour(file, contentsOf(fileSystem, source, blockBytes), blockBytes);
    const auto identity = fileSystem.identity(source);
    if (!identity) throw std::system_error(std::make_error_code(std::errc::no_such_file_or_directory));
    file.truncate(identity->size);
    if (time == Time::ofSource) file.setModified(identity->modifiedNs);
    file.sync();
}

void putBack(FileSystem::File &file, FileSystem &fileSystem, const Copies &copies, const std::string &why,
             std::size_t blockBytes) {
    try {
        writeOver(file, fileSystem, copies.oldFile, Time::ofSource, blockBytes);
    } catch (const std::system_error &error) {
        throw FileFault(error.code(), why + "; the file as it was is kept in " + copies.oldFile);
    }
    discardQuietly(fileSystem, copies);
}

std::unique_ptr<FileSystem::File> hold(FileSystem &fileSystem, const std::string &target) {
    try {
        return fileSystem.overwrite(target);
    } catch (const std::system_error &error) {
        if (error.code() != std::errc::resource_unavailable_try_again) throw;
        throw FileFault(error.code(), "The file is just being saved by another program");
    }
}

// Ends what an earlier save of the same file may have left behind. A file that looks whole is written all the same: when a
// device has failed, what is read from memory need not be on it.
Recovery settle(FileSystem::File &file, FileSystem &fileSystem, const std::string &target, const Copies &copies,
                std::size_t blockBytes) {
    if (!fileSystem.identity(copies.oldFile)) return Recovery::notNeeded;
    const Found found = compare(fileSystem, target, copies, blockBytes);
    if (found == Found::foreign) return Recovery::notNeeded;
    if (found == Found::halfWritten) {
        putBack(file, fileSystem, copies, "An interrupted save could not be undone", blockBytes);
        return Recovery::restored;
    }
    try {
        found == Found::old ? writeOver(file, fileSystem, copies.oldFile, Time::ofSource, blockBytes)
                            : writeOver(file, fileSystem, copies.newFile, Time::now, blockBytes);
        discard(fileSystem, copies);
    } catch (const std::system_error &) {  // then they stay for the next time
    }
    return Recovery::notNeeded;
}

// The file as resolved, and its copies. Nothing where there is no file, or no place for copies.
std::optional<std::pair<std::string, Copies>> findCopies(FileSystem &fileSystem, const std::string &path) {
    try {
        const std::string target = fileSystem.resolve(path);
        if (fileSystem.identity(target)) return std::pair(target, copiesFor(fileSystem, target));
    } catch (const std::system_error &) {  // opening the file will say the same
    }
    return std::nullopt;
}

// A whole file that cannot be written may be opened all the same.
std::unique_ptr<FileSystem::File> holdFor(FileSystem &fileSystem, const std::string &target, Found found) {
    try {
        return hold(fileSystem, target);
    } catch (const std::system_error &) {
        if (found != Found::halfWritten) return nullptr;
        throw;
    }
}

// A new file, whole and on the device. It stays held, so that nobody takes it for abandoned.
std::unique_ptr<FileSystem::File> writeCopy(FileSystem &fileSystem, const std::string &path, const Produce &produce,
                                            std::size_t blockBytes, std::optional<std::int64_t> modifiedNs = {}) {
    auto file = fileSystem.create(path, FileSystem::Access::owner);
    pour(*file, produce, blockBytes);
    if (modifiedNs) file->setModified(*modifiedNs);
    file->sync();
    return file;
}

class InPlace {
public:
    InPlace(FileSystem &fileSystem, const std::string &target, std::size_t blockBytes)
        : fileSystem_(fileSystem),
          target_(target),
          copies_(copiesFor(fileSystem, target)),
          blockBytes_(blockBytes),
          file_(hold(fileSystem, target)) {}

    void replace(const Produce &produce, const Check &check) {
        settle(*file_, fileSystem_, target_, copies_, blockBytes_);
        discard(fileSystem_, copies_);
        makeCopies(produce, check);
        try {
            writeOver(*file_, fileSystem_, copies_.newFile, Time::now, blockBytes_);
        } catch (const std::exception &error) {
            putBack(*file_, fileSystem_, copies_, error.what(), blockBytes_);
            throw;
        }
        discardQuietly(fileSystem_, copies_);
    }

private:
    void makeCopies(const Produce &produce, const Check &check) {
        try {
            fileSystem_.makeFolders(copies_.folder);
            // An old copy of an earlier save must not come back beside the new copy of this one.
            fileSystem_.syncFolder(copies_.folder);
            const auto before = fileSystem_.identity(target_);
            const auto next = writeCopy(fileSystem_, copies_.newFile, produce, blockBytes_);
            checkFile(fileSystem_, copies_.newFile, check);
            const auto old = writeCopy(fileSystem_, copies_.oldUnfinished, contentsOf(fileSystem_, target_, blockBytes_),
                                       blockBytes_, before ? std::optional(before->modifiedNs) : std::nullopt);
            requireUnchanged(fileSystem_, target_, before);
            fileSystem_.rename(copies_.oldUnfinished, copies_.oldFile);
            fileSystem_.syncFolder(copies_.folder);
        } catch (...) {
            discardQuietly(fileSystem_, copies_);
            throw;
        }
    }

    FileSystem &fileSystem_;
    std::string target_;
    Copies copies_;
    std::size_t blockBytes_;
    std::unique_ptr<FileSystem::File> file_;
};

}  // namespace

void replaceInPlace(FileSystem &fileSystem, const std::string &target, const Produce &produce, std::size_t blockBytes,
                    const Check &check) {
    InPlace(fileSystem, target, blockBytes).replace(produce, check);
}

Recovery recoverInPlace(FileSystem &fileSystem, const std::string &path, std::size_t blockBytes) {
    const auto place = findCopies(fileSystem, path);
    if (!place) return Recovery::notNeeded;
    const auto &[target, copies] = *place;
    if (!fileSystem.identity(copies.oldFile)) {
        // The file itself has not been touched yet, or is the new one already.
        fileSystem.removeAbandoned(copies.newFile);
        fileSystem.removeAbandoned(copies.oldUnfinished);
        return Recovery::notNeeded;
    }
    const Found found = compare(fileSystem, target, copies, blockBytes);
    if (found == Found::foreign) return Recovery::notNeeded;
    const auto file = holdFor(fileSystem, target, found);
    return file ? settle(*file, fileSystem, target, copies, blockBytes) : Recovery::notNeeded;
}

}  // namespace kiv
