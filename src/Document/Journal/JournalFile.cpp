#include "Document/Journal/JournalFile.h"

#include <filesystem>

#include "Platform/FileCopy.h"
#include "Platform/FileFault.h"

namespace kiv {
namespace {

constexpr std::size_t mostMetadata = std::size_t(16) << 20;

std::size_t metadataBytes(const AudioFileContents &contents) {
    std::size_t bytes = contents.leading.size() + contents.trailing.size();
    for (const AudioFileChunk &chunk : contents.chunks) bytes += chunk.data.size();
    for (const FlacMetadataBlock &block : contents.flacMetadata) bytes += block.data.size();
    if (contents.wrapping)
        for (const SampleWrapping::Part &part : contents.wrapping->parts) bytes += part.bytes.size();
    return bytes;
}

void copyFile(FileSystem &fileSystem, const std::string &from, const std::string &to) {
    const auto file = fileSystem.create(to, FileSystem::Access::owner);
    constexpr std::size_t blockBytes = std::size_t(1) << 20;
    pour(*file, contentsOf(fileSystem, from, blockBytes), blockBytes);
    file->sync();
}

enum class Kept { no, asCopy, asLink };

// A full disk does not let a copy be made, but maybe the edits be written.
Kept keepFile(const JournalFolder &folder, const std::string &path, std::int64_t size, const std::string &as) {
    FileSystem &fileSystem = folder.fileSystem;
    try {
        if (fileSystem.share(path, as)) return Kept::asCopy;
        if (size > folder.longestCopy) return fileSystem.addName(path, as) ? Kept::asLink : Kept::no;
        copyFile(fileSystem, path, as);
        return Kept::asCopy;
    } catch (const std::system_error &) {
        removeQuietly(fileSystem, as);
        return Kept::no;
    }
}

}  // namespace

std::string JournalFile::path(const std::string &ending) const { return folder_.path + "/" + stem_ + ending; }

void JournalFile::write(const std::shared_ptr<const Base> &base, const Edited &edited, Progress &progress) {
    const std::lock_guard lock(mutex_);
    if (edited.state.order < removed_) return;
    const bool canGrow = file_ && isWhole_ && base == base_ && size_ <= folder_.slackBytes + 2 * neededBytes_;
    // After a save of our own the document will come with the new file in a moment.
    const bool isReplaced = base == base_ && saveNoted_ && !isBaseAsItWas(*base);
    const bool grows = canGrow && (isReplaced || !isBaseLost(*base)) && append(edited, progress);
    if (!grows && isReplaced) return;
    if (!grows) writeAnew(base, edited, progress);
    written_ = edited.state.order;
}

// The name is taken by an empty journal, which says nothing to whoever finds it.
void JournalFile::reserveName() {
    if (!stem_.empty()) return;
    folder_.fileSystem.makeFolders(folder_.path);
    for (int number = 1; stem_.empty(); ++number) try {
            stem_ = std::to_string(number);
            file_ = folder_.fileSystem.create(path(journalEnding), FileSystem::Access::owner);
        } catch (const std::system_error &error) {
            stem_.clear();
            if (error.code() != std::errc::file_exists || number == 10'000) throw;
        }
}

void JournalFile::writeAnew(const std::shared_ptr<const Base> &base, const Edited &edited, Progress &progress) {
    reserveName();
    const bool isNewBase = base_ && base != base_;
    const std::string oldKept = baseRecord_.kept;
    if (base != base_ || !isBaseAsItWas(*base)) keepBase(*base);
    base_ = base;
    FileSystem &fileSystem = folder_.fileSystem;
    fileSystem.removeAbandoned(path(newJournalEnding));
    auto old = std::exchange(file_, fileSystem.create(path(newJournalEnding), FileSystem::Access::owner));
    try {
        size_ = 0;
        stored_ = baseRecord_.identity ? base->samples : StoredSamples();
        write(encoded(baseRecord_));
        if (unwritten_ && !isNewBase) {
            unwritten_->first.pieces = stored_.find(unwritten_->second);
            write(encoded(unwritten_->first));
        }
        if (!append(edited, progress)) throw FileFault(std::errc::file_too_large, "The changes are too large");
        fileSystem.rename(path(newJournalEnding), path(journalEnding));
        fileSystem.syncFolder(folder_.path);
    } catch (...) {
        removeQuietly(fileSystem, path(newJournalEnding));
        file_ = std::move(old);
        isWhole_ = false;
        throw;
    }
    if (isNewBase) saveNoted_ = false;
    if (isNewBase) unwritten_.reset();
    if (!oldKept.empty() && oldKept != baseRecord_.kept) removeQuietly(fileSystem, folder_.path + "/" + oldKept);
}

// False where it would become too large.
bool JournalFile::append(const Edited &edited, Progress &progress) {
    isWhole_ = false;
    auto account = stored_.account(edited.buffer, size_);
    if (account.end > folder_.mostBytes) return false;
    for (const auto &missing : account.missing) {
        progress.throwIfCancelled();
        const auto bytes = std::as_bytes(missing.samples);
        write(recordHeader(JournalRecord::samples, bytes));
        write(bytes);
    }
    JournalState state = edited.state;
    state.channels = edited.buffer.channels();
    state.sampleRate = edited.buffer.sampleRate();
    state.pieces = std::move(account.pieces);
    write(encoded(state));
    file_->sync();
    neededBytes_ = account.journalBytes;
    return isWhole_ = true;
}

void JournalFile::write(std::span<const std::byte> bytes) {
    file_->write(bytes);
    size_ += std::int64_t(bytes.size());
}

bool JournalFile::isBaseAsItWas(const Base &base) {
    try {
        return base.identity && folder_.fileSystem.identity(base.path) == base.identity;
    } catch (const std::system_error &) {
        return false;
    }
}

bool JournalFile::isBaseLost(const Base &base) {
    if (!baseRecord_.identity) return false;
    if (baseRecord_.kept.empty()) return !isBaseAsItWas(base);
    return baseRecord_.keptIsLink && folder_.fileSystem.identity(folder_.path + "/" + baseRecord_.kept) != base.identity;
}

// Where the file has become another before it could be kept, all of the sound has to go into the journal.
void JournalFile::keepBase(const Base &base) {
    FileSystem &fileSystem = folder_.fileSystem;
    baseRecord_ = {};
    baseRecord_.path = base.path;
    if (metadataBytes(base.contents) <= mostMetadata) baseRecord_.contents = base.contents;
    if (!isBaseAsItWas(base)) return;
    baseRecord_.print = filePrint(*fileSystem.open(base.path));
    // With the file's own extension, by which some readers go.
    const std::string name =
        keptBeginning + stem_ + "-" + std::to_string(++keptCount_) + std::filesystem::path(base.path).extension().string();
    const std::string to = folder_.path + "/" + name;
    const Kept kept = keepFile(folder_, base.path, base.identity->size, to);
    if (kept != Kept::no) baseRecord_.kept = name;
    baseRecord_.keptIsLink = kept == Kept::asLink;
    if (isBaseAsItWas(base)) {
        baseRecord_.identity = base.identity;
    } else if (!baseRecord_.kept.empty()) {
        removeQuietly(fileSystem, to);
        baseRecord_.kept.clear();
    }
}

void JournalFile::noteSave(JournalSave save, const AudioEditorBuffer &buffer) noexcept {
    try {
        const std::lock_guard lock(mutex_);
        saveNoted_ = true;
        if (!file_ || !isWhole_) return void(unwritten_ = {std::move(save), buffer});
        isWhole_ = false;
        save.pieces = stored_.find(buffer);
        write(encoded(save));
        file_->sync();
        isWhole_ = true;
    } catch (...) {
        // The save matters more, and what has been journalled before still counts.
    }
}

void JournalFile::remove(std::uint64_t order) noexcept {
    const std::lock_guard lock(mutex_);
    if (order < written_) return;
    removed_ = std::max(removed_, order);
    if (!stem_.empty()) removeQuietly(folder_.fileSystem, path(journalEnding));
    if (!baseRecord_.kept.empty()) removeQuietly(folder_.fileSystem, folder_.path + "/" + baseRecord_.kept);
    file_.reset();
    stem_.clear();
    base_.reset();
    stored_ = {};
    baseRecord_ = {};
    unwritten_.reset();
    saveNoted_ = false;
    isWhole_ = false;
    size_ = neededBytes_ = 0;
}

}  // namespace kiv
