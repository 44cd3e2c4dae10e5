#pragma once

#include <functional>
#include <memory>
#include <string>

#include "Document/DocumentCore.h"

// How a document comes to its sound. Main thread only; the reading itself runs as a job.
namespace kiv::DocumentReading {

// The error's text, empty when all is well.
using Done = std::function<void(const std::string &error)>;
inline constexpr const char *cancelledText = "Cancelled.";

void open(DocumentCore &core, const std::string &path, Done done);
// The document as it was after its last edit, with the file as it was before that.
void restore(DocumentCore &core, std::shared_ptr<const AbandonedJournal> journal, Done done);
// Reads the file again, after asking when there are edits.
void revert(DocumentCore &core);
// Without asking; the notice is shown when it has worked.
void readAgain(DocumentCore &core, const std::string &notice = {});

}  // namespace kiv::DocumentReading
