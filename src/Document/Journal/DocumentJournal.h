#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Document/Journal/JournalRecovery.h"
#include "Editor/AudioEditorModel/AudioEditorModel.h"
#include "Platform/ForwardingFiles.h"
#include "Platform/Jobs.h"

namespace kiv {

// Keeps what has been done to a document safe against the end of the program: follows the model and has every state that
// differs from the file written to a journal, behind, by one job at a time; edits that come faster than that are written as the
// last of them. The journal goes when the document has no edits any more or is given up, and stays when this object goes
// without that. Main thread only.
class DocumentJournal {
public:
    // Without a folder nothing is journalled.
    DocumentJournal(const JournalFolder *folder, Jobs &jobs);
    DocumentJournal(const DocumentJournal &) = delete;
    DocumentJournal &operator=(const DocumentJournal &) = delete;

    // The sound as it was read from a file or written to it. Every edit from here on is one of that.
    void setBase(const std::string &path, const std::optional<FileSystem::Identity> &identity,
                 std::shared_ptr<const AudioFileContents> contents, const AudioEditorBuffer &buffer);
    // That file by another identity, holding what it held; without effect where there was none.
    void setIdentity(const FileSystem::Identity &identity);
    // To be told of every change; what has been written already costs nothing.
    void follow(const AudioEditorState &state, bool isEdited);
    void discard();
    // A journal that this document was brought back from: it goes when what it holds is safe in the new one.
    void takeOver(std::shared_ptr<const AbandonedJournal> journal);
    // Until that has gone. It knows nothing of a save.
    bool isTakingOver() const { return takenOver_ || removingTakenOver_; }
    // Calls back when all is written, or has failed to be once more, and what is not needed any more is gone.
    void flush(const AudioEditorState &state, bool isEdited, std::function<void()> done);

    // Blocks until what was still to be written is: for the end of the program.
    void writeNow() noexcept;

    // What a save of this sound has to tell, on its own thread, when the new file is complete and has not taken its place yet.
    using SaveNote = std::function<void(const std::string &path, std::uint64_t digest)>;
    SaveNote noteFor(const AudioEditorBuffer &buffer);

    // Why changes cannot be journalled; once until they can be again.
    std::function<void(const std::string &reason)> onTrouble;
    // After a failure nothing is tried for so long.
    std::chrono::milliseconds pauseAfterTrouble{30'000};

private:
    using Clock = std::chrono::steady_clock;
    void write();
    void written(std::exception_ptr failure);
    void tellFlushed();
    void discardTakenOver();

    const JournalFolder *folder_;
    Jobs &jobs_;
    std::shared_ptr<JournalFile> file_;  // jobs share it
    std::shared_ptr<const JournalFile::Base> base_;
    std::shared_ptr<const JournalFile::Edited> writing_, next_;  // by the job under way, and when that is done
    std::shared_ptr<const AbandonedJournal> takenOver_;
    std::optional<std::int64_t> version_;  // of the content that was last given to be written
    std::uint64_t order_ = 0;
    int removing_ = 0;  // removals under way
    bool removingTakenOver_ = false;
    bool hasBegun_ = false, hasTold_ = false;
    Clock::time_point restsUntil_{};
    std::vector<std::function<void()>> flushed_;
    std::shared_ptr<int> alive_ = std::make_shared<int>();  // jobs hold it weakly
};

// Files through which one file is saved, and the journal told of it.
class NotedFiles : public ForwardingFiles {
public:
    NotedFiles(Files &files, DocumentJournal::SaveNote note) : ForwardingFiles(files), note_(std::move(note)) {}

    void replace(const std::string &path, const Produce &produce, const Check &check) override;

private:
    DocumentJournal::SaveNote note_;
};

}  // namespace kiv
