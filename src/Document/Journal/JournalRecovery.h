#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Document/Journal/JournalFile.h"
#include "Editor/AudioEditorModel/UndoHistory.h"
#include "Platform/DecodedReader.h"
#include "Platform/Files.h"
#include "Support/Progress.h"

// Journals that programs have left behind which ended without closing their documents. All calls block; any thread but the main
// and audio threads.
namespace kiv {

struct AbandonedJournal {
    std::string path;                        // of the journal
    std::unique_ptr<FileSystem::File> held;  // nobody else may take it meanwhile
    std::string document;                    // the path of the document
    std::int64_t writtenAt = 0;              // milliseconds since 1970: its last edit
    // Whether the document can be brought back, and what its unedited parts would be taken from.
    enum class Condition {
        asItWas,  // from the file
        changed,  // the file has been changed or is gone, but what it held is kept
        lost,     // and is not: it cannot be brought back
        damaged,  // the journal cannot be read any more; the path may be unknown
        foreign,  // nor by this version of the program
    };
    Condition condition = Condition::asItWas;
};

// All that are worth asking about, by their documents' paths. Empty ones, what is left of others, and journals of which a save
// had just made an end, are cleared away. A folder that cannot be read has none.
std::vector<AbandonedJournal> findAbandonedJournals(const JournalFolder &folder);

// A document as it was after its last finished edit.
struct RecoveredDocument {
    std::string path;
    AudioFileContents contents;                    // without samples
    std::optional<AudioEditorBuffer> base;         // the sound as the file held it, where that can still be had
    std::optional<AudioEditorPeaks> basePeaks;     // there when that is
    std::optional<FileSystem::Identity> identity;  // of the file as it was read; none: of whatever is there
    Snapshot edited;                               // with buffer and peaks
    bool isDamaged = false;                        // there may have been later edits
};

// Throws AudioFileError, std::system_error and Cancelled.
RecoveredDocument recoverDocument(const JournalFolder &folder, const AbandonedJournal &journal, Files &files,
                                  DecodedReader *decoders, Progress &progress);

// Removes it and what was kept for it. Failures are silent.
void discardJournal(const JournalFolder &folder, const AbandonedJournal &journal) noexcept;

}  // namespace kiv
