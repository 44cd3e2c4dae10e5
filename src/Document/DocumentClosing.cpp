#include "Document/DocumentClosing.h"

#include <utility>

#include "Document/DocumentSaving.h"

namespace kiv {

void DocumentClosing::confirm(std::function<void(bool)> answered) {
    waiting_.push_back(std::move(answered));
    consider();
}

// The first may be the end of the document.
void DocumentClosing::tell(bool mayGo) {
    for (const auto &answered : std::exchange(waiting_, {})) answered(mayGo);
}

void DocumentClosing::consider() {
    if (waiting_.empty() || isAsked_ || core_.work.isSaving()) return;
    if (!core_.isEdited() && !core_.work.isEditing()) return tell(true);
    core_.work.cancelJob();  // a file being read again for a revert
    isAsked_ = true;
    const DocumentUi::Question question{"Save changes to " + core_.quotedName() + " before closing?",
                                        "Your changes will be lost if you don’t save them.",
                                        {"Save", "Don’t Save", "Cancel"}};
    core_.ui.ask(question, core_.lifetime.guard([this](std::size_t button) { answered(button); }));
}

void DocumentClosing::answered(std::size_t button) {
    enum : std::size_t { saveFirst, dontSave };
    if (button == saveFirst)
        return DocumentSaving::save(core_, [this](bool saved) {
            isAsked_ = false;
            if (!saved) tell(false);  // else the end of the save looks again: there may be newer edits
        });
    isAsked_ = false;
    tell(button == dontSave);
}

}  // namespace kiv
