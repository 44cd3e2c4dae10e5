#include "Document/DocumentClosing.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Document/DocumentSaving.h"

namespace kiv {

void DocumentClosing::confirm(std::function<void(bool)> answered) {
    waiting_.push_back(std::move(answered));
    std::exchange(isLooking_, false) ? looked(false) : consider();
}

// The first may be the end of the document.
void DocumentClosing::tell(bool mayGo) {
    for (const auto &answered : std::exchange(waiting_, {})) answered(mayGo);
}

void DocumentClosing::consider() {
    if (waiting_.empty() || isAsked_ || isLooking_ || core_.work.isSaving()) return;
    if (!core_.isEdited() && !core_.work.isEditing()) return lookForFile();
    core_.work.cancelJob();  // a file being read again for a revert
    isAsked_ = true;
    core_.ui.ask(question(), core_.lifetime.guard([this](std::size_t button) { answered(button); }));
}

DocumentUi::Question DocumentClosing::question() const {
    const std::vector<std::string> buttons{"Save", "Don’t Save", "Cancel"};
    if (core_.isChanged() || core_.work.isEditing())
        return {"Save changes to " + core_.quotedName() + " before closing?",
                "Your changes will be lost if you don’t save them.", buttons};
    return {core_.quotedName() + " is no longer where it was. Save it before closing?",
            "It has been moved or deleted. If it was deleted, its sound will be lost if you don’t save it.", buttons};
}

// Without edits the file is all there is of the sound beside the document.
void DocumentClosing::lookForFile() {
    if (!core_.file.contents || !core_.file.identity) return tell(true);
    isLooking_ = true;
    const auto isGone = std::make_shared<bool>(false);
    core_.services.jobs.read(
        std::make_shared<Progress>(),
        [&files = core_.services.files, path = core_.file.path, isGone](Progress &) { *isGone = !files.identity(path); },
        core_.lifetime.guard([this, isGone](std::exception_ptr) {
            if (std::exchange(isLooking_, false)) looked(*isGone);
        }));
}

void DocumentClosing::looked(bool isGone) {
    if (isGone) core_.file.found.emplace();
    const bool asks = core_.isEdited() || core_.work.isEditing() || core_.work.isSaving();
    asks ? consider() : tell(true);
}

void DocumentClosing::answered(std::size_t button) {
    enum : std::size_t { saveFirst, dontSave };
    if (button == saveFirst)
        return DocumentSaving::save(
            core_,
            [this](bool saved) {
                isAsked_ = false;
                if (!saved) tell(false);  // else the end of the save looks again: there may be newer edits
            },
            core_.isChanged() ? DocumentSaving::IfGone::ask : DocumentSaving::IfGone::write);
    isAsked_ = false;
    tell(button == dontSave);
}

}  // namespace kiv
