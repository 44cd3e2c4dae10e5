#pragma once

#include <functional>
#include <optional>
#include <string>

#include "Document/DocumentCore.h"

// What is asked before something is saved. Main thread only; the answers come as those of DocumentUi do.
namespace kiv::SaveQuestions {

// What is heard through the equalizer is not in the samples: it is open and does something.
bool isEqPending(const DocumentCore &core);

enum class Saved { file, selection };
using Then = std::function<void(bool go)>;  // false: the user has cancelled, or a save cannot begin
// Asks, when the equalizer is pending, whether it is to be applied to what will be saved, does so, and goes on. A save that
// could not begin is not asked about.
void confirmEqBeforeSaving(DocumentCore &core, Saved what, Then then);
// The same, and goes on when the edit under way, perhaps that of the equalizer, has ended.
void confirmEqAndEdits(DocumentCore &core, Saved what, Then then);

// Whether a save can begin still, after an answer; where it cannot that is told.
bool stillTakesSave(DocumentCore &core, const std::string &path);

// Shows the panel until it is cancelled, names what is not there, or may replace what is. Saving over the document's own file
// in its own format is an ordinary save, and nothing to ask about.
using OnTarget = std::function<void(const std::optional<DocumentUi::SaveTarget> &)>;
void chooseTarget(DocumentCore &core, const DocumentUi::SavePanel &panel, OnTarget chosen);

}  // namespace kiv::SaveQuestions
