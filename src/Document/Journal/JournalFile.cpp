#include "Document/Journal/JournalFile.h"

#include <algorithm>
#include <filesystem>

#include "Platform/FileCopy.h"
#include "Platform/FileFault.h"

namespace kiv {
namespace {

constexpr std::size_t mostMetadata = std::size_t(16) << 20;

std::size_t metadataBytes(const AudioFileContents &contents) {
    std::size_t bytes = contents.leading.size() + contents.trailing.size() + contents.tags.id3.size();
    for (const AudioFileChunk &chunk : contents.chunks) bytes += chunk.data.size();
    for (const auto *blocks : {&contents.flacMetadata, &contents.tags.pictures})
        for (const FlacMetadataBlock &block : *blocks) bytes += block.data.size();
    for (const auto *wrapping : {&contents.wrapping, &contents.tags.around})
        if (*wrapping)
            for (const SampleWrapping::Part &part : (*wrapping)->parts) bytes += part.size();
    return bytes;
}

void copyFile(FileSystem &fileSystem, const std::string &from, const std::string &to) {
    const auto file = fileSystem.create(to, FileSystem::Access::owner);
    constexpr std::size_t blockBytes = std::size_t(1) << 20;
    pour(*file, contentsOf(fileSystem, from, blockBytes), blockBytes);
    file->sync();
}

// Room on the disk is the user's: half of what is free stays free, for the save that is to come if for nothing else.
std::int64_t room(const JournalFolder &folder) { return folder.fileSystem.freeBytes(folder.path) / 2; }

enum class Kept { no, asCopy, asLink };

// A full disk does not let a copy be made, but maybe the edits be written.
Kept keepFile(const JournalFolder &folder, const std::string &path, std::int64_t size, const std::string &as) {
    FileSystem &fileSystem = folder.fileSystem;
    try {
        if (fileSystem.share(path, as)) return Kept::asCopy;
        if (size > std::min(folder.longestCopy, room(folder))) return fileSystem.addName(path, as) ? Kept::asLink : Kept::no;
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
    if (edited.state.order <= std::max(removed_, written_)) return;
    if (!isInPlace()) forget();
    const bool isShort = size_ <= folder_.slackBytes + 2 * neededBytes_;
    const bool canGrow = file_ && isWhole_ && isShort && base == base_ && !isBaseLost(*base);
    if (!canGrow || !append(edited, progress)) writeAnew(base, edited, progress);
    written_ = edited.state.order;
}

// Somebody may have cleared the folder away, and another program have taken the name.
bool JournalFile::isInPlace() {
    if (stem_.empty()) return true;
    const auto now = folder_.fileSystem.identity(path(journalEnding));
    return now && now->inode == inode_;
}

// The name is taken by an empty journal, which says nothing to whoever finds it. One that cannot be held nobody would know to
// have been left behind.
void JournalFile::reserveName() {
    if (!stem_.empty()) return;
    if (!folder_.whyNone.empty()) throw FileFault(std::errc::no_such_file_or_directory, folder_.whyNone);
    folder_.fileSystem.makeFolders(folder_.path);
    for (int number = 1; stem_.empty(); ++number) try {
            stem_ = std::to_string(number);
            file_ = folder_.fileSystem.create(path(journalEnding), FileSystem::Access::owner);
        } catch (const std::system_error &error) {
            stem_.clear();
            if (error.code() != std::errc::file_exists || number == 10'000) throw;
        }
    takePlace();
    if (file_->isHeld()) return;
    removeQuietly(folder_.fileSystem, path(journalEnding));
    forget();
    throw FileFault(std::errc::no_lock_available, "The folder for them cannot lock files");
}

void JournalFile::takePlace() {
    const auto now = folder_.fileSystem.identity(path(journalEnding));
    inode_ = now ? now->inode : 0;
}

void JournalFile::writeAnew(const std::shared_ptr<const Base> &base, const Edited &edited, Progress &progress) {
    reserveName();
    forgetSavesBefore(base->order);
    const std::string oldKept = baseRecord_.kept;
    if (base != base_ || !isBaseAsItWas(*base)) baseRecord_ = keepBase(*base);
    base_ = base;
    FileSystem &fileSystem = folder_.fileSystem;
    fileSystem.removeAbandoned(path(newJournalEnding));
    auto old = std::exchange(file_, fileSystem.create(path(newJournalEnding), FileSystem::Access::owner));
    try {
        writeWhole(edited, progress);
        fileSystem.rename(path(newJournalEnding), path(journalEnding));
        fileSystem.syncFolder(folder_.path);
    } catch (...) {
        removeQuietly(fileSystem, path(newJournalEnding));
        file_ = std::move(old);
        isWhole_ = false;
        throw;
    }
    takePlace();
    if (!oldKept.empty() && oldKept != baseRecord_.kept) removeQuietly(fileSystem, folder_.path + "/" + oldKept);
}

void JournalFile::writeWhole(const Edited &edited, Progress &progress) {
    size_ = 0;
    stored_ = baseRecord_.identity ? base_->samples : StoredSamples();
    write(encoded(baseRecord_));
    for (const JournalSave &save : noted_) write(encoded(save));
    if (!append(edited, progress)) throw FileFault(std::errc::file_too_large, "The changes are too large");
}

// False where it would become too large.
bool JournalFile::append(const Edited &edited, Progress &progress) {
    isWhole_ = false;
    auto account = stored_.account(edited.buffer, size_);
    if (account.end > folder_.mostBytes) return false;
    if (account.end - size_ > room(folder_)) throw FileFault(std::errc::no_space_on_device, "The disk is nearly full");
    for (const auto &missing : account.missing) {
        progress.throwIfCancelled();
        const auto bytes = std::as_bytes(missing.samples);
        write(recordHeader(JournalRecord::samples, bytes));
        write(bytes);
    }
    for (const auto &missing : account.missing) writeOriginals(missing);
    JournalState state = edited.state;
    state.channels = edited.buffer.channels();
    state.sampleRate = edited.buffer.sampleRate();
    state.pieces = std::move(account.pieces);
    write(encoded(state));
    file_->sync();
    neededBytes_ = account.journalBytes;
    return isWhole_ = true;
}

void JournalFile::writeOriginals(const StoredSamples::Missing &missing) {
    for (const auto word : SampleOriginals::words) {
        if (!missing.originals) continue;
        const auto writePart = [&](const SampleOriginals::Part &part, std::int64_t within, std::int64_t at,
                                   std::int64_t count) {
            const std::byte *const first = part.differences.get() + within * part.width;
            const std::int64_t place = missing.at + at * std::int64_t(sizeof(float));
            if (part.width > 0) write(encoded(JournalOriginals{place, word, part.width, {first, first + count * part.width}}));
        };
        missing.originals->forEachPart(word, missing.first, std::int64_t(missing.samples.size()), writePart);
    }
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
JournalBase JournalFile::keepBase(const Base &base) {
    FileSystem &fileSystem = folder_.fileSystem;
    JournalBase record;
    record.path = base.path;
    if (metadataBytes(*base.contents) <= mostMetadata) record.contents = *base.contents;
    if (!isBaseAsItWas(base)) return record;
    record.print = filePrint(*fileSystem.open(base.path));
    const std::string name = freeNameFor(base), to = folder_.path + "/" + name;
    const Kept kept = keepFile(folder_, base.path, base.identity->size, to);
    if (kept != Kept::no) record.kept = name;
    record.keptIsLink = kept == Kept::asLink;
    if (isBaseAsItWas(base)) {
        record.identity = base.identity;
    } else if (kept != Kept::no) {
        removeQuietly(fileSystem, to);
        record.kept.clear();
    }
    return record;
}

// With the file's own extension, by which some readers go.
std::string JournalFile::freeNameFor(const Base &base) {
    const std::string extension = std::filesystem::path(base.path).extension();
    std::string name;
    do {
        name = keptBeginning + stem_ + "-" + std::to_string(++keptCount_) + extension;
    } while (folder_.fileSystem.identity(folder_.path + "/" + name));
    return name;
}

void JournalFile::noteSave(const JournalSave &save) noexcept {
    try {
        const std::lock_guard lock(mutex_);
        std::erase_if(noted_, [&](const JournalSave &old) { return old.path == save.path && old.digest == save.digest; });
        noted_.push_back(save);
        if (!file_ || !isWhole_) return;
        isWhole_ = false;
        write(encoded(save));
        file_->sync();
        isWhole_ = true;
    } catch (...) {
        // The save matters more, and what has been journalled before still counts.
    }
}

// One that cannot be removed stays ours, and the next one takes its place: left behind it would offer what is past.
void JournalFile::remove(std::uint64_t order) noexcept {
    const std::lock_guard lock(mutex_);
    if (order < written_) return;
    removed_ = std::max(removed_, order);
    forgetSavesBefore(order);
    try {
        if (!stem_.empty()) folder_.fileSystem.remove(path(journalEnding));
    } catch (...) {
        return base_.reset();
    }
    if (!baseRecord_.kept.empty()) removeQuietly(folder_.fileSystem, folder_.path + "/" + baseRecord_.kept);
    forget();
}

void JournalFile::forget() {
    file_.reset();
    stem_.clear();
    base_.reset();
    stored_ = {};
    baseRecord_ = {};
    isWhole_ = false;
    size_ = neededBytes_ = 0;
}

void JournalFile::forgetSavesBefore(std::uint64_t order) {
    std::erase_if(noted_, [=](const JournalSave &save) { return save.order < order; });
}

}  // namespace kiv
