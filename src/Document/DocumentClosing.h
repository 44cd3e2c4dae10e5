#pragma once

#include <functional>
#include <vector>

#include "Document/DocumentCore.h"

namespace kiv {

// Finds out whether a document may go. Main thread only.
class DocumentClosing {
public:
    explicit DocumentClosing(DocumentCore &core) : core_(core) {}

    // When it has no edits and its file is still there, else as the user decides (save, discard, cancel). Waits for a save
    // under way. Asked for again while the question stands it has the same answer; a look for the file that hangs is then not
    // waited for. Until the document goes it is as it was.
    void confirm(std::function<void(bool mayGo)> answered);
    bool isAsked() const { return isAsked_; }
    // To be called when a job or an edit has ended. The answer may be the end of the document.
    void consider();

private:
    void tell(bool mayGo);
    void answered(std::size_t button);
    void lookForFile();
    void looked(bool isGone);
    DocumentUi::Question question() const;

    DocumentCore &core_;
    std::vector<std::function<void(bool)>> waiting_;  // for a save to end, or for the answer to one question
    bool isLooking_ = false;                          // for the file
    bool isAsked_ = false;                            // that question stands, or its answer is being carried out
};

}  // namespace kiv
