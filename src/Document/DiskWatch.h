#pragma once

#include <memory>

#include "Document/DocumentCore.h"
#include "Document/FileSave.h"

namespace kiv {

// Minds what other programs do to a document's file. Main thread only; it is looked at in jobs.
class DiskWatch {
public:
    explicit DiskWatch(DocumentCore &core) : core_(core) {}
    DiskWatch(const DiskWatch &) = delete;
    DiskWatch &operator=(const DiskWatch &) = delete;
    ~DiskWatch() { comparing_->cancel(); }

    // Looks whether another program has changed the file since it was read or written. Without edits it is read again; with
    // edits the user is asked, once for each change.
    void check();

    // The sound as it was read or written last, if an undo still holds it.
    static SoundFile onDisk(const DocumentCore &core);

private:
    void found(const DocumentFile::Identity &now);
    void compare(const FileSystem::Identity &now);
    void changed();

    DocumentCore &core_;
    bool looks_ = false;  // a job is under way
    std::shared_ptr<Progress> comparing_ = std::make_shared<Progress>();
};

}  // namespace kiv
