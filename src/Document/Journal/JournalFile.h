#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "Document/Journal/JournalRecords.h"
#include "Document/Journal/StoredSamples.h"
#include "Editor/AudioEditorCore/AudioEditorBuffer.h"
#include "Platform/FileSystem.h"
#include "Support/Progress.h"

namespace kiv {

// Where journals are kept: a folder of the user's own.
struct JournalFolder {
    FileSystem &fileSystem;
    std::string path;
    std::string whyNone = {};  // where there is no such folder: why
    // Beyond so many bytes a document is not journalled any more.
    std::int64_t mostBytes = std::int64_t(4) << 30;
    // Of a file that was read and is kept by copying it; and of what may stay in a journal unneeded, beside as much as is
    // needed.
    std::int64_t longestCopy = std::int64_t(64) << 20;
    std::int64_t slackBytes = std::int64_t(64) << 20;
};

// The journal of one document on the disk. It is held for as long as the document is open, which tells other running programs
// that it is not abandoned. Every write is on the device when it returns, and leaves either the state before or the new one to
// be read, wherever it fails or dies: a state follows the samples it needs, and where a journal is written anew the new one
// takes the old one's place whole.
//
// The file that was read is kept beside the journal, so that what other programs do to it does no harm: as a copy that shares
// its space where the file system makes such, as a plain copy when it is short, else by another name of the same file where
// that can be given. Where none of these can be had, the journal relies on the file, and can tell whether it is still as it
// was.
//
// All members may block and may be called from several threads; any but the main and audio threads.
class JournalFile {
public:
    // A file, and which samples in memory it holds.
    struct Base {
        std::string path;
        std::optional<FileSystem::Identity> identity;
        std::shared_ptr<const AudioFileContents> contents;  // without the samples
        StoredSamples samples;
        std::uint64_t order = 0;  // among states, saves and removals
    };
    // The document after an edit.
    struct Edited {
        AudioEditorBuffer buffer;
        JournalState state;  // but for the pieces
    };

    // The folder must outlive it.
    explicit JournalFile(const JournalFolder &folder) : folder_(folder) {}
    JournalFile(const JournalFile &) = delete;
    JournalFile &operator=(const JournalFile &) = delete;

    // Calls may arrive in another order than they were made in: what was to be written before a removal or another state is not
    // written after it, and what was to be removed before a state was written is not removed after it. Throws
    // std::system_error, also when it would become too large, and Cancelled.
    void write(const std::shared_ptr<const Base> &base, const Edited &edited, Progress &progress);
    // That a file with this digest is about to take its place, and what stands in it. Failures are silent.
    void noteSave(const JournalSave &save) noexcept;
    // The document has no edits any more, or is given up.
    void remove(std::uint64_t order) noexcept;

private:
    bool isInPlace();
    void reserveName();
    void takePlace();
    void writeAnew(const std::shared_ptr<const Base> &base, const Edited &edited, Progress &progress);
    void writeWhole(const Edited &edited, Progress &progress);
    bool append(const Edited &edited, Progress &progress);
    void writeOriginals(const StoredSamples::Missing &missing);
    void write(std::span<const std::byte> bytes);
    JournalBase keepBase(const Base &base);
    std::string freeNameFor(const Base &base);
    bool isBaseLost(const Base &base);
    bool isBaseAsItWas(const Base &base);
    void forget();
    void forgetSavesBefore(std::uint64_t order);
    std::string path(const std::string &ending) const;

    const JournalFolder &folder_;
    std::mutex mutex_;
    std::uint64_t removed_ = 0, written_ = 0;  // the orders of the last removal and the last state
    std::string stem_;                         // of the journal's name; empty while there is none
    std::uint64_t inode_ = 0;                  // of the file that we gave that name
    std::unique_ptr<FileSystem::File> file_;
    bool isWhole_ = false;  // what the file ends with can be followed by more
    std::int64_t size_ = 0;
    std::int64_t neededBytes_ = 0;  // of it, by the last state
    StoredSamples stored_;
    std::shared_ptr<const Base> base_;
    JournalBase baseRecord_;
    int keptCount_ = 0;
    // The saves that are later than the base, the last of each file that was to be. The file may be any of them: the last may
    // fail yet, and one that was said to have failed may have taken its place.
    std::vector<JournalSave> noted_;
};

// How the names in the folder end, or begin: N.journal, N.new, kept-N-….
inline constexpr const char *journalEnding = ".journal", *newJournalEnding = ".new", *keptBeginning = "kept-";

}  // namespace kiv
