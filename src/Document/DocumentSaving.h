#pragma once

#include <functional>
#include <string>

#include "Audio/Files/AudioSaveFormat.h"
#include "Document/DocumentCore.h"

// Saves a document's file, each save from the questions before it to the result: a failure is shown, and `done` is told false,
// as it is when the user has cancelled. Main thread only; the writing itself runs as a job, on values, so that edits may go on.
namespace kiv::DocumentSaving {

using Done = std::function<void(bool saved)>;  // none: nobody is told

// Over the file, or as the user chooses where it cannot be written in its own format. That the file has gone is asked about,
// but not where the user has just been told.
enum class IfGone { ask, write };
void save(DocumentCore &core, Done done, IfGone ifGone = IfGone::ask);
// Elsewhere in the file's own format, whatever is there.
void saveTo(DocumentCore &core, const std::string &path, Done done);
// Where, and in what format, the user chooses or is said here. What the format cannot store is told.
void saveAs(DocumentCore &core, Done done);
void saveAs(DocumentCore &core, const std::string &path, const AudioSaveFormat &format, Done done);
// The selection alone, in the file's own format or as WAV, where the user chooses or is said here.
void saveSelection(DocumentCore &core, Done done);
void saveSelection(DocumentCore &core, const std::string &path, Done done);

}  // namespace kiv::DocumentSaving
