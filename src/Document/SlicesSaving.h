#pragma once

#include <functional>
#include <string>

#include "Document/DocumentCore.h"
#include "Document/FolderAccess.h"

namespace kiv {

struct SlicesToSave;

// Saves a document's slices, a file each, in a folder beside its own file. Main thread only; the writing itself runs as a job.
class SlicesSaving {
public:
    explicit SlicesSaving(DocumentCore &core) : core_(core), access_(core) {}

    // The slices are named after the file when the name is empty. Where the folder holds audio files already, they go to the
    // trash: after asking, at once, or not at all. A failure is shown, and `done` is told false.
    enum class IfHeld { ask, replace, refuse };
    using Done = std::function<void(bool saved)>;
    void save(const std::string &name, IfHeld ifHeld, Done done);
    std::string folder() const;

private:
    void saveAsTheyAre(const std::string &name, IfHeld ifHeld, Done done);
    void look(std::shared_ptr<SlicesToSave> saving, IfHeld ifHeld, Done done);
    void confirm(std::shared_ptr<SlicesToSave> saving, std::size_t held, IfHeld ifHeld, Done done);
    void write(std::shared_ptr<SlicesToSave> saving, Done done);
    void written(const SlicesToSave &saving, const std::exception_ptr &failure, const Done &done);

    DocumentCore &core_;
    FolderAccess access_;
};

}  // namespace kiv
