#pragma once

#include <functional>
#include <vector>

#include "Document/DocumentCore.h"

namespace kiv {

// Finds out whether a document may go. Main thread only.
class DocumentClosing {
public:
    explicit DocumentClosing(DocumentCore &core) : core_(core) {}

    // At once when it has no edits, else as the user decides (save, discard, cancel). Waits for a save under way. Asked for
    // again while the question stands it has the same answer. Until the document goes it is as it was.
    void confirm(std::function<void(bool mayGo)> answered);
    bool isAsked() const { return isAsked_; }
    // To be called when a job or an edit has ended. The answer may be the end of the document.
    void consider();

private:
    void tell(bool mayGo);
    void answered(std::size_t button);

    DocumentCore &core_;
    std::vector<std::function<void(bool)>> waiting_;  // for a save to end, or for the answer to one question
    bool isAsked_ = false;                            // that question stands, or its answer is being carried out
};

}  // namespace kiv
